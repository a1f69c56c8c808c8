"""An RTU, a network and a disk that misbehave: no crash, no hang, an honest status, and nothing lost that stood there."""

import os
import resource
import signal

from harness import APPLICATION, ProgramTest, contents, files_below, run, write

NAME = APPLICATION["K5902"]
OLD = b"the application that stood here"
SHORT = ["--connect-timeout", "1", "--silence-timeout", "1"]


class FaultTest(ProgramTest):
    """Gets of the application that go wrong somewhere."""

    def get(self, rtu, *more, **how):
        return run("get", "application", "--to", self.folder, *rtu.options(), *SHORT, *more, **how)

    def assert_honest(self, done, rtu):
        """The status and the folder tell the same story: all of it, or nothing but what stood there; never a piece or
        a temporary file."""
        self.assertIn(done.status, (0, 1, 3), done)
        now = files_below(self.folder)
        whole = {"Application/" + NAME: contents(rtu.data(NAME))}
        if done.status == 0:
            self.assertEqual(now, whole, done)
            self.assertTrue(done.out.endswith("OK\n"), done)
        else:
            self.assertIn(now, ({}, whole), done)
            self.assertRegex(done.err, r"(?m)^quillportctl: ", done)


class Link(FaultTest):
    """The link is cut, silent or nonsensical at each moment of a Get."""

    # CONNECT is the login, LIST the listings (the last one is the transfer's own scan), RETR the file.
    COMMANDS = ("USER", "PASS", "PWD", "TYPE", "CWD", "PASV", "LIST", "RETR")

    def each(self, fault, commands=COMMANDS, counts=("", "@2", "@3", "@4", "x*")):
        rtu = self.rtu()
        for command in commands:
            for count in counts:
                fault_text = f"{fault}={command}{count}"
                with self.subTest(fault_text):
                    rtu.tell({"clear": "faults"})
                    rtu.fault(fault_text)
                    self.assert_honest(self.get(rtu), rtu)
                    for name in files_below(self.folder):
                        os.remove(self.here(name))

    def test_cut_before_the_command(self):
        self.each("cut-before")

    def test_cut_before_the_greeting(self):
        self.each("cut-before", ["CONNECT"])

    def test_cut_after_the_command(self):
        self.each("cut-after")

    def test_cut_in_the_middle_of_the_data(self):
        self.each("cut-during", ["LIST", "RETR"])

    def test_refused(self):
        self.each("refuse")

    def test_the_server_says_goodbye(self):
        self.each("refuse:421", counts=("", "@3"))

    def test_garbage(self):
        self.each("garbage", counts=("", "@4"))

    def test_refused_in_the_middle_of_the_data(self):
        self.each("refuse-during", ["LIST", "RETR"])

    def test_silence(self):
        self.each("stall", counts=("", "@4"))

    def test_an_address_where_nobody_answers(self):
        # The address that the server names is not the one that is used: this must just work.
        rtu = self.rtu("--fault", "wrong-address=PASVx*")
        self.check(self.get(rtu), 0, "OK\n")

    def test_a_transfer_that_is_lost_says_so(self):
        rtu = self.rtu("--fault", "cut-during=RETR")
        done = self.get(rtu)
        self.check(done, 1, "Cancelled\n")
        self.assertIn("[Get RTU Application] Operation Cancelled {OK} -> OK\n", done.err)
        self.assertIn('quillportctl: not done: the result is "Cancelled"; ftpReceiveFiles failed: ', done.err)

    def test_a_stalled_transfer_ends_within_the_silence_timeout(self):
        rtu = self.rtu("--fault", "stall=RETR")
        done = self.get(rtu)
        self.check(done, 1, "Cancelled\n")
        self.assertEqual(files_below(self.folder), {})

    def test_an_idle_link_that_was_closed_is_taken_up_again(self):
        rtu = self.rtu("--fault", "cut-before=CWD@4")
        self.check(self.get(rtu), 0, "OK\n")


class Listings(FaultTest):
    def test_a_listing_in_an_unknown_form_shows_nothing_and_moves_nothing(self):
        rtu = self.rtu("--fault", "garbage=LISTx*")
        done = run("info", *rtu.options())
        self.check(done, 0)
        self.assertIn("App File\n", done.out)
        done = self.get(rtu)
        self.check(done, 1, "OK\n")
        self.assertIn("no file was moved", done.err)

    def test_a_listing_that_breaks_off(self):
        for fault in ("listing-error", "cant-open"):
            with self.subTest(fault):
                done = run("info", *self.rtu("--fault", fault + "=LISTx*").options())
                self.assertIn(done.status, (0, 1), done)

    def test_a_folder_that_is_not_there(self):
        rtu = self.rtu()
        os.rename(rtu.data("webfiles"), rtu.data("elsewhere"))
        done = run("info", *rtu.options())
        self.check(done, 1)
        self.assertIn("[Quillport] ChgFolder error {OK} -> OK\n", done.err)
        self.assertIn("not all could be read: ftpChangeFolder failed: ", done.err)
        # The application is none of it.
        self.check(self.get(rtu), 0, "OK\n")


class Disk(FaultTest):
    def test_a_file_in_the_place_of_the_folder(self):
        rtu = self.rtu()
        write(self.here("Application"), OLD)
        done = self.get(rtu)
        self.check(done, 1, "Cancelled\n")
        self.assertIn("ftpReceiveFiles failed: ", done.err)
        self.assertEqual(files_below(self.folder), {"Application": OLD})

    def test_a_folder_that_cannot_be_written(self):
        # /proc takes no folders from anybody, root included.
        rtu = self.rtu()
        done = run("get", "application", "--to", "/proc/quillport", *rtu.options())
        self.check(done, 1, "Cancelled\n")
        self.assertIn("ftpReceiveFiles failed: ", done.err)

    def test_a_file_that_may_not_grow(self):
        """As on a full disk, writing fails in the middle of the file."""
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        rtu = self.rtu()
        done = self.get(rtu, before=limit)
        self.check(done, 1, "Cancelled\n")
        self.assertEqual(files_below(self.folder), {})

    def test_a_full_disk(self):
        small = self.here("small")
        os.mkdir(small)
        mount = f"mount -t tmpfs -o size=100k tmpfs {small} || exit 77; "
        look = f"; status=$?; find {small} -type f; exit $status"
        rtu = self.rtu()
        for prepared, left in (("", ""), (f"mkdir {small}/Application; echo old > {small}/Application/old.txt; ",
                                          f"{small}/Application/old.txt\n")):
            with self.subTest(prepared):
                done = run("get", "application", "--to", small, *rtu.options(), "--answer", "Folder not empty=Yes",
                           prefix=["unshare", "-rm", "sh", "-c", mount + prepared + '"$@"' + look, "sh"])
                if done.status == 77 or "unshare" in done.err:
                    self.skipTest("this machine lets nobody mount a small disk: " + done.err)
                self.assertEqual(done.status, 1, done)
                self.assertTrue(done.out.endswith(left), done)
                self.assertNotIn(NAME, done.out.splitlines()[-1], done)

    def test_a_good_file_survives_a_transfer_that_fails_over_it(self):
        """The configuration's program files are met by no clearing: the old one stands until the new one is whole."""
        rtu = self.rtu("--xml-files", "1", "--isagraf-files", "1", "--fault", "cut-during=RETR@2x*")
        (name,) = os.listdir(rtu.data("webfiles", "ISaGRAF"))
        kept = write(self.here("Configuration", "ISaGRAF", name), OLD)
        done = run("get", "configuration", "--to", self.folder, *rtu.options(), "--answer", "File Exists=Yes",
                   "--answer", "Overwrite All=Yes")
        self.check(done, 1, "Config OK. ISaGRAF Failed.\n")
        self.assertEqual(files_below(self.here("Configuration", "ISaGRAF")), {name: OLD})
        self.assertEqual(contents(kept), OLD)


class Names(ProgramTest):
    def test_names_from_the_rtu_cannot_leave_the_folder_or_steer_the_terminal(self):
        rtu = self.rtu()
        with open(rtu.data("a\x1b[2Jb.out"), "wb") as file:
            file.write(b"x")
        done = run("get", "application", "--to", self.folder, *rtu.options())
        self.check(done, 0)
        self.assertEqual(list(files_below(self.folder)), ["Application/" + NAME])
        self.assertNotIn("\x1b", run("info", *rtu.options()).out)

    def test_names_in_latin1(self):
        rtu = self.rtu("--latin1-names")
        self.check(run("get", "templates", "--to", self.folder, *rtu.options()), 0, "OK\n")
        self.assertIn("\u00dcbersicht", os.listdir(self.here("Templates")))


