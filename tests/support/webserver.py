"""A web server for tests that does what a test scripted, lies included, and remembers what it was asked for.

Usage: webserver.py [CERTIFICATES]. CERTIFICATES is a folder that make-certificates made. Needs Python 3.8 or later, on Linux or
Windows. Listens on 127.0.0.1, on ports that the system picks, and prints them as one line of `name=port` words:

  control   takes commands, see below
  http      serves the scripted answers
  good, untrusted, expired, wrong-name
            the same over TLS, each with the certificate of that name; without CERTIFICATES they are not there
  refused   nobody listens here: connecting fails

It ends when its standard input closes, and when its parent is gone.

A command is one line of words on a connection of its own; the reply is what comes until the connection closes. HEX is text
in hexadecimal.

  answer HEX(path) STEP...   what a request for the path gets from now on; a path without an answer gets status 404
  requests                   replies one line for each request: port name, method, HEX(path), then HEX(name):HEX(value)
                             for each header. A request whose first line is none is refused: its method is
                             "malformed", its path that line
  held HEX(path)             waits until an answer for the path is held; replies "yes", or "no" after half a minute
  release HEX(path)          lets the answers go on that are held for the path now; replies their number
  clear                      forgets answers and requests, and resets the connections that are still served

The steps of an answer are carried out in order, then the connection is closed:

  send:HEX           sends the bytes
  repeat:HEX:COUNT   sends COUNT bytes that repeat the given ones
  hold               waits for a release
  reset              resets the connection
"""

import functools
import os
import select
import socket
import ssl
import struct
import sys
import threading

CERTIFICATES = ["good", "untrusted", "expired", "wrong-name"]
HELD_SECONDS = 30
BLOCK_BYTES = 65536
ON_WINDOWS = os.name == "nt"
LINGER = "hh" if ON_WINDOWS else "ii"  # how the system lays out what SO_LINGER takes
NOT_FOUND = b"HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\nConnection: close\r\n\r\nnot found"


class Cleared(Exception):
    """The script was cleared while it was being carried out."""


class Script:
    """What the test asked for and what was seen, shared by all connections."""

    def __init__(self):
        self.changed = threading.Condition()
        self.run = 0
        self.answers = {}
        self.requests = []
        self.held = {}

    def clear(self):
        with self.changed:
            self.run += 1
            self.answers = {}
            self.requests = []
            self.held = {}
            self.changed.notify_all()

    def set_answer(self, path, steps):
        with self.changed:
            self.answers[path] = steps

    def take_request(self, run, port, method, path, headers):
        """Records the request and returns the steps of its answer."""
        with self.changed:
            if run != self.run:
                raise Cleared
            self.requests.append((port, method, path, headers))
            return self.answers.get(path, ["send:" + NOT_FOUND.hex()])

    def hold(self, run, path):
        mark = object()
        with self.changed:
            if run == self.run:
                self.held.setdefault(path, []).append(mark)
                self.changed.notify_all()
            self.changed.wait_for(lambda: run != self.run or mark not in self.held.get(path, []))
            if run != self.run:
                raise Cleared

    def wait_until_held(self, path):
        with self.changed:
            return bool(self.changed.wait_for(lambda: self.held.get(path), HELD_SECONDS))

    def release(self, path):
        with self.changed:
            count = len(self.held.pop(path, []))
            self.changed.notify_all()
            return count


def listen(serve):
    """Opens a listening socket whose connections are served on threads of their own; returns its port."""
    listener = socket.create_server(("127.0.0.1", 0), backlog=64)
    port = listener.getsockname()[1]
    accept_on(listener, serve)
    if ON_WINDOWS and socket.has_ipv6:
        # There "localhost" is ::1 first, and a client that finds nobody there tries again for a second or more.
        accept_on(socket.create_server(("::1", port), family=socket.AF_INET6, backlog=64), serve)
    return port


def accept_on(listener, serve):
    def accept():
        while True:
            connection, _ = listener.accept()
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=serve, args=(connection,), daemon=True).start()

    threading.Thread(target=accept, daemon=True).start()


def read_until(connection, end):
    data = bytearray()
    searched = 0
    while (at := data.find(end, searched)) < 0:
        searched = max(0, len(data) - len(end))
        block = connection.recv(BLOCK_BYTES)
        if not block:
            raise ConnectionError("closed before the end of the request")
        data += block
    return data[:at]


def reset(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack(LINGER, 1, 0))
    connection.close()


def send_repeated(connection, pattern, count):
    block = pattern * (BLOCK_BYTES // len(pattern) + 1)
    while count > 0:
        connection.sendall(block[:count])
        count -= len(block)


def carry_out(script, run, path, steps, connection):
    for step in steps:
        name, *words = step.split(":")
        if name == "send":
            connection.sendall(bytes.fromhex(words[0]))
        elif name == "repeat":
            send_repeated(connection, bytes.fromhex(words[0]), int(words[1]))
        elif name == "hold":
            script.hold(run, path)
        elif name == "reset":
            raise ConnectionResetError


def close(connection):
    """Closes a connection in order, over TLS with the notice that nothing was cut off."""
    if isinstance(connection, ssl.SSLSocket):
        connection.settimeout(0)
        try:
            connection.unwrap()
        except (OSError, ValueError):
            pass  # the notice is sent, and the other side has not answered it
    connection.close()


def answer_request(script, port, tls, connection):
    run = script.run
    try:
        if tls:
            connection = tls.wrap_socket(connection, server_side=True, do_handshake_on_connect=False)
            connection.do_handshake()
        lines = read_until(connection, b"\r\n\r\n").decode("latin-1").split("\r\n")
        headers = [(name, value.strip()) for name, _, value in (line.partition(":") for line in lines[1:])]
        words = lines[0].split(" ", 2)
        if len(words) < 3:
            script.take_request(run, port, "malformed", lines[0], headers)
            raise ValueError("no request line")
        method, path, _ = words
        steps = script.take_request(run, port, method, path, headers)
        carry_out(script, run, path, steps, connection)
        close(connection)
    except (OSError, ValueError, Cleared):
        reset(connection)


def to_hex(text):
    return text.encode("latin-1").hex()


def requests_text(script):
    with script.changed:
        requests = list(script.requests)
    lines = []
    for port, method, path, headers in requests:
        words = [port, method, to_hex(path)]
        words += [f"{to_hex(name)}:{to_hex(value)}" for name, value in headers]
        lines.append(" ".join(words) + "\n")
    return "".join(lines)


def command_reply(script, name, words):
    path = bytes.fromhex(words[0]).decode("latin-1") if words else ""
    if name == "answer":
        script.set_answer(path, words[1:])
        return ""
    if name == "requests":
        return requests_text(script)
    if name == "held":
        return "yes" if script.wait_until_held(path) else "no"
    if name == "release":
        return str(script.release(path))
    if name == "clear":
        script.clear()
        return ""
    return "unknown command " + name


def answer_command(script, connection):
    with connection:
        name, *words = read_until(connection, b"\n").decode("ascii").split()
        connection.sendall(command_reply(script, name, words).encode("ascii"))


def wait_for_end():
    if ON_WINDOWS:  # there select takes sockets only, and the end of whoever holds the other end of the pipe closes it
        while os.read(sys.stdin.fileno(), BLOCK_BYTES):
            pass
        return
    parent = os.getppid()
    while os.getppid() == parent:
        ready, _, _ = select.select([sys.stdin], [], [], 1)
        if ready and not os.read(sys.stdin.fileno(), BLOCK_BYTES):
            return


def main():
    script = Script()
    ports = {
        "control": listen(lambda connection: answer_command(script, connection)),
        "http": listen(functools.partial(answer_request, script, "http", None)),
    }
    for name in CERTIFICATES if len(sys.argv) > 1 else []:
        tls = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        tls.load_cert_chain(f"{sys.argv[1]}/{name}.pem")
        ports[name] = listen(functools.partial(answer_request, script, name, tls))
    nobody = socket.socket()
    nobody.bind(("127.0.0.1", 0))
    ports["refused"] = nobody.getsockname()[1]
    print(*(f"{name}={port}" for name, port in ports.items()), flush=True)
    wait_for_end()


if __name__ == "__main__":
    main()
