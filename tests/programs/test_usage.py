"""Wrong usage, help, and where the password comes from."""

import os
import stat
import unittest

from harness import ProgramTest, run, write

LOGIN = ["--host", "rtu.test", "--part-number", "K5902", "--user", "rtu"]


class Usage(ProgramTest):
    def refused(self, *arguments, **more):
        """Standard error of a call that must be refused before anything is done."""
        done = run(*arguments, **more)
        self.check(done, 2, "")
        self.assertTrue(done.err.startswith("quillportctl: "), done.err)
        return done.err

    def test_commands(self):
        self.assertIn("a command is missing: info, get, send and session", self.refused())
        self.assertIn('unknown command "gte" (did you mean "get"?)', self.refused("gte", "application"))
        self.assertIn('unknown command "frobnicate"\n', self.refused("frobnicate"))
        self.assertIn('"get" is one word too many', self.refused("info", *LOGIN, "get"))

    def test_types(self):
        self.assertIn('unknown TYPE "aplication" (did you mean "application"?)',
                      self.refused("get", "aplication", "--to", self.folder, *LOGIN))
        self.assertIn('unknown TYPE "firmware"; the types are application, os, configuration, gui and templates',
                      self.refused("send", "firmware", "--from", self.folder, *LOGIN))
        self.assertIn("TYPE is missing", self.refused("get", "--to", self.folder, *LOGIN))
        self.assertIn('"gui" is one word too many', self.refused("get", "os", "gui", "--to", self.folder, *LOGIN))

    def test_options(self):
        self.assertIn('unknown option --hots (did you mean "--host"?)', self.refused("info", "--hots", "x"))
        self.assertIn("--password", self.refused("info", *LOGIN, "--password", "geheim"))
        for missing in ("--host", "--part-number", "--user"):
            rest = list(LOGIN)
            del rest[rest.index(missing):rest.index(missing) + 2]
            self.assertIn(missing + " is missing", self.refused("info", *rest))
        self.assertIn("--to is missing", self.refused("get", "os", *LOGIN))
        self.assertIn("--from is missing", self.refused("send", "os", *LOGIN))
        self.assertIn("--host", self.refused("info", "--host"))
        self.assertIn("--to does not go with info", self.refused("info", *LOGIN, "--to", "x"))
        self.assertIn("--trace does not go with get", self.refused("get", "os", *LOGIN, "--to", "x", "--trace"))
        self.assertIn("--answer does not go with session", self.refused("session", "--answer", "a=Yes"))

    def test_values(self):
        board = ["--host", "h", "--user", "u", "--part-number"]
        self.assertIn('unknown part number "k5902" (did you mean "K5902"?)', self.refused("info", *board, "k5902"))
        for text in ("rtu", "rtu:21", "rtu:21:h:x", "rtu:21:h:1:2", "rtu:999999:h:1", "[::1:21:h:1"):
            self.assertIn("--connect-to is not HOST:PORT:HOST:PORT: " + text,
                          self.refused("info", *LOGIN, "--connect-to", text))
        for seconds in ("0", "-1", "x", "1e9", ""):
            self.assertIn("--silence-timeout", self.refused("info", *LOGIN, "--silence-timeout=" + seconds))

    def test_answers(self):
        for text, why in (("File Exists=Yse", 'no button is called "Yse" (did you mean "Yes"?)'),
                          ("File Exists", 'there is no "="'), ("=Yes", "there is no title")):
            self.assertIn(why, self.refused("info", *LOGIN, "--answer", text))

    def test_places(self):
        file = write(self.here("a.out"), b"x")
        self.assertIn(file + " is not a folder", self.refused("get", "os", *LOGIN, "--to", file))
        self.assertIn(" is not there", self.refused("send", "os", *LOGIN, "--from", self.here("gone")))
        self.assertIn("is a folder; name the file", self.refused("send", "os", *LOGIN, "--from", self.folder))
        self.assertIn("--to is empty", self.refused("get", "os", *LOGIN, "--to", ""))

    def test_names_that_the_panel_would_cut(self):
        login = ["--host", "h", "--part-number", "K5902", "--user"]
        self.assertIn("the user name is longer than the 45 characters", self.refused("info", *login, "x" * 46))
        self.assertIn("the password is longer than the 45 characters",
                      self.refused("info", *login, "x", password="ü" * 46))
        self.assertIn("the password is longer", self.refused("session", password="x" * 46))

    def test_help_tells_of_every_command_and_option(self):
        whole = run("--help")
        self.check(whole, 0)
        for word in ("info", "get", "send", "session", "--host", "--part-number", "--user", "--password-file",
                     "QUILLPORT_PASSWORD", "--to", "--from", "--answer", "--json", "--trace", "--connect-to",
                     "--connect-timeout", "--silence-timeout", "--help", "--version"):
            self.assertIn(word, whole.out)
        for command in ("info", "get", "send", "session"):
            one = run(command, "--help")
            self.check(one, 0)
            self.assertIn("usage: quillportctl " + command, one.out)
            self.assertIn("Exit status", one.out)
            self.assertEqual(one.err, "")

    def test_version(self):
        self.check(run("--version"), 0, "quillportctl 4.1.0\n")

    def test_output_that_cannot_be_written(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = run("--help", stdout=full)
        self.check(done, 1)
        self.assertEqual(done.err, "quillportctl: standard output cannot be written any more\n")


class Password(ProgramTest):
    def test_from_a_file(self):
        rtu = self.rtu("--password", "ge heim ")
        for text in (b"ge heim ", b"ge heim \n", b"ge heim \r\n", b"ge heim \nsecond line\n"):
            with self.subTest(text):
                file = write(self.here("password"), text)
                self.check(run("info", *rtu.options(), "--password-file", file, password="wrong"), 0)

    def test_a_file_that_cannot_be_read(self):
        for file in (self.here("gone"), self.folder, ""):
            with self.subTest(file):
                done = run("info", *LOGIN, "--password-file", file)
                self.check(done, 2, "")
                self.assertIn("--password-file: ", done.err)

    @unittest.skipIf(os.geteuid() == 0, "root reads every file")
    def test_a_file_of_somebody_else(self):
        file = write(self.here("password"), b"rtu")
        os.chmod(file, stat.S_IWUSR)
        self.check(run("info", *LOGIN, "--password-file", file), 2, "")

    def test_from_the_environment(self):
        self.check(run("info", *self.rtu("--password", "geheim").options(), password="geheim"), 0)

    def test_none_and_nobody_to_ask(self):
        done = run("info", *LOGIN, password=None)
        self.check(done, 2, "")
        self.assertIn("there is no password: give --password-file, set QUILLPORT_PASSWORD", done.err)
