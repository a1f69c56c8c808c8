"""Signals end the program at once and tidily, whatever it is doing."""

import os
import signal
import socket
import subprocess

from harness import LONGEST_SECONDS, ProgramTest, connections, files_below, log_in, start, write

ENDINGS = ((signal.SIGINT, 130, "ended by signal 2 (interrupted)"), (signal.SIGTERM, 143, "ended by signal 15"),
           (signal.SIGHUP, 129, "ended by signal 1"))


class Signals(ProgramTest):
    def ended(self, process, number):
        """Send the signal; status, standard output and standard error of the process when it has ended."""
        process.send_signal(number)
        out, err = process.communicate(timeout=LONGEST_SECONDS)
        return process.returncode, out, err

    def started(self, *arguments):
        process = start(*arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(self._end, process)
        return process

    def test_in_the_middle_of_a_transfer(self):
        for number, status, words in ENDINGS:
            with self.subTest(number):
                rtu = self.rtu("--fault", "stall=RETR")  # half the file, then nothing more
                process = self.started("get", "application", "--to", self.folder, *rtu.options())
                rtu.wait_for_command("RETR")
                while not files_below(self.folder):  # until the first bytes are on the disk
                    self.assertIsNone(process.poll())
                ended, out, err = self.ended(process, number)
                self.assertEqual((ended, out), (status, ""), err)
                self.assertEqual(err, f"quillportctl: {words}\n")
                self.assertEqual(files_below(self.folder), {})

    def test_what_stood_there_survives(self):
        rtu = self.rtu("--xml-files", "1", "--isagraf-files", "1", "--fault", "stall=RETR@2")
        (name,) = os.listdir(rtu.data("webfiles", "ISaGRAF"))
        write(self.here("Configuration", "ISaGRAF", name), b"mine")
        process = self.started("get", "configuration", "--to", self.folder, *rtu.options(),
                               "--answer", "File Exists=Yes", "--answer", "Overwrite All=Yes")
        rtu.wait_for_command("RETR " + name)
        self.assertEqual(self.ended(process, signal.SIGINT)[0], 130)
        self.assertEqual(files_below(self.here("Configuration", "ISaGRAF")), {name: b"mine"})

    def test_during_the_login(self):
        for command in ("USER", "PASS", "CWD", "LIST"):
            with self.subTest(command):
                rtu = self.rtu("--fault", f"stall={command}")
                process = self.started("info", *rtu.options())
                rtu.wait_for_command(command)
                self.assertEqual(self.ended(process, signal.SIGINT)[:2], (130, ""))

    def test_before_the_greeting(self):
        with socket.create_server(("127.0.0.1", 0)) as silent:
            process = self.started("info", *self.rtu().options(ftp=silent.getsockname()[1]))
            link, _ = silent.accept()
            with link:
                self.assertEqual(self.ended(process, signal.SIGINT)[:2], (130, ""))

    def test_while_the_web_server_is_silent(self):
        log = self.here("log")
        rtu = self.rtu("--fault", "http-stall=rtusetup.xml", "--log", log)
        process = self.started("info", *rtu.options())
        while b"rtusetup.xml" not in open(log, "rb").read():
            self.assertIsNone(process.poll())
        self.assertEqual(self.ended(process, signal.SIGTERM)[:2], (143, ""))

    def test_a_session_that_waits_for_its_input(self):
        for number, status, words in ENDINGS:
            with self.subTest(number):
                session = self.session()
                session.do({"call": "Connect"})
                session.process.send_signal(number)
                self.assertEqual(session.process.wait(LONGEST_SECONDS), status)
                self.assertEqual(session.process.stderr.read(), f"quillportctl: {words}\n")

    def test_a_session_in_the_middle_of_a_transfer(self):
        rtu = self.rtu("--fault", "stall=RETR")
        session = self.session(*connections(rtu))
        session.do(*log_in(rtu), {"type": "cmbFileType", "text": "Application"}, {"pick": self.here("x")})
        session.process.stdin.write('{"click":"cmdGetFile"}\n')
        session.process.stdin.flush()
        rtu.wait_for_command("RETR")
        session.process.send_signal(signal.SIGTERM)
        self.assertEqual(session.process.wait(LONGEST_SECONDS), 143)
        self.assertEqual(files_below(self.folder), {})

    def test_while_the_control_sleeps(self):
        """Between the two halves of a configuration the control waits for five and a half seconds."""
        rtu = self.rtu("--xml-files", "1", "--isagraf-files", "1")
        session = self.session(*connections(rtu))
        session.do(*log_in(rtu), {"pick": self.here("x")})
        session.process.stdin.write('{"click":"cmdGetFile"}\n')
        session.process.stdin.flush()
        for line in session.process.stdout:
            if '"Verifying ' in line:
                break
        session.process.send_signal(signal.SIGINT)
        self.assertEqual(session.process.wait(LONGEST_SECONDS), 130)
        self.assertNotIn("ISaGRAF", os.listdir(self.here("Configuration")))
