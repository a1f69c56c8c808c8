"""A door in front of a simulated RTU: an upload passes it only as far as a test lets it."""

import contextlib
import re
import socket
import threading

BLOCK_BYTES = 64 * 1024
PASSIVE_PORT = re.compile(rb"(\d+,\d+,\d+,\d+),(\d+),(\d+)")


class UploadDoor:
    """Takes the RTU's FTP connections on a port of its own. Once the first bytes of an upload are through it waits
    until it is opened: for good, or with a pause only for as long behind each block.

    What the sender can have sent into the closed door is bounded by this machine's socket buffers, so a file of some
    ten megabytes is never through before the door is open.
    """

    def __init__(self, rtu, pause=None):
        self._rtu = ("127.0.0.1", rtu.ready["ftp"])
        self._pause = pause
        self._opened = threading.Event()
        self._reached = threading.Event()
        self._control = _listener()
        self.port = self._control.getsockname()[1]
        _in_background(self._take_connections)

    def wait_for_upload(self, seconds):
        """Return when the first bytes of an upload are through."""
        if not self._reached.wait(seconds):
            raise AssertionError("no upload has come")

    def open(self):
        self._opened.set()

    def close(self):
        self.open()
        self._control.shutdown(socket.SHUT_RDWR)  # wakes the thread that waits for a connection
        self._control.close()

    def _take_connections(self):
        with contextlib.suppress(OSError):  # closed
            while True:
                client, _ = self._control.accept()
                rtu = socket.create_connection(self._rtu)
                _in_background(_relay_both, client, rtu, _relay, self._relay_replies)

    def _relay_replies(self, rtu, client):
        with rtu.makefile("rb") as replies:
            for line in replies:
                passive = PASSIVE_PORT.search(line) if line.startswith(b"227") else None
                if passive:
                    port = self._data_door(int(passive[2]) * 256 + int(passive[3]))
                    line = b"227 Entering Passive Mode (%s,%d,%d)\r\n" % (passive[1], port // 256, port % 256)
                client.sendall(line)

    def _data_door(self, rtu_port):
        """A port that leads to the data port of the RTU."""
        listener = _listener()
        _in_background(self._take_data, listener, (self._rtu[0], rtu_port))
        return listener.getsockname()[1]

    def _take_data(self, listener, rtu_address):
        with listener:
            client, _ = listener.accept()
        rtu = socket.create_connection(rtu_address)
        _relay_both(client, rtu, lambda source, target: _relay(source, target, self._wait_at_door), _relay)

    def _wait_at_door(self):
        self._reached.set()
        self._opened.wait(self._pause)


def _relay_both(client, rtu, upwards, downwards):
    """Relay both ways at the same time, each up to its end; then both connections are closed."""
    with client, rtu:
        up = _in_background(_to_its_end, upwards, client, rtu)
        _to_its_end(downwards, rtu, client)
        up.join()


def _to_its_end(relay, source, target):
    with contextlib.suppress(OSError):
        relay(source, target)
    with contextlib.suppress(OSError):
        target.shutdown(socket.SHUT_WR)


def _relay(source, target, after_block=lambda: None):
    while block := source.recv(BLOCK_BYTES):
        target.sendall(block)
        after_block()


def _listener():
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, BLOCK_BYTES)  # what waits at the door is little
    listener.bind(("127.0.0.1", 0))
    listener.listen()
    return listener


def _in_background(work, *arguments):
    thread = threading.Thread(target=work, args=arguments, daemon=True)
    thread.start()
    return thread
