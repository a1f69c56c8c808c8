"""The simulator as a test's own child process, and clients for it."""

import ftplib
import http.client
import json
import os
import subprocess
import sys
import tempfile
import unittest

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAM = os.path.join(FOLDER, "rtu_simulator.py")
sys.path.insert(0, FOLDER)  # for tests of a single module
CLIENT_SECONDS = 5  # far more than any answer takes; an answer that never comes fails the test


class Simulator:
    """A running simulator. Its ready line has been read when the constructor returns."""

    def __init__(self, *options):
        self.process = subprocess.Popen([sys.executable, PROGRAM, *options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        if not line:
            raise AssertionError("the simulator did not start: " + self.process.stderr.read())
        self.ready = json.loads(line)
        self.folder = self.ready["folder"]

    def path(self, name):
        return os.path.join(self.folder, name)

    def login(self, timeout=CLIENT_SECONDS, **more):
        client = ftplib.FTP(timeout=timeout, **more)
        try:
            client.connect(self.ready["address"], self.ready["ftp"])
            client.login("rtu", "rtu")
        except Exception:
            client.close()
            raise
        return client

    def get(self, path, method="GET"):
        """Status and body of the document at the path."""
        client = http.client.HTTPConnection(self.ready["address"], self.ready["http"], timeout=CLIENT_SECONDS)
        try:
            client.request(method, path)
            answer = client.getresponse()
            return answer.status, answer.read()
        finally:
            client.close()

    def tell(self, line):
        """Send an order over the control channel and return the answer."""
        self.process.stdin.write((line if isinstance(line, str) else json.dumps(line)) + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def commands(self):
        return self.tell({"commands": True})["commands"]

    def stop(self):
        """End it by the end of its standard input; the status and what it wrote on standard error."""
        _, errors = self.process.communicate(timeout=CLIENT_SECONDS)
        return self.process.returncode, errors


class SimulatorTest(unittest.TestCase):
    """A test with simulators of its own. Each has to end well and to have complained of nothing."""

    def start(self, *options):
        simulator = Simulator(*options)
        self.addCleanup(lambda: self.assertEqual(simulator.stop(), (0, "")))
        return simulator

    def login(self, simulator, **more):
        client = simulator.login(**more)
        self.addCleanup(client.close)
        return client

    def temporary_folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return folder.name


class SharedSimulatorTest(SimulatorTest):
    """Tests that share one simulator, started with the class's options. Each has a client, and begins without faults."""

    OPTIONS = ()

    @classmethod
    def setUpClass(cls):
        cls.simulator = Simulator(*cls.OPTIONS)

    @classmethod
    def tearDownClass(cls):
        ended = cls.simulator.stop()
        if ended != (0, ""):
            raise AssertionError(f"the simulator ended with {ended}")

    def setUp(self):
        self.simulator.tell({"clear": "faults"})
        self.client = self.login(self.simulator)

    def file(self, name, text="anything"):
        """A file in the data volume for the test to change; its name."""
        with open(self.simulator.path("ata0a/" + name), "w", encoding="utf-8") as file:
            file.write(text)
        self.addCleanup(lambda: self.is_there(name) and os.remove(self.simulator.path("ata0a/" + name)))
        return name

    def is_there(self, name):
        """Whether the data volume holds the name, spelled exactly so."""
        return name in os.listdir(self.simulator.path("ata0a"))


def current_folder(client):
    """The quoted path in the reply to PWD. ftplib's own pwd() wants it at the reply's beginning."""
    return client.sendcmd("PWD").split('"')[1]


def listing(client, argument=""):
    """The bytes that LIST delivers."""
    data = []
    client.voidcmd("TYPE A")
    with client.transfercmd("LIST " + argument if argument else "LIST") as channel:
        while block := channel.recv(65536):
            data.append(block)
    client.voidresp()
    return b"".join(data)


def fetch(client, name):
    """The bytes of a file."""
    data = []
    client.retrbinary("RETR " + name, data.append)
    return b"".join(data)
