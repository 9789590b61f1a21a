# SPDX-License-Identifier: GPL-3.0-or-later
"""The HTTP server of the network tests: tells its port, ends where it is told or after a minute."""

import os
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import unquote


class Handler(BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/quit":
            os._exit(0)
        if "/to?" in self.path:
            self.send_response(302)
            self.send_header("Location", unquote(self.path.split("?", 1)[1]))
            self.end_headers()
        else:
            self.tell_request()

    do_POST = do_GET

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


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
threading.Timer(60, os._exit, [0]).start()
sys.stdout.write(f"{server.server_address[1]}\n")
sys.stdout.flush()
server.serve_forever()
