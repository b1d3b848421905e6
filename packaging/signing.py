"""Signatures of code and packages, by osslsigncode."""

import os
from dataclasses import dataclass

from tools import run


@dataclass(frozen=True)
class Signer:
    """A certificate with its key: a file, or the name of a key on a token that a PKCS#11 module reaches. `authority` is the file
    that the certificate is verified with. Without a time stamp server the time is that of the sources, and the same input has
    the same signature."""

    certificate: str
    key: str
    name: str
    epoch: int
    authority: str | None = None
    module: str | None = None
    timestamp: str | None = None

    def sign(self, path):
        """Signs a file in its place, and verifies what came of it."""
        signed = path.with_name(path.name + ".signed")
        token = ["-pkcs11module", self.module] if self.module else []
        moment = ["-ts", self.timestamp] if self.timestamp else ["-time", self.epoch]
        run("osslsigncode", "sign", *token, "-h", "sha256", "-certs", self.certificate, "-key", self.key, "-n", self.name,
            *moment, "-in", path, "-out", signed, complains=False)
        self.verify(signed)
        os.replace(signed, path)

    def verify(self, path):
        run("osslsigncode", "verify", "-CAfile", self.authority or self.certificate, "-in", path, complains=False)
