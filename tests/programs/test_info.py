"""quillportctl info."""

import json
import shutil
import subprocess

from harness import ProgramTest, refusing_port, run

TABLE = """\
               Name                        Date                    Size
RTU            Harbour Road Substation 12
Part No.       K5902
Configuration  Harbour Road 132kV Rev C    17/03/2016 14:22:05
GUI            K5902-041A-0300.gui         10/02/15               24576
App File       K5902-041A-0300.out         09/30/15              307200
O/S            vxworks                     11/06/14             1482752
"""

OBJECT = {
    "rtuName": "Harbour Road Substation 12",
    "partNo": "K5902",
    "runMode": "",
    "configuration": {"name": "Harbour Road 132kV Rev C", "date": "17/03/2016 14:22:05", "size": None},
    "gui": {"name": "K5902-041A-0300.gui", "date": "10/02/15", "size": 24576},
    "application": {"name": "K5902-041A-0300.out", "date": "09/30/15", "size": 307200},
    "operatingSystem": {"name": "vxworks", "date": "11/06/14", "size": 1482752},
}


class Info(ProgramTest):
    def test_table(self):
        done = run("info", *self.rtu().options())
        self.check(done, 0, TABLE)
        self.assertEqual(done.err, "")

    def test_json_with_the_options_before_the_word(self):
        done = run(*self.rtu().options(), "--json", "info")
        self.check(done, 0)
        self.assertEqual(json.loads(done.out), OBJECT)
        self.assertEqual(list(json.loads(done.out)), list(OBJECT))
        self.assertEqual(done.out.count("\n"), 1)

    def test_every_listing_form_and_both_boards(self):
        for board in ("K5901", "K5902"):
            for form in (["--listing", "unix"], ["--listing", "dos"], ["--modern"], ["--no-dots"]):
                with self.subTest(board=board, form=form):
                    done = run("info", "--json", *self.rtu("--board", board, *form).options())
                    self.check(done, 0)
                    shown = json.loads(done.out)
                    self.assertEqual(shown["application"]["name"], f"{board}-041A-0300.out")
                    self.assertEqual(shown["operatingSystem"]["size"], 1482752)
                    self.assertEqual(shown["partNo"], board)

    def test_safe_mode(self):
        rtu = self.rtu("--run-mode", "Safe")
        self.assertEqual(json.loads(run("info", "--json", *rtu.options()).out)["runMode"], "Safe Mode")
        self.assertIn("Harbour Road Substation 12\n               Safe Mode\nPart No.", run("info", *rtu.options()).out)

    def test_dates_follow_the_users_locale(self):
        made = subprocess.run(["localedef", "--no-archive", "-i", "de_DE", "-f", "UTF-8", self.here("de_DE.UTF-8")],
                              capture_output=True, text=True, check=False) if shutil.which("localedef") else None
        if made is None or made.returncode != 0:
            self.skipTest("this machine cannot make a German locale (Debian's package locales)")
        done = run("info", *self.rtu().options(), LC_ALL="de_DE.UTF-8", LOCPATH=self.folder)
        self.check(done, 0)
        self.assertIn("App File       K5902-041A-0300.out         30.09.2015            307200\n", done.out)

    def test_without_a_web_server_the_rest_is_shown_and_the_status_says_so(self):
        rtu = self.rtu()
        with refusing_port() as port:
            done = run("info", *rtu.options(http=port))
        self.check(done, 1)
        self.assertIn("[Quillport]  Unable to access the file RtuSetup.xml {OK} -> OK\n", done.err)
        self.assertIn("not all could be read", done.err)
        self.assertIn("RTU            RtuSetup.xml not found\n", done.out)
        self.assertIn("App File       K5902-041A-0300.out", done.out)

    def test_faults_of_the_web_server(self):
        for fault in ("http-garbage", "http-status:404", "http-status:500", "http-cut"):
            with self.subTest(fault):
                done = run("info", *self.rtu("--fault", fault + "=rtusetup.xml").options())
                self.check(done, 1)
                self.assertIn(" Unable to access the file RtuSetup.xml", done.err)
                self.assertIn("vxworks", done.out)

    def test_a_web_server_that_stalls_ends_within_the_silence_timeout(self):
        done = run("info", "--silence-timeout", 1, *self.rtu("--fault", "http-stall=rtusetup.xml").options())
        self.check(done, 1)
        self.assertIn(" Unable to access the file RtuSetup.xml", done.err)

    def test_wrong_board(self):
        rtu = self.rtu("--board", "K5901")
        options = rtu.options()
        options[options.index("K5901")] = "K5902"
        done = run("info", *options)
        self.check(done, 1)
        self.assertIn("ChgFolder error", done.err)
        self.assertIn("Part No.       K5901", done.out)


class Login(ProgramTest):
    def test_wrong_password(self):
        done = run("info", *self.rtu().options(), password="geheim")
        self.check(done, 3, "")
        self.assertIn("[Quillport] Error connecting to target. Descr: '", done.err)
        self.assertIn("'. Error code#-", done.err)
        self.assertNotIn("geheim", done.err)

    def test_a_server_that_quotes_the_password(self):
        done = run("info", *self.rtu("--fault", "quote=PASS").options(), password="geheim")
        self.check(done, 3, "")
        self.assertNotIn("geheim", done.err)

    def test_a_failed_get_still_ends_with_the_result_text(self):
        done = run("get", "application", "--to", self.folder, *self.rtu().options(), password="geheim")
        self.check(done, 3, "Not connected to RTU\n")

    def test_refused_port(self):
        rtu = self.rtu()
        with refusing_port() as port:
            done = run("info", *rtu.options(ftp=port))
        self.check(done, 3, "")
        self.assertIn("Error connecting to target. Descr: '", done.err)

    def test_a_host_that_does_not_resolve(self):
        done = run("info", "--host", "no-such-host.invalid", "--part-number", "K5902", "--user", "rtu")
        self.check(done, 3, "")
        self.assertIn("Error connecting to target. Descr: '", done.err)

    def test_a_blank_host(self):
        done = run("info", "--host", "", "--part-number", "K5902", "--user", "rtu")
        self.check(done, 3, "")
        self.assertIn("[Quillport] Unable to connect due to a blank host name {OK} -> OK\n", done.err)

    def test_too_many_logins(self):
        done = run("info", *self.rtu("--max-logins", "1", "--fault", "refuse:421=CONNECTx*").options())
        self.check(done, 3, "")

    def test_a_server_that_never_greets(self):
        done = run("info", "--connect-timeout", 1, "--silence-timeout", 1,
                   *self.rtu("--fault", "stall=CONNECTx*").options())
        self.check(done, 3, "")

    def test_a_server_that_talks_nonsense(self):
        done = run("info", "--silence-timeout", 1, *self.rtu("--fault", "garbage=CONNECTx*").options())
        self.check(done, 3, "")
