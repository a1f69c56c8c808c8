"""quillportctl get and send: what lands where, the prompts, and the honest status."""

import os
import shutil
import stat

from harness import APPLICATION, ProgramTest, contents, files_below, run, write

NOT_EMPTY = ("[Folder not empty] The Application folder is not empty."
             " Do you want to delete the application file before proceeding? {Yes, No, *Cancel} -> ")


class Get(ProgramTest):
    def get(self, rtu, what, *more, to=None):
        return run("get", what, "--to", to or self.folder, *rtu.options(), *more)

    def test_application_on_both_boards(self):
        for board, name in APPLICATION.items():
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                folder = self.here(board)
                done = self.get(rtu, "application", to=folder)
                self.check(done, 0, "OK\n")
                self.assertEqual(done.err, "")
                self.assertEqual(files_below(folder), {"Application/" + name: contents(rtu.data(name))})

    def test_operating_system_on_both_boards(self):
        for board, names in {"K5901": ["vxworks"], "K5902": ["vxworks", "WebCli"]}.items():
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                folder = self.here(board)
                self.check(self.get(rtu, "os", to=folder), 0, "OK\n")
                self.assertEqual(files_below(folder),
                                 {"OperatingSystem/" + name: contents(rtu.boot(name)) for name in names})

    def test_a_folder_with_the_name_in_its_path_is_used_as_it_stands(self):
        rtu = self.rtu()
        self.check(self.get(rtu, "application", to=self.here("old applications")), 0, "OK\n")
        self.assertEqual(list(files_below(self.folder)), ["old applications/" + APPLICATION["K5902"]])

    def test_a_relative_folder_starts_here(self):
        rtu = self.rtu()
        here = os.getcwd()
        self.addCleanup(os.chdir, here)
        os.chdir(self.folder)
        self.check(self.get(rtu, "application", to="backup/of today"), 0, "OK\n")
        self.assertEqual(list(files_below(self.folder)), ["backup/of today/Application/" + APPLICATION["K5902"]])

    def test_two_applications_both_come(self):
        rtu = self.rtu()
        write(rtu.data("K5902-040.out"), b"an older one")
        self.check(self.get(rtu, "application"), 0, "OK\n")
        self.assertEqual(files_below(self.here("Application")),
                         {"K5902-040.out": b"an older one",
                          APPLICATION["K5902"]: contents(rtu.data(APPLICATION["K5902"]))})

    def test_an_empty_application(self):
        rtu = self.rtu("--application-size", "0")
        self.check(self.get(rtu, "application"), 0, "OK\n")
        self.assertEqual(files_below(self.folder), {"Application/" + APPLICATION["K5902"]: b""})

    def test_nothing_to_get_is_not_done(self):
        rtu = self.rtu()
        os.remove(rtu.data(APPLICATION["K5902"]))
        done = self.get(rtu, "application")
        self.check(done, 1, "OK\n")
        self.assertEqual(done.err, "quillportctl: not done: no file was moved\n")

    def test_a_file_cut_short_by_the_rtu_is_not_done(self):
        rtu = self.rtu("--fault", "truncate=RETR")
        done = self.get(rtu, "application")
        self.check(done, 1, "OK\n")
        self.assertIn(APPLICATION["K5902"] + " is not what the RTU said\n", done.err)

    def test_ok_after_a_raised_failure_is_not_done(self):
        rtu = self.rtu()
        os.remove(rtu.boot("WebCli"))
        done = self.get(rtu, "os")
        self.check(done, 1, "Cancelled\n")
        self.assertIn("[Get Operating System] Operation Cancelled {OK} -> OK\n", done.err)
        self.assertIn("ftpReceiveFiles failed: ", done.err)
        self.assertEqual(files_below(self.folder), {"OperatingSystem/vxworks": contents(rtu.boot("vxworks"))})


class Prompts(ProgramTest):
    """The folder holds something already: each answer, given each way."""

    def setUp(self):
        super().setUp()
        self.application = self.rtu()
        self.name = APPLICATION["K5902"]
        write(self.here("Application", "notes.txt"), b"mine")
        write(self.here("Application", "old.out"), b"old application")
        self.before = files_below(self.folder)

    def get(self, *answers):
        return run("get", "application", "--to", self.folder, *self.application.options(),
                   *(part for answer in answers for part in ("--answer", answer)))

    def new(self):
        return contents(self.application.data(self.name))

    def test_by_default_nothing_is_deleted(self):
        done = self.get()
        self.check(done, 1, "\n")
        self.assertEqual(done.err, NOT_EMPTY + "Cancel\n"
                         "quillportctl: not done: the command was left without a result; no file was moved\n")
        self.assertEqual(files_below(self.folder), self.before)

    def test_yes_deletes_applications_only(self):
        done = self.get("Folder not empty=Yes")
        self.check(done, 0, "OK\n")
        self.assertEqual(done.err, NOT_EMPTY + "Yes (--answer)\n")
        self.assertEqual(files_below(self.here("Application")), {"notes.txt": b"mine", self.name: self.new()})

    def test_no_asks_for_another_folder_and_there_is_none(self):
        done = self.get("Folder not empty=No")
        self.check(done, 1, "\n")
        self.assertIn("[Select Folder to Store RTU App] asked for another place, and none was given -> Cancel\n",
                      done.err)
        self.assertEqual(files_below(self.folder), self.before)

    def test_cancel(self):
        self.check(self.get("Folder not empty=cancel"), 1, "\n")
        self.assertEqual(files_below(self.folder), self.before)

    def test_an_answer_that_the_prompt_does_not_have_gives_the_default(self):
        done = self.get("Folder not empty=Retry")
        self.check(done, 1, "\n")
        self.assertIn('note: the prompt [Folder not empty] has no button "Retry"\n' + NOT_EMPTY + "Cancel\n", done.err)

    def test_an_answer_that_was_never_asked_for_is_noted(self):
        done = self.get("Folder not empty=Yes", "File Exists=Yes")
        self.check(done, 0, "OK\n")
        self.assertTrue(done.err.endswith('note: no prompt asked for the answer to "File Exists"\n'), done.err)

    def test_yes_where_no_application_is_there_reports_the_deletion(self):
        os.remove(self.here("Application", "old.out"))
        done = self.get("Folder not empty=Yes")
        self.check(done, 1, "ERROR\n")
        self.assertEqual(files_below(self.here("Application")), {"notes.txt": b"mine"})


class FileExists(ProgramTest):
    """Files that stand where others land. A Get of a configuration meets them: nothing clears its ISaGRAF folder when
    there is no xml folder beside it."""

    CLOSING = "Config OK. ISaGRAF OK.\n"

    def setUp(self):
        super().setUp()
        self.source = self.rtu("--xml-files", "1", "--isagraf-files", "4")
        self.there = {}
        for name, data in files_below(self.source.data("webfiles", "ISaGRAF")).items():
            if "/" not in name:
                self.there[name] = data
        self.assertEqual(len(self.there), 2)  # the others lie in sub-folders, which stay on the RTU
        for name in self.there:
            write(self.local(name), b"mine")

    def local(self, name):
        return self.here("Configuration", "ISaGRAF", name)

    def get(self, *answers):
        return run("get", "configuration", "--to", self.folder, *self.source.options(),
                   *(part for answer in answers for part in ("--answer", answer)))

    def mine(self):
        """How many files are still as they were."""
        return sum(data == b"mine" for data in files_below(self.here("Configuration", "ISaGRAF")).values())

    def test_by_default_they_stay(self):
        done = self.get()
        self.check(done, 0, self.CLOSING)
        self.assertEqual(done.err.count("[File Exists] The file "), 2)
        self.assertEqual(done.err.count(" exists. Do you want to overwrite ? {Yes, *No} -> No\n"), 2)
        self.assertEqual(self.mine(), 2)

    def test_each_is_asked_for(self):
        done = self.get("File Exists=Yes", "File Exists=No", "Overwrite All=No")
        self.check(done, 0, self.CLOSING)
        self.assertEqual(done.err.count("[File Exists] "), 2)
        self.assertEqual(done.err.count("[Overwrite All] Overwrite all files ? {Yes, *No} -> No (--answer)\n"), 1)
        self.assertEqual(self.mine(), 1)

    def test_all_at_once(self):
        done = self.get("File Exists=Yes", "Overwrite All=Yes")
        self.check(done, 0, self.CLOSING)
        self.assertEqual(done.err.count("[File Exists] "), 1)
        self.assertEqual(files_below(self.here("Configuration", "ISaGRAF")), self.there)

    def test_read_only(self):
        for name in self.there:
            os.chmod(self.local(name), stat.S_IRUSR)
        with self.subTest("declined"):
            done = self.get("File Exists=Yes", "File Exists=No", "File Exists=No", "Overwrite All=Yes")
            self.check(done, 0, self.CLOSING)
            self.assertEqual(done.err.count("[File Exists] File is READ ONLY. Do you want to overwrite ? {Yes, *No} -> No"), 2)
            self.assertEqual(self.mine(), 2)
        with self.subTest("accepted"):
            shutil.rmtree(self.here("Configuration", "xml"))
            self.check(self.get("File Exists=Yes", "Overwrite All=Yes"), 0, self.CLOSING)
            self.assertEqual(files_below(self.here("Configuration", "ISaGRAF")), self.there)

    def test_a_read_only_file_keeps_the_folder_from_being_cleared(self):
        self.check(self.get("File Exists=Yes", "Overwrite All=Yes"), 0)
        (name,) = files_below(self.here("Configuration", "xml"))
        path = self.here("Configuration", "xml", name)
        os.chmod(path, stat.S_IRUSR)
        done = self.get("Folder not empty=Yes", "File Exists=No")
        self.check(done, 1, "Config Failed. ISaGRAF Failed.\n")
        self.assertIn("[Get Configuration] Operation Cancelled {OK} -> OK\n", done.err)
        self.assertEqual(contents(path), contents(self.source.data("webfiles", "xml", name)))


class OtherTypes(ProgramTest):
    def test_gui(self):
        rtu = self.rtu()
        self.check(run("get", "gui", "--to", self.folder, *rtu.options()), 0, "OK\n")
        self.assertEqual(files_below(self.here("Gui")), files_below(rtu.data("webfiles", "gui")))

    def test_templates_with_their_empty_folder(self):
        rtu = self.rtu()
        self.check(run("get", "templates", "--to", self.folder, *rtu.options()), 0, "OK\n")
        self.assertEqual(files_below(self.here("Templates")), files_below(rtu.data("webfiles", "Tmpl")))
        self.assertEqual(sorted(os.listdir(self.here("Templates"))), sorted(os.listdir(rtu.data("webfiles", "Tmpl"))))

    def test_configuration(self):
        rtu = self.rtu()
        self.check(run("get", "configuration", "--to", self.folder, *rtu.options()), 0, "Config OK. ISaGRAF OK.\n")
        self.assertEqual(files_below(self.here("Configuration", "xml")), files_below(rtu.data("webfiles", "xml")))

    def test_a_file_that_is_always_short_is_tried_again_three_times_and_no_more(self):
        rtu = self.rtu("--xml-files", "1", "--isagraf-files", "0", "--fault", "truncate=RETRx*")
        done = run("get", "configuration", "--to", self.folder, *rtu.options())
        self.check(done, 1)
        self.assertEqual(done.err.count("{*Retry, Cancel} -> Retry\n"), 3)
        self.assertIn("note: this has been tried again 3 times; no more\n", done.err)
        self.assertEqual(done.err.count("{*Retry, Cancel} -> Cancel\n"), 1)
        self.assertIn(" is not what the RTU said\n", done.err)

    def test_a_file_that_comes_whole_at_the_second_try_is_done(self):
        rtu = self.rtu("--xml-files", "1", "--isagraf-files", "1", "--fault", "truncate=RETR")
        done = run("get", "configuration", "--to", self.folder, *rtu.options(), "--answer", "File get retry=Retry")
        self.check(done, 0, "Config OK. ISaGRAF OK.\n")
        self.assertEqual(done.err.count("-> Retry (--answer)\n"), 1)
        self.assertEqual(files_below(self.here("Configuration", "xml")), files_below(rtu.data("webfiles", "xml")))


class Send(ProgramTest):
    def setUp(self):
        super().setUp()
        self.target = self.rtu()

    def send(self, what, path, *answers):
        return run("send", what, "--from", path, *self.target.options(),
                   *(part for answer in answers for part in ("--answer", answer)))

    def test_an_application_takes_the_place_of_the_old_one(self):
        new = write(self.here("K5902-042.out"), b"the new application")
        old = self.target.data(APPLICATION["K5902"])
        with self.subTest("nobody agrees"):
            done = self.send("application", new)
            self.check(done, 1, "Cancelled\n")
            self.assertIn("no file was moved", done.err)
            self.assertTrue(os.path.exists(old))
        with self.subTest("agreed"):
            done = self.send("application", new, "Warning, version mismatch!=Yes", "Replace Application File?=OK")
            self.check(done, 0, "OK\n")
            self.assertEqual(contents(self.target.data("K5902-042.out")), b"the new application")
            self.assertFalse(os.path.exists(old))

    def test_an_application_of_another_board(self):
        done = self.send("application", write(self.here("K5901-042.out"), b"x"))
        self.check(done, 1, "INVALID VERSION\n")
        self.assertIn("The RTU application file version should begin with K5902.", done.err)

    def test_the_controls_ok_for_nothing(self):
        # A name without a dot ends the workflow silently with "OK".
        done = self.send("application", write(self.here("K5902"), b"x"))
        self.check(done, 1, "OK\n")
        self.assertIn("no file was moved", done.err)

    def test_an_operating_system_with_its_companion(self):
        image = write(self.here("vxworks"), bytes(1000000))
        write(self.here("WebCli"), b"companion")
        done = self.send("os", image, "Replace Operating System File?=OK")
        self.check(done, 0, "OK\n")
        self.assertEqual(contents(self.target.boot("vxworks")), bytes(1000000))
        self.assertEqual(contents(self.target.boot("WebCli")), b"companion")

    def test_what_a_get_has_brought_goes_back(self):
        self.check(run("get", "configuration", "--to", self.folder, *self.target.options()), 0)
        self.check(run("get", "templates", "--to", self.folder, *self.target.options()), 0)
        before = files_below(self.target.data("webfiles"))
        done = self.send("configuration", self.here("Configuration", "xml"), "Replace Configuration Files?=OK")
        self.check(done, 0, "OK\n")
        done = self.send("templates", self.here("Templates"), "Delete Template Files?=Yes")
        self.check(done, 0, "OK\n")
        self.assertEqual(files_below(self.target.data("webfiles")), before)

    def test_an_upload_that_the_rtu_refuses(self):
        self.target.fault("refuse-during:552=STOR")
        done = self.send("gui", write(self.here("K5902-041A-0300.gui"), bytes(500000)), "Replace GUI File?=OK")
        self.check(done, 1, "Cancelled\n")
        self.assertIn("ftpSendFile failed: ", done.err)
