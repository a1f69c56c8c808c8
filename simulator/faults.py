"""Faults that are asked for by name: NAME[:CODE]=TARGET[@FIRST][xCOUNT].

TARGET is an FTP command (or CONNECT, the moment a client connects); for names that begin with "http-" it is the bare
name of a document of the web server.
"""

import re
import threading
from dataclasses import dataclass

TRANSFERS = frozenset(("RETR", "STOR", "LIST", "NLST", "MLSD"))
LISTINGS = frozenset(("LIST", "NLST", "MLSD"))
CONNECT = frozenset(("CONNECT",))
COMMANDS = TRANSFERS | frozenset(
    "USER PASS QUIT CWD CDUP PWD TYPE STRU MODE PORT PASV EPRT EPSV NOOP SYST HELP FEAT OPTS DELE MKD RMD RNFR"
    " RNTO SIZE MDTM MLST REST ABOR STAT APPE".split())

# Faults that wait for a transfer: some strike when half of the data has gone, some when all of it has.
MIDWAY = frozenset(("cut-during", "stall", "refuse-during"))
AT_THE_END = frozenset(("cut-after", "truncate", "listing-error"))

# Name of each FTP fault and the commands it can be laid on.
FTP_FAULTS = {
    "refuse": COMMANDS | CONNECT,
    "refuse-during": TRANSFERS,
    "quote": COMMANDS,
    "cut-before": COMMANDS | CONNECT,
    "cut-during": TRANSFERS,
    "cut-after": COMMANDS,
    "stall": COMMANDS | CONNECT,
    "truncate": TRANSFERS,
    "garbage": COMMANDS | CONNECT,
    "listing-error": LISTINGS,
    "cant-open": LISTINGS,
    "wrong-address": frozenset(("PASV",)),
}
WEB_FAULTS = ("http-status", "http-garbage", "http-stall", "http-cut")
WITH_CODE = {"refuse": 550, "refuse-during": 426, "quote": 530, "http-status": 500}

_SPEC = re.compile(r"(?P<name>[a-z-]+?)(?:[:-](?P<code>\d{3}))?=(?P<target>[^@=]+?)"
                   r"(?:@(?P<first>\d+))?(?:x(?P<count>\d+|\*))?")


class FaultError(ValueError):
    """A fault that nobody knows; its text says what is wrong."""


@dataclass
class Fault:
    """One fault and how often its target was met since it was added."""

    name: str
    target: str
    code: int = 0
    first: int = 1
    count: int | None = 1  # None: always
    met: int = 0

    def meet(self):
        """Count one more meeting with the target; true when the fault strikes this time."""
        self.met += 1
        return self.met >= self.first and (self.count is None or self.met < self.first + self.count)


def parse_fault(fault_text):
    """The fault that a text asks for; raises FaultError."""
    match = _SPEC.fullmatch(fault_text)
    if not match:
        raise FaultError(f"not a fault: {fault_text!r} (expected NAME[:CODE]=TARGET[@FIRST][xCOUNT])")
    name, first, count = match["name"], int(match["first"] or 1), match["count"] or "1"
    if first < 1 or count == "0":
        raise FaultError(f"FIRST and COUNT begin at 1: {fault_text!r}")
    if match["code"] and name not in WITH_CODE:
        raise FaultError(f"the fault {name!r} takes no code: {fault_text!r}")
    code = int(match["code"] or WITH_CODE.get(name, 0))
    if name in WITH_CODE and not 200 <= code <= 599:
        raise FaultError(f"a reply code lies between 200 and 599: {fault_text!r}")
    return Fault(name, _checked_target(name, match["target"], fault_text), code, first,
                 None if count == "*" else int(count))


def _checked_target(name, target, fault_text):
    if name in WEB_FAULTS:
        return target.lower()
    if name not in FTP_FAULTS:
        raise FaultError(f"unknown fault {name!r} (known: {', '.join([*FTP_FAULTS, *WEB_FAULTS])})")
    command = target.upper()
    if command not in COMMANDS | CONNECT:
        raise FaultError(f"unknown command {target!r} in the fault {fault_text!r}")
    if command not in FTP_FAULTS[name]:
        raise FaultError(f"the fault {name!r} does not fit the command {command}")
    return command


class Faults:
    """The faults in force. The FTP loop and the web server's threads ask at the same time."""

    def __init__(self):
        self._faults = []
        self._lock = threading.Lock()

    def add(self, fault_text):
        """Add the fault that the text asks for; raises FaultError."""
        fault = parse_fault(fault_text)
        with self._lock:
            self._faults.append(fault)

    def clear(self):
        with self._lock:
            self._faults.clear()

    def meet_command(self, command):
        """The fault that strikes this FTP command, or None. Every fault on the command counts it."""
        return self._meet(command, web=False)

    def meet_document(self, name):
        """The fault that strikes a request for this document of the web server, or None."""
        return self._meet(name.lower(), web=True)

    def _meet(self, target, web):
        with self._lock:
            striking = [fault for fault in self._faults
                        if fault.target == target and (fault.name in WEB_FAULTS) == web and fault.meet()]
        return striking[0] if striking else None
