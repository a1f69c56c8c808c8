"""What was asked of the RTU: every FTP command and every HTTP request, kept and written as JSON lines."""

import json
import threading
import time
from dataclasses import dataclass


def readable(text):
    """A text from the wire, fit for JSON: bytes that were no UTF-8 are read as Latin-1."""
    raw = text.encode("utf-8", "surrogateescape")
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        return raw.decode("latin-1")


@dataclass(eq=False)
class Command:
    """One FTP command; its reply is None until the last reply was given, and stays so when none ever came."""

    t: float
    session: int
    command: str
    argument: str
    reply: int | None = None

    def as_json(self):
        return {"t": self.t, "session": self.session, "command": self.command, "argument": self.argument,
                "reply": self.reply}


class CommandLog:
    """The log. A command is written when its last reply is given, or when its session ends without one."""

    def __init__(self, path=None):
        self._start = time.monotonic()
        self._commands = []
        self._unfinished = []
        self._lock = threading.Lock()
        self._file = open(path, "w", encoding="utf-8") if path else None

    def begin(self, session, command, argument):
        """Note a command that has arrived. The argument of PASS is not kept."""
        shown = "****" if command == "PASS" else readable(argument)
        record = Command(self._now(), session, readable(command), shown)
        self._commands.append(record)
        self._unfinished.append(record)
        return record

    def finish(self, record, reply=None):
        """Write a command with its last reply, once."""
        if record in self._unfinished:
            self._unfinished.remove(record)
            record.reply = reply
            self._write(record.as_json())

    def finish_session(self, session):
        """Write the commands of a session that has ended, where a reply never came."""
        for record in [record for record in self._unfinished if record.session == session]:
            self.finish(record)

    def request(self, method, path, status):
        """Write an HTTP request with the status of its answer."""
        self._write({"t": self._now(), "http": method, "path": path, "status": status})

    def commands(self):
        """All FTP commands so far, in the order of their arrival."""
        return [record.as_json() for record in self._commands]

    def close(self):
        for record in list(self._unfinished):
            self.finish(record)
        with self._lock:
            if self._file:
                self._file.close()
                self._file = None

    def _now(self):
        return round(time.monotonic() - self._start, 6)

    def _write(self, line):
        with self._lock:
            if self._file:
                self._file.write(json.dumps(line) + "\n")
                self._file.flush()
