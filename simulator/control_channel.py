"""The control channel: JSON lines on standard input, one JSON line on standard output for each."""

import json
import os
import queue
import signal
import socket
import sys
import threading

from faults import FaultError
from pyftpdlib.ioloop import AsyncChat

LONGEST_LINE_BYTES = 1 << 20
PARENT_LOOK_SECONDS = 0.25  # also bounds how long the loop sleeps


def say(event):
    """Write one JSON line on standard output."""
    sys.stdout.write(json.dumps(event) + "\n")
    sys.stdout.flush()


class ControlChannel(AsyncChat):
    """Wakes the loop for lines of standard input, for signals and for the parent's end."""

    def __init__(self, ioloop, rtu, reads_stdin):
        self._waking, woken = socket.socketpair()
        self._waking.setblocking(False)
        super().__init__(woken, ioloop)
        self._rtu = rtu
        self._lines = queue.SimpleQueue()
        self._parent = os.getppid()
        self.ended = False
        self._watch_signals()
        ioloop.call_every(PARENT_LOOK_SECONDS, self._watch_parent)
        if reads_stdin:
            threading.Thread(target=self._read_stdin, daemon=True).start()

    def handle_read(self):
        self.socket.recv(4096)
        while not self.ended and not self._lines.empty():
            line = self._lines.get()
            if line is None:
                self.ended = True
            else:
                self._answer(line)

    handle_read_event = handle_read

    def writable(self):
        return False

    def _watch_signals(self):
        def end(*_):
            self._lines.put(None)
        for number in (signal.SIGTERM, signal.SIGINT):
            signal.signal(number, end)
        signal.set_wakeup_fd(self._waking.fileno(), warn_on_full_buffer=False)

    def _watch_parent(self):
        if os.getppid() != self._parent:
            self.ended = True

    def _read_stdin(self):
        with open(0, "rb", closefd=False) as stdin:
            while True:
                line = stdin.readline(LONGEST_LINE_BYTES)
                self._lines.put(line or None)
                self._wake()
                if not line:
                    return

    def _wake(self):
        try:
            self._waking.send(b"\0")
        except OSError:
            pass  # the loop has wakes enough to read, or a signal has ended it already

    def _answer(self, line):
        try:
            say(self._carry_out(line))
        except BrokenPipeError:
            self.ended = True

    def _carry_out(self, line):
        try:
            order = json.loads(line)
        except (ValueError, RecursionError) as error:
            return {"event": "error", "message": f"not JSON: {error}"}
        match order:
            case {"fault": str(fault_text)}:
                return self._add_fault(fault_text)
            case {"clear": "faults"}:
                self._rtu.faults.clear()
                return {"event": "cleared"}
            case {"ping": True}:
                return {"event": "pong"}
            case {"commands": True}:
                return {"event": "commands", "commands": self._rtu.log.commands()}
        return {"event": "error", "message": "known orders: fault, clear, ping, commands"}

    def _add_fault(self, fault_text):
        try:
            self._rtu.faults.add(fault_text)
        except FaultError as error:
            return {"event": "error", "message": str(error)}
        return {"event": "fault", "fault": fault_text}
