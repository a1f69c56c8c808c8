#!/usr/bin/python3
"""A simulated RTU: its FTP server and its web server on this machine's loopback. See README.md."""

import argparse
import logging
import os
import shutil
import signal
import sys
import tempfile
from dataclasses import dataclass, field

sys.dont_write_bytecode = True  # nothing is written outside the RTU's folder
sys.modules["OpenSSL"] = None  # the RTU speaks no TLS, and pyftpdlib's import of it is a third of the start

from boards import BOARDS, Board
from command_log import CommandLog
from faults import FaultError, Faults, parse_fault
from listings import FORMATS
import sample_contents

ADDRESS = "127.0.0.1"
SHORTEST_WAIT_SECONDS = 0.001  # not 0: pyftpdlib's loop takes that for no limit at all


@dataclass
class Rtu:
    """What the servers share: the RTU's properties, the faults in force and the log."""

    board: Board
    folder: str
    user: str
    password: str
    listing: str
    lists_dots: bool
    modern: bool
    latency_seconds: float
    bytes_per_second: int  # 0: as fast as it goes
    idle_seconds: float
    max_logins: int
    run_mode: str
    log: CommandLog
    faults: Faults = field(default_factory=Faults)

    @property
    def data_folder(self):
        return os.path.join(self.folder, self.board.data_volume)

    @property
    def start_folder(self):
        """Where a login begins: the data volume, when it is there."""
        return "/" + self.board.data_volume if os.path.isdir(self.data_folder) else "/"


class Parser(argparse.ArgumentParser):
    def error(self, message):
        self.exit(2, f"{self.prog}: {message}\n")


def fail(message, status=1):
    """End with one line on standard error."""
    print(f"rtu_simulator.py: {message}", file=sys.stderr)
    sys.exit(status)


def number(low, high):
    """An option's type: a whole number in a range."""
    def parse(text):
        value = int(text)
        if not low <= value <= high:
            raise argparse.ArgumentTypeError(f"{value} does not lie between {low} and {high}")
        return value
    parse.__name__ = "number"
    return parse


def parse_options():
    parser = Parser(prog="rtu_simulator.py", description="A simulated RTU on this machine's loopback.")
    parser.add_argument("--board", choices=sorted(BOARDS), default="K5902", help="CPU board (default K5902)")
    parser.add_argument("--ftp-port", type=number(0, 65535), default=0, metavar="N", help="default 0: any free port")
    parser.add_argument("--http-port", type=number(0, 65535), default=0, metavar="N", help="default 0: any free port")
    parser.add_argument("--user", default="rtu", help="default rtu")
    parser.add_argument("--password", default="rtu", help="default rtu")
    parser.add_argument("--folder", metavar="DIR", help="the RTU's files; filled with the sample contents when absent or"
                        " empty (default: a temporary folder that is removed at the end)")
    parser.add_argument("--listing", choices=FORMATS, default="table", help="form of LIST (default table)")
    parser.add_argument("--no-dots", action="store_true", help='leave "." and ".." out of LIST')
    parser.add_argument("--modern", action="store_true", help="know EPSV, FEAT, MLSD, SIZE, MDTM, REST and their like")
    parser.add_argument("--latency", type=number(0, 60000), default=0, metavar="MS",
                        help="delay of every FTP reply and HTTP answer, in milliseconds")
    parser.add_argument("--bytes-per-second", type=number(0, 1 << 40), default=0, metavar="N",
                        help="speed of each transfer (default 0: as fast as it goes)")
    parser.add_argument("--idle-timeout", type=number(1, 86400), default=300, metavar="S",
                        help="idle seconds after which a session is closed with a 421 (default 300)")
    parser.add_argument("--max-logins", type=number(1, 100), default=4, metavar="N", help="sessions at once (default 4)")
    parser.add_argument("--run-mode", default="RUN", help="RUNMODE in rtusetup.xml (default RUN)")
    parser.add_argument("--log", metavar="FILE", help="write every FTP command and HTTP request as a JSON line")
    parser.add_argument("--fault", action="append", default=[], metavar="FAULT", help="add a fault (repeatable)")
    parser.add_argument("--no-stdin", action="store_true", help="do not read standard input; end with the parent")
    _add_amounts(parser)
    return parser.parse_args()


def _add_amounts(parser):
    sizes = parser.add_argument_group("size of the sample contents")
    usual = sample_contents.Amounts()
    for option, most in (("xml-files", 100000), ("isagraf-files", 100000), ("template-folders", 1000),
                         ("template-files", 10000), ("gui-folders", 1000)):
        default = getattr(usual, option.replace("-", "_"))
        sizes.add_argument("--" + option, type=number(0, most), default=default, metavar="N", help=f"default {default}")
    sizes.add_argument("--application-size", type=number(0, 1 << 40), default=usual.application_bytes, metavar="BYTES",
                       help=f"default {usual.application_bytes}")
    sizes.add_argument("--latin1-names", action="store_true", help="write the accented folder name in Latin-1")


def amounts_of(options):
    return sample_contents.Amounts(
        xml_files=options.xml_files, isagraf_files=options.isagraf_files, template_folders=options.template_folders,
        template_files=options.template_files, gui_folders=options.gui_folders,
        application_bytes=options.application_size, latin1_names=options.latin1_names)


def fill_if_empty(folder, options):
    """Make the RTU's folder where it is absent, and fill it with the sample contents where it is empty."""
    os.makedirs(folder, exist_ok=True)
    if not os.listdir(folder):
        sample_contents.fill(folder, BOARDS[options.board], amounts_of(options))


def make_rtu(options, folder):
    rtu = Rtu(board=BOARDS[options.board], folder=folder, user=options.user, password=options.password,
              listing=options.listing, lists_dots=not options.no_dots, modern=options.modern,
              latency_seconds=options.latency / 1000, bytes_per_second=options.bytes_per_second,
              idle_seconds=options.idle_timeout, max_logins=options.max_logins, run_mode=options.run_mode,
              log=CommandLog(options.log))
    for fault_text in options.fault:
        rtu.faults.add(fault_text)
    return rtu


def serve(options, rtu):
    """Serve until standard input ends, the parent ends or a signal comes."""
    from control_channel import ControlChannel, say
    from ftp_server import RtuFtpServer
    from pyftpdlib.ioloop import IOLoop
    from web_server import RtuWebServer

    loop = IOLoop()
    ftp = _bound("FTP", options.ftp_port, lambda address: RtuFtpServer(address, rtu, loop))
    web = _bound("web", options.http_port, lambda address: RtuWebServer(address, rtu))
    control = ControlChannel(loop, rtu, reads_stdin=not options.no_stdin)
    web.start()
    say({"event": "ready", "ftp": ftp.address[1], "http": web.server_address[1], "address": ADDRESS,
         "board": rtu.board.part_number, "user": rtu.user, "folder": rtu.folder})
    wait = SHORTEST_WAIT_SECONDS
    while not control.ended:
        wait = max(SHORTEST_WAIT_SECONDS, loop.loop(wait, blocking=False))
    web.stop()
    loop.close()
    rtu.log.close()


def _bound(name, port, make):
    try:
        return make((ADDRESS, port))
    except OSError as error:
        fail(f"the {name} server's port {port} cannot be bound: {error.strerror}")


def main():
    options = parse_options()
    check(options)
    logging.basicConfig(stream=sys.stderr, level=logging.ERROR)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))  # until the control channel takes over
    folder = os.path.realpath(options.folder or tempfile.mkdtemp(prefix="rtu-simulator-"))
    try:
        fill_if_empty(folder, options)
        serve(options, make_rtu(options, folder))
    except OSError as error:
        fail(str(error))
    finally:
        if not options.folder:
            shutil.rmtree(folder, ignore_errors=True)


def check(options):
    """Refuse wrong usage, and a machine without pyftpdlib, before anything is made."""
    try:
        for fault_text in options.fault:
            parse_fault(fault_text)
    except FaultError as error:
        fail(error, status=2)
    if options.folder and os.path.exists(options.folder) and not os.path.isdir(options.folder):
        fail(f"not a folder: {options.folder}", status=2)
    try:
        import pyftpdlib.handlers  # noqa: F401
    except ImportError:
        fail("pyftpdlib is missing: install Debian's package python3-pyftpdlib")


if __name__ == "__main__":
    main()
