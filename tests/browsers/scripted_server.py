"""A server whose answers wait as long as a test wants; tests/support/webserver.py, which says more."""

import socket
import subprocess
import sys

from workplace import ROOT


class ScriptedServer:
    def __init__(self):
        command = [sys.executable, "-B", str(ROOT / "tests/support/webserver.py"), str(ROOT / "build/tls")]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.ports = dict(word.split("=") for word in self.process.stdout.readline().split())
        self.address = f"http://127.0.0.1:{self.ports['http']}"

    def close(self):
        self.process.stdin.close()
        self.process.wait(10)
        self.process.stdout.close()

    def command(self, *words):
        with socket.create_connection(("127.0.0.1", int(self.ports["control"]))) as connection:
            connection.sendall((" ".join(words) + "\n").encode())
            with connection.makefile() as reply:
                return reply.read()

    def answer(self, path, body, held=False):
        """What the path gets: half of the body, then nothing until it is released, when held."""
        head = f"HTTP/1.1 200 OK\r\nContent-Length: {len(body)}\r\nConnection: close\r\n\r\n".encode()
        half = len(body) // 2
        steps = [head + body[:half], body[half:]]
        words = [f"send:{step.hex()}" for step in steps]
        self.command("answer", path.encode().hex(), words[0], *(["hold"] if held else []), words[1])

    def wait_until_held(self, path):
        if self.command("held", path.encode().hex()) != "yes":
            raise AssertionError(f"nobody asked for {path}")

    def release(self, path):
        return int(self.command("release", path.encode().hex()))

    def asked(self):
        """The paths that were asked for."""
        return [bytes.fromhex(line.split()[2]).decode() for line in self.command("requests").splitlines()]
