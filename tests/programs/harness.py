"""The program and the simulated RTU as a test's own child processes.

Nothing here sleeps: a test waits for an answer of the program or of the RTU, and a child that never answers is ended
by its process id when the time of the test is up.
"""

import contextlib
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import unittest

PROGRAM = os.environ["QUILLPORTCTL"]
SIMULATOR = os.environ["RTU_SIMULATOR"]
LONGEST_SECONDS = 120  # far more than any run takes, sanitizers on a busy machine included
APPLICATION = {"K5901": "K5901-041A-0300.out", "K5902": "K5902-041A-0300.out"}
DATA_VOLUME = {"K5901": "d:", "K5902": "ata0a"}
BOOT_VOLUME = {"K5901": "c:", "K5902": "ata0a"}


class Rtu:
    """A running simulated RTU that is called rtu.test."""

    def __init__(self, *options):
        self.process = subprocess.Popen([sys.executable, SIMULATOR, *options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.ready = json.loads(self.process.stdout.readline())
        self.board = self.ready["board"]

    def options(self, ftp=None, http=None):
        """What leads the program to this RTU, or to other ports in the place of one of its servers."""
        return ["--host", "rtu.test", "--part-number", self.board, "--user", "rtu",
                "--connect-to", f"rtu.test:21:127.0.0.1:{ftp or self.ready['ftp']}",
                "--connect-to", f"rtu.test:80:127.0.0.1:{http or self.ready['http']}"]

    def path(self, *names):
        return os.path.join(self.ready["folder"], *names)

    def data(self, *names):
        """A path on the data volume."""
        return self.path(DATA_VOLUME[self.board], *names)

    def boot(self, *names):
        return self.path(BOOT_VOLUME[self.board], *names)

    def tell(self, order):
        self.process.stdin.write(json.dumps(order) + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def fault(self, fault_text):
        answer = self.tell({"fault": fault_text})
        if answer["event"] != "fault":
            raise AssertionError(answer)

    def commands(self):
        """All FTP commands so far, as "COMMAND argument"."""
        return [f"{one['command']} {one['argument']}".strip() for one in self.tell({"commands": True})["commands"]]

    def wait_for_command(self, command):
        """Return when the RTU has been asked this; each look is a question to it and its answer."""
        while not any(one.startswith(command) for one in self.commands()):
            pass

    def close(self):
        self.process.stdin.close()
        self.process.wait(LONGEST_SECONDS)
        self.process.stdout.close()


class Run:
    """How one run of the program ended."""

    def __init__(self, status, out, err):
        self.status, self.out, self.err = status, out, err

    def __repr__(self):
        return f"status {self.status}\n--- standard output\n{self.out}--- standard error\n{self.err}"


def environment(password="rtu"):
    """The test's own, with nothing in it that changes what the program does."""
    mine = {name: value for name, value in os.environ.items() if not name.startswith(("LC_", "QUILLPORT"))}
    mine["LC_ALL"] = "C"
    if password is not None:
        mine["QUILLPORT_PASSWORD"] = password
    return mine


def run(*arguments, password="rtu", prefix=(), before=None, stdout=subprocess.PIPE, **variables):
    """Run the program to its end. `before` is called in the child before the program starts."""
    done = subprocess.run([*prefix, PROGRAM, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=stdout,
                          stderr=subprocess.PIPE, text=True, env={**environment(password), **variables},
                          timeout=LONGEST_SECONDS, preexec_fn=before, check=False)
    return Run(done.returncode, done.stdout, done.stderr)


def start(*arguments, password="rtu", **more):
    """Start the program; it is ended when the test's time is up, so that no read waits for ever."""
    process = subprocess.Popen([PROGRAM, *map(str, arguments)], env=environment(password),
                               preexec_fn=_default_signals, **more)
    watch = threading.Timer(LONGEST_SECONDS, process.kill)
    watch.daemon = True
    watch.start()
    return process


def _default_signals():
    """A test that runs in the background of a shell has inherited that SIGINT is ignored."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)


class Session:
    """A running session. Effects are read up to the "done" of each action."""

    def __init__(self, *arguments):
        self.process = start("session", *arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, text=True)

    def do(self, *actions):
        """Carry out actions, each when the one before is done; all their effects."""
        effects = []
        for action in actions:
            self.process.stdin.write(json.dumps(action) + "\n")
            self.process.stdin.flush()
            effects += self._effects_up_to_done()
        return effects

    def end(self):
        """End the input; the effects not read yet, the exit status and what stands on standard error."""
        with contextlib.suppress(BrokenPipeError):
            self.process.stdin.close()
        effects = [json.loads(line) for line in self.process.stdout]
        status = self.process.wait(LONGEST_SECONDS)
        err = self.process.stderr.read()
        self.process.stdout.close()
        self.process.stderr.close()
        return effects, status, err

    def _effects_up_to_done(self):
        effects = []
        for line in self.process.stdout:
            effects.append(json.loads(line))
            if effects[-1]["event"] == "done":
                return effects
        raise AssertionError("the session ended: " + self.process.stderr.read())


def log_in(rtu, user="rtu", password="rtu"):
    """The actions of a login."""
    return [{"set": "HostName", "value": "rtu.test"}, {"set": "partNumber", "value": rtu.board},
            {"type": "txt_username", "text": user}, {"type": "txt_password", "text": password},
            {"click": "cmd_connect"}]


def connections(rtu, ftp=None, http=None):
    """The options of a session that lead it to this RTU."""
    options = rtu.options(ftp, http)
    return options[options.index("--connect-to"):]


def told(effects):
    """Effects as lines that are easy to read and to compare."""
    return [_line(effect) for effect in effects]


def _line(effect):
    match effect:
        case {"event": "write", "control": control, "property": name, "value": value}:
            return f"{control}.{name} = {value}"
        case {"event": "prompt", "title": title, "text": text, "buttons": buttons, "answer": answer}:
            return f"[{title}] {text} {{{', '.join(buttons)}}} -> {answer}"
        case {"event": "picker", "dialog": dialog, "title": title, "answer": answer}:
            return f"{dialog} picker [{title}] -> {answer}"
        case {"event": "done", "action": number}:
            return f"done {number}"
        case {"event": "call", "name": name, "arguments": arguments, "number": number}:
            return f"call {name}({', '.join(map(str, arguments))}) -> {number}"
        case {"event": "client", "name": name}:
            return f"client {name}"
    return json.dumps(effect)


def files_below(folder):
    """Every file below a folder, by its path from there, with its bytes."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            with open(path, "rb") as file:
                found[os.path.relpath(path, folder)] = file.read()
    return found


def contents(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)
    return path


@contextlib.contextmanager
def refusing_port():
    """A port that refuses: bound, so that nobody else gets it, but not listening."""
    with socket.socket() as bound:
        bound.bind(("127.0.0.1", 0))
        yield bound.getsockname()[1]


class ProgramTest(unittest.TestCase):
    """A test with a folder of its own. RTUs are closed when it is over; the folder of a test that fails is left as it
    is, to look into."""

    maxDiff = None
    folder = None

    def run(self, result=None):
        result = result if result is not None else self.defaultTestResult()
        before = len(result.failures) + len(result.errors)
        super().run(result)
        if self.folder and len(result.failures) + len(result.errors) > before:
            print(f"{self.id()} has left its files in {self.folder}", file=sys.stderr)
        elif self.folder:
            shutil.rmtree(self.folder, ignore_errors=True)
        return result

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="quillport-test-")

    def rtu(self, *options):
        rtu = Rtu(*options)
        self.addCleanup(rtu.close)
        return rtu

    def session(self, *arguments):
        session = Session(*arguments)
        self.addCleanup(self._end, session.process)
        return session

    @staticmethod
    def _end(process):
        if process.poll() is None:
            process.kill()
            process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream and not stream.closed:
                with contextlib.suppress(BrokenPipeError):
                    stream.close()

    def here(self, *names):
        return os.path.join(self.folder, *names)

    def check(self, run_, status, out=None):
        """The exit status, and all of standard output where it is given."""
        self.assertEqual(run_.status, status, run_)
        if out is not None:
            self.assertEqual(run_.out, out, run_)
