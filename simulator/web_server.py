"""The RTU's web server: two documents, a thread a request, no connection kept alive."""

import os
import select
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import unquote, urlsplit
from xml.sax.saxutils import escape

from rtu_folders import stored_name

NOT_XML = b"<<< \x00\x01 this is no document &&& >\r\n"
STALL_LOOK_SECONDS = 0.2  # how often a stalled answer looks whether its client is still there

RTU_SETUP = """<?xml version="1.0" encoding="UTF-8"?>
<RTUSETUP>
  <CPU>
    <RTU>
      <NAME>Harbour Road Substation 12</NAME>
      <APPFILE>{application}</APPFILE>
      <PARTNO>{part_number}</PARTNO>
      <RUNMODE>{run_mode}</RUNMODE>
      <TYPE>7260</TYPE>
    </RTU>
    <CONFIG>
      <NAME>Harbour Road 132kV Rev C</NAME>
      <LASTDATE>17/03/2016 14:22:05</LASTDATE>
    </CONFIG>
  </CPU>
</RTUSETUP>
"""


class RtuWebServer(ThreadingHTTPServer):
    """The listening socket. Documents are made when they are asked for."""

    daemon_threads = True

    def __init__(self, address, rtu):
        self.rtu = rtu
        self.closing = threading.Event()
        super().__init__(address, _Request)

    def start(self):
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def stop(self):
        """Release the answers that are held back. The threads end with the program."""
        self.closing.set()

    def handle_error(self, request, client_address):
        if not isinstance(sys.exc_info()[1], OSError):  # a client that goes away is no news
            super().handle_error(request, client_address)

    def document(self, path):
        """The bytes of the document at the path, or None. Names fold case, as on the RTU's file system."""
        folded = path.lower()
        if folded == "/cs/xml/rtusetup.xml":
            return self._rtu_setup()
        if folded == "/fs/profilec.xml":
            return self._profile()
        return None

    def _rtu_setup(self):
        volume = self.rtu.data_folder
        applications = sorted(name for name in _names(volume) if name.lower().endswith(".out"))
        return RTU_SETUP.format(
            application=escape(applications[0] if applications else ""),
            part_number=self.rtu.board.part_number,
            run_mode=escape(self.rtu.run_mode)).encode("utf-8")

    def _profile(self):
        path = self.rtu.data_folder
        for name in ("webfiles", "gui", "profileC.xml"):
            path = os.path.join(path, stored_name(path, name))
        if not os.path.realpath(path).startswith(self.rtu.folder + os.sep) or not os.path.isfile(path):
            return None
        with open(path, "rb") as file:
            return file.read()


def _names(folder):
    try:
        return os.listdir(folder)
    except OSError:
        return []


class _Request(BaseHTTPRequestHandler):
    server_version = "VxWorks-WebServer/2.1"
    sys_version = ""

    def do_GET(self):
        self._answer(with_body=True)

    def do_HEAD(self):
        self._answer(with_body=False)

    def log_request(self, code="-", size="-"):
        self.server.rtu.log.request(self.command or "", getattr(self, "path", ""), int(code))

    def log_message(self, format, *args):
        pass  # the command log tells it all

    def _answer(self, with_body):
        rtu = self.server.rtu
        path = unquote(urlsplit(self.path).path)
        fault = rtu.faults.meet_document(path.rsplit("/", 1)[-1])
        self.server.closing.wait(rtu.latency_seconds)
        status, body = self._status_and_body(path, fault)
        self._send(status, body, body if with_body else b"", fault)

    def _status_and_body(self, path, fault):
        if fault and fault.name == "http-status":
            return fault.code, f"<html><body>{fault.code}</body></html>".encode()
        body = self.server.document(path)
        if body is None:
            return 404, b"<html><body>404 Not Found</body></html>"
        return 200, NOT_XML if fault and fault.name == "http-garbage" else body

    def _send(self, status, whole, body, fault):
        ends_midway = fault and fault.name in ("http-stall", "http-cut")
        self.send_response(status)
        self.send_header("Content-Type", "text/xml" if status == 200 else "text/html")
        self.send_header("Content-Length", str(len(whole)))
        self.send_header("Connection", "close")
        self.end_headers()
        self.wfile.write(body[:len(body) // 2] if ends_midway else body)
        if fault and fault.name == "http-stall":
            self._wait_for_the_client_to_leave()

    def _wait_for_the_client_to_leave(self):
        while not self.server.closing.is_set():
            if select.select([self.connection], [], [], STALL_LOOK_SECONDS)[0]:
                return
