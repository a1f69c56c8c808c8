"""The program itself: how it starts and ends, sessions, the web server, the control channel, the log, the samples."""

import contextlib
import ftplib
import json
import os
import signal
import socket
import subprocess
import sys
import time
import unittest
import xml.etree.ElementTree as ElementTree

from running_simulator import (CLIENT_SECONDS, PROGRAM, SharedSimulatorTest, SimulatorTest, current_folder, fetch,
                               listing)
from boards import BOARDS
import sample_contents


def run(*options):
    return subprocess.run([sys.executable, PROGRAM, *options], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=CLIENT_SECONDS, check=False)


class StartAndEnd(SimulatorTest):
    def test_ready_line(self):
        simulator = self.start("--board", "K5901", "--user", "rtu")
        ready = dict(simulator.ready)
        self.assertGreater(ready.pop("ftp"), 0)
        self.assertGreater(ready.pop("http"), 0)
        self.assertTrue(os.path.isdir(ready.pop("folder")))
        self.assertEqual(ready, {"event": "ready", "address": "127.0.0.1", "board": "K5901", "user": "rtu"})

    def test_ends_with_standard_input_and_removes_its_folder(self):
        simulator = self.start()
        self.login(simulator)
        self.assertEqual(simulator.stop(), (0, ""))
        self.assertFalse(os.path.exists(simulator.folder))

    def test_ends_on_signals(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                simulator = self.start()
                simulator.process.send_signal(number)
                self.assertEqual(simulator.process.wait(CLIENT_SECONDS), 0)
                self.assertFalse(os.path.exists(simulator.folder))

    def test_ends_when_its_parent_dies(self):
        parent = subprocess.Popen(
            [sys.executable, "-c", "import subprocess, sys; subprocess.run(sys.argv[1:])", sys.executable, PROGRAM,
             "--no-stdin"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        with parent.stdout:
            ready = json.loads(parent.stdout.readline())
            parent.kill()
            parent.wait()
            parent.stdin.close()
            self.assertEqual(parent.stdout.read(), "")  # ends when the last holder of the pipe has ended
        self.assertFalse(os.path.exists(ready["folder"]))

    def test_without_standard_input_it_stays(self):
        process = subprocess.Popen([sys.executable, PROGRAM, "--no-stdin"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, text=True)
        with process.stdout:
            ready = json.loads(process.stdout.readline())
            with socket.create_connection((ready["address"], ready["ftp"])) as client:
                self.assertTrue(client.recv(100).startswith(b"220 "))
            self.assertIsNone(process.poll())
            process.terminate()
            self.assertEqual(process.wait(CLIENT_SECONDS), 0)

    def test_ends_at_once_when_standard_input_is_empty(self):
        result = run()
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_a_folder_of_ones_own_is_filled_and_kept(self):
        folder = os.path.join(self.temporary_folder(), "new")
        simulator = self.start("--folder", folder)
        self.login(simulator).delete("vxworks")
        simulator.stop()
        again = self.start("--folder", folder)
        self.assertNotIn("vxworks", self.login(again).nlst())
        self.assertIn("WebCli", self.login(again).nlst())

    def test_listens_on_loopback_only(self):
        simulator = self.start()
        for port in (simulator.ready["ftp"], simulator.ready["http"]):
            with contextlib.closing(socket.socket()) as other:
                other.bind(("127.0.0.2", port))  # would be taken if it listened on every address

    def test_wrong_usage(self):
        for options in (("--board", "K1"), ("--latency", "-1"), ("--fault", "explode=RETR"), ("--folder", PROGRAM)):
            with self.subTest(options):
                result = run(*options)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(result.stdout, "")
                self.assertRegex(result.stderr, r"\Artu_simulator.py: [^\n]+\n\Z")

    def test_a_port_that_is_taken(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = str(taken.getsockname()[1])
            for option in ("--ftp-port", "--http-port"):
                with self.subTest(option):
                    result = run(option, port)
                    self.assertEqual(result.returncode, 1)
                    self.assertRegex(result.stderr, rf"\Artu_simulator.py: [^\n]*{port} cannot be bound[^\n]*\n\Z")

    def test_without_pyftpdlib(self):
        result = subprocess.run([sys.executable, "-S", PROGRAM], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                timeout=CLIENT_SECONDS, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr, r"\Artu_simulator.py: [^\n]*python3-pyftpdlib[^\n]*\n\Z")


class OrdinarySessions(SharedSimulatorTest):
    OPTIONS = ("--user", "keeper", "--password", "s3cret")

    def setUp(self):
        self.client = ftplib.FTP(timeout=CLIENT_SECONDS)
        self.addCleanup(self.client.close)
        self.greeting = self.client.connect(self.simulator.ready["address"], self.simulator.ready["ftp"])

    def test_replies(self):
        client = self.client
        self.assertEqual(self.greeting, "220 VxWorks (5.4.2) FTP server ready")
        self.assertEqual(client.sendcmd("USER keeper"), "331 Password required")
        self.assertEqual(client.sendcmd("PASS s3cret"), "230 User logged in")
        self.assertEqual(client.sendcmd("PWD"), '257 Current directory is "/ata0a"')
        self.assertEqual(client.sendcmd("CWD webfiles"), '250 Changed directory to "/ata0a/webfiles"')

    def test_wrong_password(self):
        with self.assertRaisesRegex(ftplib.error_perm, "^530 Login failed."):
            self.client.login("keeper", "wrong")
        with self.assertRaisesRegex(ftplib.error_perm, "^530 "):
            self.client.sendcmd("PWD")
        self.client.login("keeper", "s3cret")
        self.assertEqual(current_folder(self.client), "/ata0a")

    def test_newer_commands_are_unknown(self):
        self.client.login("keeper", "s3cret")
        for command in ("EPSV", "EPRT |1|127.0.0.1|9|", "FEAT", "MLSD", "MLST", "SIZE vxworks", "MDTM vxworks", "REST 1",
                        "ABOR", "OPTS UTF8 ON"):
            with self.subTest(command), self.assertRaisesRegex(ftplib.error_perm, "^500 "):
                self.client.sendcmd(command)
        known = self.client.sendcmd("HELP").split()
        self.assertIn("RETR", known)
        for command in ("EPSV", "FEAT", "MLSD", "SIZE", "REST", "ABOR"):
            self.assertNotIn(command, known)

    def test_active_transfers(self):
        self.client.login("keeper", "s3cret")
        self.client.set_pasv(False)
        self.assertEqual(len(fetch(self.client, "WebCli")), 212480)


class Sessions(SimulatorTest):
    def test_one_login_too_many(self):
        simulator = self.start("--max-logins", "2")
        first = self.login(simulator)
        self.login(simulator)
        with self.assertRaisesRegex(ftplib.error_temp, "^421 "):
            simulator.login()
        first.close()
        self.assertEqual(current_folder(self.login(simulator)), "/ata0a")

    def test_idle_session_is_closed(self):
        client = self.login(self.start("--idle-timeout", "1"))
        with self.assertRaisesRegex(ftplib.error_temp, "^421 "):
            client.getresp()

    def test_newer_commands_of_a_modern_one(self):
        client = self.login(self.start("--modern"))
        self.assertRegex(client.sendcmd("EPSV"), "^229 ")
        self.assertRegex(client.sendcmd("FEAT"), "UTF8")
        client.voidcmd("TYPE I")
        self.assertEqual(client.size("vxworks"), 1482752)
        self.assertEqual(client.sendcmd("MDTM vxworks"), "213 20141106093000")
        self.assertIn(("WebCli", "212480"), [(name, facts.get("size")) for name, facts in client.mlsd()])
        self.assertRegex(client.sendcmd("MLST vxworks"), "size=1482752")
        self.assertRegex(client.sendcmd("ABOR"), "^22")
        whole, rest = fetch(client, "bootline.xml"), []
        client.retrbinary("RETR bootline.xml", rest.append, rest=100)
        self.assertEqual(b"".join(rest), whole[100:])

    def test_latency(self):
        seconds = 0.12
        simulator = self.start("--latency", str(int(seconds * 1000)))
        client = self.login(simulator)
        for action in (lambda: client.sendcmd("PWD"), lambda: listing(client),
                       lambda: simulator.get("/cs/xml/rtusetup.xml")):
            start = time.monotonic()
            action()
            self.assertGreaterEqual(time.monotonic() - start, seconds)

    def test_latency_keeps_the_order(self):
        client = self.login(self.start("--latency", "50"))
        client.sock.sendall(b"NOOP\r\nPWD\r\nTYPE I\r\nSYST\r\n")
        self.assertEqual([client.getresp()[:3] for _ in range(4)], ["200", "257", "200", "215"])

    def test_speed(self):
        client = self.login(self.start("--bytes-per-second", "1000000"))
        start = time.monotonic()
        self.assertEqual(len(fetch(client, "WebCli")), 212480)
        self.assertGreaterEqual(time.monotonic() - start, 0.1)


class Web(SharedSimulatorTest):
    OPTIONS = ("--run-mode", "Safe & sound")

    def test_documents(self):
        status, body = self.simulator.get("/CS/xml/RtuSetup.XML?x=1")
        self.assertEqual(status, 200)
        rtu = ElementTree.fromstring(body).find("CPU/RTU")
        self.assertEqual([(item.tag, item.text) for item in rtu], [
            ("NAME", "Harbour Road Substation 12"), ("APPFILE", "K5902-041A-0300.out"), ("PARTNO", "K5902"),
            ("RUNMODE", "Safe & sound"), ("TYPE", "7260")])
        status, body = self.simulator.get("/fs/profileC.xml")
        self.assertEqual(status, 200)
        self.assertEqual(ElementTree.fromstring(body).findtext("GUI/VERSION"), "041A-0300")

    def test_head_has_no_body(self):
        self.assertEqual(self.simulator.get("/fs/profileC.xml", method="HEAD"), (200, b""))

    def test_anything_else_is_not_found(self):
        for path in ("/", "/fs/", "/fs/../cs/xml/rtusetup.xml", "/etc/passwd", "/fs/vxworks"):
            with self.subTest(path):
                self.assertEqual(self.simulator.get(path)[0], 404)

    def test_documents_follow_the_ftp_side(self):
        self.client.rename("webfiles/gui/profileC.xml", "webfiles/gui/away.xml")
        self.client.rename("K5902-041A-0300.out", "K5902-041A-0301.out")
        self.assertEqual(self.simulator.get("/fs/profileC.xml")[0], 404)
        self.assertIn(b"<APPFILE>K5902-041A-0301.out<", self.simulator.get("/cs/xml/rtusetup.xml")[1])
        self.client.rename("webfiles/gui/away.xml", "webfiles/gui/profileC.xml")
        self.client.rename("K5902-041A-0301.out", "K5902-041A-0300.out")


class Control(SharedSimulatorTest):
    def test_orders(self):
        simulator = self.simulator
        self.assertEqual(simulator.tell({"ping": True}), {"event": "pong"})
        for line in ("not json", "[]", "{}", '{"clear": "all"}', '{"fault": 7}', '{"fault": "explode=RETR"}', '"ping"'):
            with self.subTest(line):
                answer = simulator.tell(line)
                self.assertEqual(answer["event"], "error")
                self.assertTrue(answer["message"])
        self.assertEqual(simulator.tell({"ping": True}), {"event": "pong"})

    def test_commands(self):
        with self.assertRaises(ftplib.error_perm):
            self.client.delete("nowhere")
        fetch(self.client, "bootline.xml")
        session = self.simulator.commands()[-1]["session"]
        seen = [(line["command"], line["argument"], line["reply"]) for line in self.simulator.commands()
                if line["session"] == session]
        self.assertEqual(seen, [("USER", "rtu", 331), ("PASS", "****", 230), ("DELE", "nowhere", 550),
                                ("TYPE", "I", 200), ("PASV", "", 227), ("RETR", "bootline.xml", 226)])


class Log(SimulatorTest):
    def test_log_file_without_the_password(self):
        path = os.path.join(self.temporary_folder(), "log")
        simulator = self.start("--log", path, "--password", "s3cret", "--fault", "stall=NOOP")
        client = ftplib.FTP(timeout=CLIENT_SECONDS)
        self.addCleanup(client.close)
        client.connect(simulator.ready["address"], simulator.ready["ftp"])
        client.sendcmd("USER rtu")
        client.sendcmd("pass s3cret")
        simulator.get("/nowhere")
        client.putcmd("NOOP")
        while simulator.commands()[-1]["command"] != "NOOP":
            pass
        simulator.stop()
        with open(path, encoding="utf-8") as file:
            text = file.read()
        self.assertNotIn("s3cret", text)
        lines = [json.loads(line) for line in text.splitlines()]
        for line in lines:
            self.assertGreaterEqual(line.pop("t"), 0)
        self.assertEqual(lines, [
            {"session": 1, "command": "USER", "argument": "rtu", "reply": 331},
            {"session": 1, "command": "PASS", "argument": "****", "reply": 230},
            {"http": "GET", "path": "/nowhere", "status": 404},
            {"session": 1, "command": "NOOP", "argument": "", "reply": None}])


class SampleContents(SimulatorTest):
    def filled(self):
        folder = self.temporary_folder()
        sample_contents.fill(folder, BOARDS["K5902"], sample_contents.Amounts())
        return folder

    def contents(self, root):
        """Path, date and bytes of everything in the folder."""
        found = {}
        for place, folders, files in os.walk(root):
            for name in folders:
                found[os.path.relpath(os.path.join(place, name), root)] = os.stat(os.path.join(place, name)).st_mtime
            for name in files:
                with open(os.path.join(place, name), "rb") as file:
                    found[os.path.relpath(file.name, root)] = (os.stat(file.name).st_mtime, file.read())
        return found

    def test_boards(self):
        newer, older = self.start(), self.start("--board", "K5901")
        self.assertEqual(set(os.listdir(newer.path("ata0a"))), {
            "K5902-041A-0300.out", "vxworks", "WebCli", "bootrom.sys", "bootline.xml", "webfiles"})
        self.assertEqual(set(os.listdir(older.path("c:"))), {"vxworks", "bootrom.sys", "bootline.xml"})
        self.assertEqual(set(os.listdir(older.path("d:"))), {"K5901-041A-0300.out", "webfiles"})
        self.assertEqual(current_folder(self.login(older)), "/d:")

    def test_is_the_same_each_time(self):
        first = self.contents(self.filled())
        self.assertEqual(first, self.contents(self.filled()))
        self.assertEqual(first["ata0a/bootline.xml"][0], 315532800)  # the first of January 1980

    def test_every_configuration_and_template_names_the_gui_version(self):
        web = os.path.join(self.filled(), "ata0a/webfiles")
        for folder, least in (("xml", 24), ("Tmpl", 20)):
            documents = [os.path.join(place, name) for place, _, files in os.walk(os.path.join(web, folder))
                         for name in files]
            self.assertGreaterEqual(len(documents), least)
            for path in documents:
                self.assertEqual(ElementTree.parse(path).getroot().get("VER"), "K5902-041A-0300")

    def test_larger_samples(self):
        simulator = self.start("--xml-files", "50", "--isagraf-files", "30", "--template-folders", "9",
                               "--template-files", "2", "--gui-folders", "5", "--application-size", "3000000")
        web = "ata0a/webfiles/"
        self.assertEqual(len(os.listdir(simulator.path(web + "xml"))), 50)
        self.assertEqual(sum(len(files) for _, _, files in os.walk(simulator.path(web + "ISaGRAF"))), 30)
        self.assertEqual(len(os.listdir(simulator.path(web + "Tmpl"))), 9)
        self.assertEqual(len(os.listdir(simulator.path(web + "Tmpl/Maps"))), 2)
        self.assertEqual(len([entry for entry in os.scandir(simulator.path(web + "gui")) if entry.is_dir()]), 5)
        self.assertEqual(os.path.getsize(simulator.path("ata0a/K5902-041A-0300.out")), 3000000)


if __name__ == "__main__":
    unittest.main()
