"""The RTU's FTP server: sessions and data channels on pyftpdlib's loop, with the replies and limits of a VxWorks one."""

import io
import os
import socket
from collections import deque
from contextlib import contextmanager

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler, FileProducer, proto_cmds
from pyftpdlib.servers import FTPServer

import listings
from data_channel import DataChannel, PartOfFile
from faults import AT_THE_END, LISTINGS, MIDWAY, TRANSFERS
from rtu_folders import RtuFolders

CLASSIC_COMMANDS = ("USER PASS QUIT CWD PWD TYPE STRU MODE PORT PASV NOOP SYST HELP LIST NLST RETR STOR DELE MKD RMD"
                    " RNFR RNTO").split()
MODERN_COMMANDS = CLASSIC_COMMANDS + "CDUP EPRT EPSV FEAT OPTS MLSD MLST SIZE MDTM REST ABOR STAT APPE".split()
NONSENSE_REPLY = "#@! 7f 45 4c 46 ??"
NONSENSE_LISTING = listings.wire_lines(["~~~~ 0xDEADBEEF", "tShell> d 0x1000", "", "   -- -- ???? <<>> --"])
LINES_BEFORE_ERROR = 5  # the two head lines and a few entries
DOCUMENTATION_ADDRESS = "192,0,2,1"  # reserved for examples: nobody answers there


class FtpSession(FTPHandler):
    """A control connection. The RTU it belongs to is its server's attribute "rtu"."""

    abstracted_fs = RtuFolders
    unicode_errors = "surrogateescape"  # names keep the bytes they have on disk

    def __init__(self, conn, server, ioloop=None):
        self.rtu = server.rtu
        self.number = server.next_session()
        self.transfer_fault = None
        self._transfer_record = None
        self._record = None
        self._fault = None
        self._in_transfer_answer = False
        self._muted = False
        self._leaving = False
        self._outbox = deque()
        self._given_argument = ""
        super().__init__(conn, server, ioloop)

    # Connecting, and what goes over the control connection

    def handle(self):
        self.server.sessions.add(self)
        self._fault = self.rtu.faults.meet_command("CONNECT")
        if self._fault and self._struck_at_once(""):
            return
        if self.server.is_full():
            self.respond("421 Session limit reached, closing control connection")
            self.close_when_done()
        else:
            self.respond("220 VxWorks (5.4.2) FTP server ready")

    def push(self, s):
        data = s.encode("utf-8", "surrogateescape")
        self._in_order(lambda: super(FTPHandler, self).push(data))

    def respond(self, resp, logfun=None):
        self._last_response = resp
        code = int(resp[:3])
        record, fault = self._answered()
        if code >= 200 and fault and fault.name == "cut-after":
            self.hang_up()
            return
        if fault and fault.name == "wrong-address":
            resp = resp.replace("127,0,0,1", DOCUMENTATION_ADDRESS)
        self.push(resp + "\r\n")
        if code >= 200 and record:
            self.rtu.log.finish(record, code)

    def close_when_done(self):
        self._muted = self._leaving = True
        self._in_order(super().close_when_done)

    def hang_up(self):
        """Cut the control connection, behind the replies that are on their way."""
        self._muted = self._leaving = True
        self._in_order(lambda: self.ioloop.call_later(0, self.close))

    def mute(self):
        """Never answer again, and never end by itself."""
        self._muted = True
        if self._idler is not None and not self._idler.cancelled:
            self._idler.cancel()

    def close(self):
        if not self._closed:
            super().close()
            self.server.sessions.discard(self)
            self.rtu.log.finish_session(self.number)

    @property
    def is_leaving(self):
        """Whether this session no longer counts: it is being closed, or its client has closed."""
        if self._leaving:
            return True
        try:
            return self.socket.recv(1, socket.MSG_PEEK | socket.MSG_DONTWAIT) == b""
        except BlockingIOError:
            return False
        except OSError:
            return True

    def _in_order(self, action):
        """Carry out the action after the RTU's latency, never before one that was asked for earlier."""
        if not self.rtu.latency_seconds and not self._outbox:
            action()
            return
        self._outbox.append(action)
        self.ioloop.call_later(self.rtu.latency_seconds, self._next_action)

    def _next_action(self):
        action = self._outbox.popleft()
        if not self._closed:
            action()

    @contextmanager
    def answering_transfer(self):
        """Replies given inside belong to the running transfer, not to a command that came meanwhile."""
        self._in_transfer_answer = True
        try:
            yield
        finally:
            self._in_transfer_answer = False
            self.transfer_fault = self._transfer_record = None

    def _answered(self):
        if self._in_transfer_answer:
            return self._transfer_record, self.transfer_fault
        return self._record, self._fault

    # Commands

    def pre_process_command(self, line, cmd, arg):
        if self._muted or self._closed:
            return
        self._record = self.rtu.log.begin(self.number, cmd, arg)
        self._fault = self.rtu.faults.meet_command(cmd)
        self._given_argument = arg
        if self._fault and self._struck_at_once(line):
            return
        if cmd not in self.proto_cmds:
            self.respond("500 Command not understood")
        elif "\0" in arg:
            self.respond("501 Bad argument")
        else:
            super().pre_process_command(line, cmd, arg)

    def _struck_at_once(self, line):
        """Let the fault strike that keeps the command from being carried out; false when it is one of the others."""
        fault = self._fault
        if fault.name == "refuse":
            self.respond(f"{fault.code} Refused by the device")
            if fault.code == 421:
                self.close_when_done()
        elif fault.name == "quote":
            self.respond(f'{fault.code} Cannot carry out "{line}"')
        elif fault.name == "cut-before":
            self.hang_up()
        elif fault.name == "stall" and fault.target not in TRANSFERS:
            self.mute()
        elif fault.name == "garbage" and fault.target not in LISTINGS:
            self.push(NONSENSE_REPLY + "\r\n")
        else:
            return False
        return True

    def log(self, msg, logfun=None):
        pass  # the command log tells it all

    def ftp_USER(self, line):
        if self.authenticated:
            self.flush_account()
        self.username = line
        self.respond("331 Password required")

    def ftp_PASS(self, line):
        if self.authenticated or not self.username:
            self.respond("503 Login with USER first")
        elif (self.username, line) != (self.rtu.user, self.rtu.password):
            self.username = ""
            self.respond("530 Login failed.")
        else:
            self.handle_auth_success(self.rtu.folder, line, "User logged in")
            self.fs.cwd = self.rtu.start_folder

    def ftp_QUIT(self, line):
        self.respond("221 Bye...see you later")
        self.close_when_done()

    def ftp_PWD(self, line):
        self.respond(f'257 Current directory is "{self.fs.cwd}"')

    def ftp_CWD(self, path):
        if not os.path.isdir(path):
            self.respond("550 Directory non existent or syntax error")
            return
        self.fs.chdir(path)
        self.respond(f'250 Changed directory to "{self.fs.cwd}"')

    def ftp_NOOP(self, line):
        self.respond("200 NOOP -- did nothing as you requested!")

    def ftp_SYST(self, line):
        self.respond("215 VxWorks 5.4.2")

    def ftp_TYPE(self, line):
        kind = line.strip().upper()[:1]
        if kind not in ("A", "I", "L"):
            self.respond("504 Type not implemented")
            return
        self._current_type = "a" if kind == "A" else "i"
        self.respond(f"200 Type set to {'A' if kind == 'A' else 'I'}, {'ASCII' if kind == 'A' else 'binary'} mode")

    def ftp_DELE(self, path):
        self._change("250 File deleted successfully", "550 Could not delete file", os.remove, path)

    def ftp_MKD(self, path):
        if self.fs.can_hold(path):
            self._change("257 MKD command successful", "550 Could not make directory", os.mkdir, path)
        else:
            self.respond("550 Could not make directory")

    def ftp_RMD(self, path):
        self._change("250 RMD command successful", "550 Could not remove directory", os.rmdir, path)

    def ftp_RNFR(self, path):
        self._rnfr = path if os.path.exists(path) and self.fs.is_in_volume(path) else None
        self.respond("350 File exists, ready for destination name" if self._rnfr else "550 No such file or directory")

    def ftp_RNTO(self, path):
        """A name that differs from the old one only in case is a new name; any other that is there is refused."""
        source, self._rnfr = self._rnfr, None
        if not source:
            self.respond("503 Bad sequence of commands")
            return
        target = os.path.join(os.path.dirname(path), os.path.basename(self.fs.ftpnorm(self._given_argument)))
        if os.path.lexists(path) and path != source:
            self.respond("550 Could not rename: destination exists")
        elif not self.fs.can_hold(target):
            self.respond("550 Could not rename")
        else:
            self._change("250 RNTO command successful", "550 Could not rename", os.rename, source, target)

    def _change(self, done, refused, action, path, *more):
        try:
            if not self.fs.is_in_volume(path):
                raise PermissionError(path)
            action(path, *more)
        except OSError:
            self.respond(refused)
        else:
            self.respond(done)

    # Transfers

    def ftp_LIST(self, path):
        self._send_listing(path, "LIST", lambda: listings.render(
            self.rtu.listing, self.fs.entries(path, self.rtu.lists_dots)))

    def ftp_NLST(self, path):
        self._send_listing(path, "NLST", lambda: listings.wire_lines(self.fs.listdir(path)))

    def ftp_MLSD(self, path):
        self._send_listing(path, "MLSD", lambda: b"".join(self.fs.format_mlsx(
            path, self.fs.listdir(path), self.authorizer.get_perms(self.username), self._current_facts)))

    def ftp_RETR(self, file):
        if not os.path.isfile(file):
            self.respond("550 File not found or not a plain file")
            return
        try:
            opened = open(file, "rb")
        except OSError:
            self.respond("550 Could not open file")
            return
        position, self._restart_position = self._restart_position, 0
        size = os.path.getsize(file)
        if position > size:
            opened.close()
            self.respond("554 Restart position lies behind the end of the file")
            return
        opened.seek(position)
        self._send(opened, size - position, self._current_type, "RETR")

    def ftp_STOR(self, file, mode="w"):
        if not self.fs.can_hold(file) or (os.path.lexists(file) and not os.path.isfile(file)):
            self.respond("550 Could not create file")
            return
        self._begin_transfer()
        super().ftp_STOR(file, mode)

    def _send_listing(self, path, command, make):
        if not os.path.isdir(path):
            self.respond("550 Directory non existent or syntax error")
            return
        fault = self._fault.name if self._fault else ""
        if fault == "garbage":
            data = NONSENSE_LISTING
        elif fault == "cant-open":
            data = listings.wire_lines([f'Can\'t open "{self.fs.fs2ftp(path)}".'])
        elif fault == "listing-error":
            data = b"".join(make().splitlines(keepends=True)[:LINES_BEFORE_ERROR])
            data += listings.wire_lines([listings.LISTING_ERROR])
        else:
            data = make()
        source = io.BytesIO(data)
        source.name = path
        self._send(source, len(data), "i", command)

    def _send(self, source, size, kind, command):
        self._begin_transfer()
        if self.transfer_fault and self.transfer_fault.name in MIDWAY | {"truncate"}:
            source = PartOfFile(source, size // 2)
        self.push_dtp_data(FileProducer(source, kind), isproducer=True, file=source, cmd=command)

    def _begin_transfer(self):
        self._transfer_record = self._record
        self.transfer_fault = self._fault if self._fault and self._fault.name in MIDWAY | AT_THE_END else None


class RtuFtpServer(FTPServer):
    """The listening socket and its sessions."""

    def __init__(self, address, rtu, ioloop):
        self.rtu = rtu
        self.sessions = set()
        self._session_count = 0
        super().__init__(socket.create_server(address), _session_class(rtu), ioloop=ioloop)

    def next_session(self):
        self._session_count += 1
        return self._session_count

    def is_full(self):
        """Whether more sessions are open than the RTU bears."""
        return sum(not session.is_leaving for session in self.sessions) > self.rtu.max_logins


def _session_class(rtu):
    """The session class with the RTU's commands and its one user."""
    rights = DummyAuthorizer()
    rights.add_user(rtu.user, rtu.password, rtu.folder, perm="elradfmw")
    commands = MODERN_COMMANDS if rtu.modern else CLASSIC_COMMANDS
    return type("Session", (FtpSession,), {
        "authorizer": rights,
        "timeout": rtu.idle_seconds,
        "proto_cmds": {name: proto_cmds[name] for name in commands},
        "dtp_handler": type("Data", (DataChannel,), {"timeout": rtu.idle_seconds}),
    })
