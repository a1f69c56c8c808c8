"""A web server for tests, with one path for each way in which a web server can go wrong.

It listens on a free port of loopback, writes one ready line {"port": N}, answers each "requests" line on its
standard input with the list of request lines so far, and ends when its standard input ends.

/files/NAME          the file NAME of the folder given on the command line
/status/CODE         that status, with an XML document as its body
/redirect/CODE?URL   a redirect to URL, as it stands
/count/N             N redirects, and then a document
"""

import json
import pathlib
import socketserver
import sys
import threading
import urllib.parse

DOCUMENT = b"<R><NAME>test</NAME></R>"
stopping = threading.Event()
requests = []


class Answer(socketserver.StreamRequestHandler):
    """One connection, one request: what the test wants to see is plain when each answer ends in a close."""

    timeout = 60

    def handle(self):
        try:
            line = self.rfile.readline().decode("latin-1").rstrip("\r\n")
            headers = []
            while (header := self.rfile.readline().rstrip(b"\r\n")) != b"":
                headers.append(header.decode("latin-1"))
            requests.append({"line": line, "headers": headers})
            self.answer(line.split(" ")[1])
        except (OSError, IndexError):
            pass  # the client has gone away: many tests are about that

    def answer(self, target):
        path, _, query = target.partition("?")
        parts = path.strip("/").split("/")
        method = getattr(self, "do_" + parts[0].replace("-", "_"), None)
        if method is None:
            self.send("404 Not Found", b"<html><body>no such page</body></html>")
        else:
            method(parts[1:], query)

    def send(self, status, body, *headers, length=None):
        lines = ["HTTP/1.1 " + status, "Connection: close", *headers]
        lines.append("Content-Length: %d" % (len(body) if length is None else length))
        self.wfile.write("\r\n".join(lines).encode("latin-1") + b"\r\n\r\n" + body)

    # Good answers

    def do_doc(self, _rest, _query):
        self.send("200 OK", DOCUMENT)

    def do_chunked(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
        for byte in DOCUMENT:
            self.wfile.write(b"1\r\n" + bytes([byte]) + b"\r\n")
        self.wfile.write(b"0\r\n\r\n")

    def do_old(self, _rest, _query):
        self.wfile.write(b"HTTP/1.0 200 OK\r\n\r\n" + DOCUMENT)

    def do_files(self, rest, _query):
        file = pathlib.Path(sys.argv[1], *(urllib.parse.unquote(part) for part in rest))
        if file.is_file():
            self.send("200 OK", file.read_bytes())
        else:
            self.send("404 Not Found", b"")

    # Other statuses

    def do_status(self, rest, _query):
        self.send(rest[0] + " Status", b"" if rest[0] == "204" else DOCUMENT)

    def do_redirect(self, rest, query):
        self.send(rest[0] + " Redirect", b"", "Location: " + urllib.parse.unquote(query))

    def do_count(self, rest, _query):
        left = int(rest[0])
        if left == 0:
            self.send("200 OK", DOCUMENT)
        else:
            self.send("302 Found", b"", "Location: /count/%d" % (left - 1))

    # Servers that never come to an end

    def do_silent(self, _rest, _query):
        stopping.wait()

    def do_silent_body(self, _rest, _query):
        self.send("200 OK", DOCUMENT[:10], length=len(DOCUMENT))
        stopping.wait()

    def drip(self, piece):
        while not stopping.wait(0.01):
            self.wfile.write(piece)

    def do_drip(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\n\r\n")
        self.drip(b" ")

    def do_drip_header(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\n")
        self.drip(b"X: y\r\n")

    def do_drip_status(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 ")
        self.drip(b"O")

    def pour(self, piece):
        while not stopping.is_set():
            self.wfile.write(piece)

    def do_endless(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\n\r\n")
        self.pour(b"<a>" * 10000)

    def do_endless_header(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\n")
        self.pour((b"X: " + b"y" * 1000 + b"\r\n") * 10)

    def do_endless_interim(self, _rest, _query):
        self.pour(b"HTTP/1.1 100 Continue\r\n\r\n" * 100)

    # Broken answers

    def do_cut(self, _rest, _query):
        self.send("200 OK", DOCUMENT[:10], length=len(DOCUMENT))

    def do_cut_chunked(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1000\r\n<R>")

    def do_cut_unknown(self, _rest, _query):
        self.wfile.write(b"HTTP/1.1 200 OK\r\n\r\n" + DOCUMENT[:10])

    def do_nothing(self, _rest, _query):
        pass

    def do_garbage(self, _rest, _query):
        self.wfile.write(b"\x00\xff this is no web server\r\n\r\n")


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True
    block_on_close = False
    request_queue_size = 64


def main():
    with Server(("127.0.0.1", 0), Answer) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        print(json.dumps({"port": server.server_address[1]}), flush=True)
        for _line in sys.stdin:
            print(json.dumps(requests), flush=True)
        stopping.set()
        server.shutdown()


main()
