"""The program on a terminal: the password, prompts put to a person, and the progress line."""

import errno
import fcntl
import os
import signal
import struct
import subprocess
import termios

from harness import APPLICATION, LONGEST_SECONDS, ProgramTest, contents, files_below, start, write

NAME = APPLICATION["K5902"]


class Terminal:
    """A terminal with the program on its other end: standard input and standard error, and the output apart."""

    def __init__(self, *arguments, columns=100, password="rtu"):
        self.master, slave = os.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        self.shown = ""
        self.process = start(*arguments, password=password, stdin=slave, stdout=subprocess.PIPE, stderr=slave, text=True)
        os.close(slave)

    def read_until(self, text):
        """Wait until the terminal has shown this text."""
        while text not in self.shown:
            if not self._read_more():
                raise AssertionError("the program ended after: " + self.shown)

    def type(self, text):
        os.write(self.master, text.encode())

    @property
    def echoes(self):
        return bool(termios.tcgetattr(self.master)[3] & termios.ECHO)

    def end(self):
        """The exit status and the standard output, when the program has ended and all it showed has been read."""
        while self._read_more():
            pass
        out = self.process.stdout.read()
        return self.process.wait(LONGEST_SECONDS), out

    def _read_more(self):
        """False when nobody is at the other end any more."""
        try:
            piece = os.read(self.master, 4096)
        except OSError as error:
            if error.errno != errno.EIO:
                raise
            return False
        self.shown += piece.decode()
        return bool(piece)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        os.close(self.master)


class TerminalTest(ProgramTest):
    def terminal(self, *arguments, **more):
        terminal = Terminal(*arguments, **more)
        self.addCleanup(terminal.close)
        return terminal


class Password(TerminalTest):
    def test_is_asked_for_and_not_shown(self):
        rtu = self.rtu("--password", "ge heim")
        terminal = self.terminal("info", *rtu.options(), password=None)
        terminal.read_until("Password of rtu: ")
        self.assertFalse(terminal.echoes)
        terminal.type("ge heim\n")
        status, out = terminal.end()
        self.assertEqual(status, 0, terminal.shown)
        self.assertIn("Harbour Road Substation 12", out)
        self.assertTrue(terminal.echoes)
        self.assertEqual(terminal.shown, "Password of rtu: \r\n")

    def test_an_empty_one_is_taken_as_it_is(self):
        terminal = self.terminal("info", *self.rtu().options(), password=None)
        terminal.read_until("Password of rtu: ")
        terminal.type("\n")
        self.assertEqual(terminal.end()[0], 3)

    def test_signals_leave_the_terminal_as_it_was(self):
        rtu = self.rtu()
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)):
            with self.subTest(number):
                terminal = self.terminal("info", *rtu.options(), password=None)
                terminal.read_until("Password of rtu: ")
                terminal.process.send_signal(number)
                self.assertEqual(terminal.end(), (status, ""))
                self.assertTrue(terminal.echoes)
                self.assertIn("ended by signal", terminal.shown)

    def test_no_answer(self):
        terminal = self.terminal("info", *self.rtu().options(), password=None)
        terminal.read_until("Password of rtu: ")
        terminal.type("\x04")
        self.assertEqual(terminal.end(), (2, ""))
        self.assertIn("no password was typed", terminal.shown)
        self.assertTrue(terminal.echoes)


class Prompts(TerminalTest):
    QUESTION = ("[Folder not empty] The Application folder is not empty."
                " Do you want to delete the application file before proceeding? {Yes, No, *Cancel} -> ")

    def setUp(self):
        super().setUp()
        self.source = self.rtu()
        write(self.here("Application", "old.out"), b"old")

    def asked(self):
        terminal = self.terminal("get", "application", "--to", self.folder, *self.source.options())
        terminal.read_until(self.QUESTION)
        return terminal

    def test_a_person_answers(self):
        for typed in ("y\n", "YES\n", "yes\n"):
            with self.subTest(typed):
                terminal = self.asked()
                terminal.type(typed)
                self.assertEqual(terminal.end(), (0, "OK\n"), terminal.shown)
                self.assertIn("-> Yes\r\n", terminal.shown)
                self.assertEqual(files_below(self.here("Application")), {NAME: contents(self.source.data(NAME))})

    def test_enter_is_the_default(self):
        terminal = self.asked()
        terminal.type("\n")
        self.assertEqual(terminal.end(), (1, "\n"))
        self.assertIn("-> Cancel\r\n", terminal.shown)
        self.assertEqual(files_below(self.here("Application")), {"old.out": b"old"})

    def test_a_word_that_is_no_button_is_asked_again(self):
        terminal = self.asked()
        terminal.type("perhaps\n")
        terminal.read_until("Please type one of the words in braces, or Enter for the one with the star.\r\n" + self.QUESTION)
        terminal.type("c\n")
        self.assertEqual(terminal.end()[0], 1)

    def test_the_end_of_the_input_is_the_default(self):
        terminal = self.asked()
        terminal.type("\x04")
        self.assertEqual(terminal.end(), (1, "\n"))

    def test_an_interrupt_at_a_prompt(self):
        terminal = self.asked()
        terminal.process.send_signal(signal.SIGINT)
        self.assertEqual(terminal.end(), (130, ""))
        self.assertEqual(files_below(self.here("Application")), {"old.out": b"old"})

    def test_a_message_with_one_button_is_shown_and_not_asked(self):
        terminal = self.terminal("info", *self.source.options(), password="wrong")
        self.assertEqual(terminal.end()[0], 3)
        self.assertIn("{OK} -> OK\r\n", terminal.shown)


class Progress(TerminalTest):
    def get(self, columns):
        rtu = self.rtu("--bytes-per-second", "1500000")
        terminal = self.terminal("get", "application", "--to", self.folder, *rtu.options(), columns=columns)
        self.assertEqual(terminal.end(), (0, "OK\n"), terminal.shown)
        return terminal.shown

    def test_is_one_line_that_is_gone_at_the_end(self):
        shown = self.get(columns=100)
        self.assertNotIn("\n", shown)
        drawn = [line for line in shown.split("\r") if line.strip()]
        self.assertIn(f"[------------------------]   0% Receiving {NAME}...", [line.rstrip() for line in drawn])
        self.assertIn(f"[########################] 100% Receiving {NAME}...", [line.rstrip() for line in drawn])
        self.assertGreater(len(drawn), 4)
        self.assertLess(max(map(len, drawn)), 100)
        # Wiped: blanks over the whole of it, and back to the start.
        self.assertEqual(shown.split("\r")[-1], "")
        self.assertEqual(shown.split("\r")[-2].strip(), "")

    def test_a_narrow_terminal_gets_no_bar(self):
        drawn = [line for line in self.get(columns=30).split("\r") if line.strip()]
        self.assertNotIn("[", "".join(drawn))
        self.assertIn(("100% Receiving " + NAME)[:29], [line.rstrip() for line in drawn])
        self.assertLess(max(map(len, drawn)), 30)

    def test_a_prompt_does_not_run_into_it(self):
        rtu = self.rtu("--fault", "cut-during=RETR")
        terminal = self.terminal("get", "application", "--to", self.folder, *rtu.options())
        self.assertEqual(terminal.end(), (1, "Cancelled\n"))
        self.assertIn("\r[Get RTU Application] Operation Cancelled {OK} -> OK\r\n", terminal.shown)
