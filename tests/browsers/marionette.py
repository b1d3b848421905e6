"""What Firefox is told, over the protocol that it has for this: lists of JSON with their length in front. The distribution has
no driver for Selenium that belongs to its Firefox."""

import json
import socket


class MarionetteError(AssertionError):
    """Firefox refused a command."""


class Marionette:
    """A session with a Firefox that was started with --marionette."""

    def __init__(self, port):
        self.connection = socket.create_connection(("127.0.0.1", port))
        self.connection.settimeout(120)
        self.replies = self.connection.makefile("rb")
        self.number = 0
        self.read()  # its greeting
        self.send("WebDriver:NewSession", pageLoadStrategy="normal")

    def read(self):
        length = b""
        while (digit := self.replies.read(1)) != b":":
            if not digit:
                raise MarionetteError("Firefox closed the connection")
            length += digit
        return json.loads(self.replies.read(int(length)))

    def send(self, command, **parameters):
        self.number += 1
        message = json.dumps([0, self.number, command, parameters])
        self.connection.sendall(f"{len(message)}:{message}".encode())
        _, _, error, result = self.read()
        if error:
            raise MarionetteError(f"{command}: {error['message']}")
        return result

    def close(self):
        self.replies.close()
        self.connection.close()
