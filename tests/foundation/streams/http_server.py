# SPDX-License-Identifier: GPL-3.0-or-later
"""The HTTP server of the network tests: tells its port, serves until its input ends."""

import socketserver
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler
from urllib.parse import unquote

KIB = 1024
OK = b"HTTP/1.0 200 OK\r\n"

# Path -> the reply as it goes over the wire; a number is a silence of so many seconds.
RAW = {
    "/empty": [],
    "/no-status": [b"HTTP/1.0\r\n\r\n"],
    "/other-protocol": [b"SSH-2.0-server 200\r\n\r\n"],
    "/bad-status": [b"HTTP/1.0 2x0 OK\r\n\r\n"],
    "/low-status": [b"HTTP/1.0 99 OK\r\n\r\n"],
    "/bare-status": [b"HTTP/1.1 204\n\n"],
    "/no-colon": [OK, b"no colon here\r\n\r\n"],
    "/no-name": [OK, b": value\r\n\r\n"],
    "/cut-header": [OK, b"Content-Length: 4\r\n"],
    "/negative-length": [OK, b"Content-Length: -1\r\n\r\n"],
    "/huge-length": [OK, b"Content-Length: 99999999999999999999\r\n\r\n"],
    "/cut-body": [OK, b"Content-Length: 10\r\n\r\n", b"half"],
    "/long-body": [OK, b"Content-Length: 1001\r\n\r\n", b"x" * 1001],
    "/more-than-told": [OK, b"CONTENT-LENGTH: 3\r\n\r\n", b"all and more"],
    "/untold": [OK, b"\r\n", b"y" * 1000],
    "/untold-long": [OK, b"\r\n", b"y" * 1001],
    "/line-fits": [OK, b"A: " + b"z" * (16 * KIB - 5) + b"\r\n\r\nbody"],
    "/long-line": [OK, b"A: " + b"z" * (16 * KIB - 4) + b"\r\n\r\nbody"],
    "/header-fits": [OK, (b"A: " + b"z" * (8 * KIB - 4) + b"\n") * 7, b"\nbody"],
    "/long-header": [OK, (b"A: " + b"z" * (8 * KIB - 4) + b"\n") * 8, b"\nbody"],
    "/silent": [3],
    "/silent-header": [OK, 3],
    "/silent-body": [OK, b"\r\n", b"some", 3],
    "/silent-told-body": [OK, b"Content-Length: 10\r\n\r\n", b"some", 3],
    "/trickle": [OK] + [b"A", 0.05] * 60,
    "/no-location": [b"HTTP/1.0 302 Found\r\n\r\n"],
}


class Handler(BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path in RAW:
            self.send_raw(RAW[self.path])
        elif "/to?" in self.path:
            self.send_response(302)
            self.send_header("Location", unquote(self.path.split("?", 1)[1]))
            self.end_headers()
        else:
            self.tell_request()

    do_POST = do_GET

    def send_raw(self, parts):
        for part in parts:
            if isinstance(part, bytes):
                self.wfile.write(part)
            else:
                time.sleep(part)

    def tell_request(self):
        form = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        lines = [self.requestline] + [f"{name}: {value}" for name, value in self.headers.items()]
        body = "|".join(lines).encode() + b"|" + form
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.send_header("X-Padded", "  middle of it \t")
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *arguments):
        pass


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True

    def handle_error(self, request, client_address):
        pass  # a client that has gone


server = Server(("127.0.0.1", 0), Handler)
threading.Thread(target=server.serve_forever, daemon=True).start()
sys.stdout.write(f"{server.server_address[1]}\n")
sys.stdout.flush()
sys.stdin.read()
