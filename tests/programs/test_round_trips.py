"""What comes from the RTU, is changed and goes back is on the RTU byte for byte, and comes back the same."""

import concurrent.futures
import os
import shutil
import stat

from harness import ProgramTest, contents, files_below, run, write

BOARDS = ("K5901", "K5902")
XML_FILES = 300
ISAGRAF_FILES = 40
REMOVED = "prog08.x8m"  # from the program, by the operator
CLOSING_OF_GET = "Config OK. ISaGRAF OK.\n"


class RoundTrip(ProgramTest):
    @staticmethod
    def get(rtu, what, folder, *answers):
        return run("get", what, "--to", folder, *rtu.options(), *with_answers(answers))

    @staticmethod
    def send(rtu, what, path, *answers):
        return run("send", what, "--from", path, *rtu.options(), *with_answers(answers))

    def assert_same(self, found, expected):
        """Compares what stands below two folders, and tells of differences by names: the bytes would fill pages."""
        self.assertEqual({name: found.get(name) == expected.get(name) for name in found | expected},
                         dict.fromkeys(found | expected, True))


def with_answers(answers):
    return [part for answer in answers for part in ("--answer", answer)]


def folders_below(folder):
    """Every folder below a folder, empty ones too, by its path from there with a "/" behind it."""
    return {os.path.relpath(os.path.join(place, name), folder) + "/": None
            for place, names, _ in os.walk(folder) for name in names}


def tree(folder):
    """All that stands below a folder, by its path from there: files with their bytes."""
    return folders_below(folder) | files_below(folder)


def files_in(folder):
    """The files directly in a folder, with their bytes."""
    return {name: contents(os.path.join(folder, name)) for name in os.listdir(folder)
            if os.path.isfile(os.path.join(folder, name))}


class Configuration(RoundTrip):
    """The panel pauses between the two stages of a Get, so the boards run side by side."""

    def on_both_boards(self, scenario):
        with concurrent.futures.ThreadPoolExecutor(len(BOARDS)) as together:
            for ended in [together.submit(scenario, board) for board in BOARDS]:
                ended.result()

    def rtu_of(self, board, xml_files=XML_FILES, isagraf_files=ISAGRAF_FILES):
        """An RTU with its program in one folder; that of the K5902 has further files in a folder below, which stay
        where they are."""
        rtu = self.rtu("--board", board, "--xml-files", str(xml_files), "--isagraf-files", "0")
        for number in range(isagraf_files):
            write(self.program(rtu, f"prog{number:02}.x8m"), pattern(number, 700 * number))
        if board == "K5902":
            for number in range(6):
                write(self.program(rtu, "Interlock", f"lock{number}.x8m"), pattern(number, 900))
        return rtu

    @staticmethod
    def program(rtu, *names):
        return rtu.data("webfiles", "ISaGRAF", *names)

    @staticmethod
    def configuration(rtu):
        return rtu.data("webfiles", "xml")

    def change(self, folder):
        """What an operator does to a configuration: changes, adds and removes files of both kinds."""
        xml, program = os.path.join(folder, "xml"), os.path.join(folder, "ISaGRAF")
        changed = os.path.join(xml, "Bay01.xml")
        write(changed, contents(changed).replace(b'DEADBAND="', b'DEADBAND="10'))
        write(os.path.join(xml, "Abzweig S\u00fcd 5.xml"), contents(changed))
        os.remove(os.path.join(xml, "Modems.xml"))
        write(os.path.join(program, "prog07.x8m"), b"changed")
        write(os.path.join(program, "Blindleistung \u00b1 1.rll"), pattern(1, 5000))
        os.remove(os.path.join(program, REMOVED))

    def assert_on_rtu(self, rtu, folder, kept):
        self.assert_same(files_in(self.configuration(rtu)), files_below(os.path.join(folder, "xml")))
        self.assert_same(files_in(self.program(rtu)), files_below(os.path.join(folder, "ISaGRAF")) | kept)

    def round_trip(self, board, during_get=(), during_send=()):
        """Get, change, send back, get again, under faults each of which the operator mends with one Retry."""
        rtu = self.rtu_of(board)
        first, second = (self.here(board, name, "Configuration") for name in ("first", "second"))
        self.lay(rtu, during_get)
        got = self.get(rtu, "configuration", first, *["File get retry=Retry"] * len(during_get))
        self.check(got, 0, CLOSING_OF_GET)
        self.assertEqual(len(os.listdir(os.path.join(first, "xml"))), XML_FILES)
        self.assertEqual(len(os.listdir(os.path.join(first, "ISaGRAF"))), ISAGRAF_FILES)
        self.assert_on_rtu(rtu, first, {})

        self.change(first)
        below = files_below(self.program(rtu, "Interlock"))
        # The old program is deleted only where it has files in folders below: those are what the RTU's are told by.
        kept = {} if below else {REMOVED: contents(self.program(rtu, REMOVED))}
        self.lay(rtu, during_send)
        sent = self.send(rtu, "configuration", os.path.join(first, "xml"), "Replace Configuration Files?=OK",
                         "Replace RLL program?=Yes" if below else "Send RLL program?=Yes",
                         *["File get retry=Retry"] * len(during_send))
        self.check(sent, 0, "OK\n")
        self.assert_on_rtu(rtu, first, kept)
        self.assert_same(files_below(self.program(rtu, "Interlock")), below)

        self.lay(rtu, ())
        self.check(self.get(rtu, "configuration", second), 0, CLOSING_OF_GET)
        self.assert_same(tree(second), tree(first) | {"ISaGRAF/" + name: data for name, data in kept.items()})
        return got, sent

    @staticmethod
    def lay(rtu, faults):
        rtu.tell({"clear": "faults"})
        for fault in faults:
            rtu.fault(fault)

    def test_changed_and_back(self):
        def scenario(board):
            got, sent = self.round_trip(board)
            self.assertEqual(got.err, "")
            self.assertEqual(sent.err.count(" -> "), 2, sent)
        self.on_both_boards(scenario)

    def test_files_cut_short_by_the_rtu_are_mended_by_retries(self):
        # Behind the files of a stage come its retries; the first of each stage is cut short once more.
        def cut_short(command):
            xml = (7, 250, XML_FILES + 1)
            program = [XML_FILES + len(xml) + number for number in (3, ISAGRAF_FILES + 1)]
            return [f"truncate={command}@{number}" for number in (*xml, *program)]

        def scenario(board):
            faults = cut_short("RETR"), cut_short("STOR")
            for done, question in zip(self.round_trip(board, *faults), ("get", "send")):
                asked = f"Would you like to {question} the file again? {{*Retry, Cancel}} -> Retry (--answer)"
                self.assertEqual(done.err.count(asked), 5, done)
        self.on_both_boards(scenario)

    def test_a_file_that_stays_short_on_the_rtu_is_not_done(self):
        rtu = self.rtu("--xml-files", "3", "--isagraf-files", "0", "--fault", "truncate=STOR@2x*")
        shutil.copytree(self.configuration(rtu), self.here("xml"))
        for answer, asked in (["File get retry=Cancel"], 2), ([], 2 * 4):
            with self.subTest(answer):
                done = self.send(rtu, "configuration", self.here("xml"), "Replace Configuration Files?=OK", *answer)
                self.check(done, 1, "OK\n")
                self.assertEqual(done.err.count("Would you like to send the file again?"), asked, done)
                self.assertIn("a file that did not arrive whole was not sent again", done.err)
                rtu.tell({"clear": "faults"})
                rtu.fault("truncate=STOR@2x*")

    def test_a_folder_without_documents_is_refused(self):
        # The folder above the documents, say. The control would delete the RTU's and send none.
        rtu = self.rtu("--xml-files", "3")
        before = tree(rtu.path())
        write(self.here("Configuration", "xml", "a.xml"), b"<a/>")
        write(self.here("notes", "a.txt"), b"")
        for place in self.here("Configuration"), self.here("notes", "a.txt"):
            done = self.send(rtu, "configuration", place, "Replace Configuration Files?=OK")
            self.check(done, 2, "")
            self.assertIn("holds no .xml file", done.err)
        self.assert_same(tree(rtu.path()), before)

    def test_a_send_that_broke_is_repeated(self):
        xml_files, isagraf_files = 40, 10
        for fault in ("cut-before=DELE@20x*", "cut-during=STOR@15", "cut-before=STOR@45", "refuse=STOR@4"):
            with self.subTest(fault):
                rtu = self.rtu_of("K5901", xml_files, isagraf_files)
                first = self.here(fault, "Configuration")
                shutil.copytree(self.configuration(rtu), os.path.join(first, "xml"))
                shutil.copytree(self.program(rtu), os.path.join(first, "ISaGRAF"))
                self.change(first)
                rtu.fault(fault)
                answers = ("Replace Configuration Files?=OK", "Send RLL program?=Yes")
                self.check(self.send(rtu, "configuration", os.path.join(first, "xml"), *answers), 1)
                rtu.tell({"clear": "faults"})
                self.check(self.send(rtu, "configuration", os.path.join(first, "xml"), *answers), 0, "OK\n")
                self.assert_same(files_in(self.configuration(rtu)), files_below(os.path.join(first, "xml")))


class Gui(RoundTrip):
    FOLDERS = 20

    def rtu_of(self, board):
        rtu = self.rtu("--board", board, "--gui-folders", str(self.FOLDERS))
        write(rtu.data("webfiles", "gui", "pages", "\u00dcbersicht Nord", "Seite 1 \u00e4.htm"), b"<html/>")
        write(rtu.data("webfiles", "gui", "pages", "empty.htm"), b"")
        os.makedirs(rtu.data("webfiles", "gui", "nothing in it", "nor in this"))
        return rtu

    def test_the_tree_comes_and_its_file_goes(self):
        for board in BOARDS:
            with self.subTest(board):
                rtu = self.rtu_of(board)
                there, local = rtu.data("webfiles", "gui"), self.here(board, "Gui")
                self.check(self.get(rtu, "gui", self.here(board)), 0, "OK\n")
                self.assert_same(tree(local), tree(there))
                self.assertGreater(len(folders_below(local)), self.FOLDERS)

                newer = write(os.path.join(local, board + "-042.gui"), pattern(1, 100000))
                os.remove(os.path.join(local, board + "-041A-0300.gui"))
                self.check(self.send(rtu, "gui", newer, "Replace GUI File?=OK"), 0, "OK\n")
                self.assert_same(tree(there), tree(local))

                # What stands there goes with all that it holds, read-only files too.
                write(os.path.join(local, "pages", "mine.htm"), b"mine")
                os.chmod(os.path.join(local, "pages", "mine.htm"), stat.S_IRUSR)
                self.check(self.get(rtu, "gui", self.here(board), "Folder not empty=Yes"), 0, "OK\n")
                self.assert_same(tree(local), tree(there))


class Templates(RoundTrip):
    FOLDERS = 26  # one of them is empty
    FILES_EACH = 16
    QUESTION = "[Delete Template Files?] The Template folders in the RTU contain {} template file(s). "

    def rtu_of(self, board):
        return self.rtu("--board", board, "--template-folders", str(self.FOLDERS),
                        "--template-files", str(self.FILES_EACH))

    @staticmethod
    def there(rtu):
        return rtu.data("webfiles", "Tmpl")

    def got(self, rtu, *names):
        """The local tree after a Get into a new folder."""
        folder = self.here(*names)
        self.check(self.get(rtu, "templates", folder), 0, "OK\n")
        return os.path.join(folder, "Templates")

    def change(self, local):
        """Files and folders are changed, added and removed, some with blanks and letters beyond ASCII."""
        changed = os.path.join(local, "Event Lists", "Template0401.xml")
        write(changed, contents(changed) + b"<!-- changed -->")
        write(os.path.join(local, "\u00dcbersicht", "Gr\u00f6\u00dfe 1 \u0436.xml"), contents(changed))
        write(os.path.join(local, "Neue Vorlagen", "a b.xml"), contents(changed))
        os.makedirs(os.path.join(local, "Noch leer"))
        os.remove(os.path.join(local, "Maps", "Template0101.xml"))
        shutil.rmtree(os.path.join(local, "Alarms"))

    def test_add_and_update(self):
        for board in BOARDS:
            with self.subTest(board):
                rtu = self.rtu_of(board)
                before = tree(self.there(rtu))
                self.assertEqual(len(before), self.FOLDERS + 400)
                local = self.got(rtu, board)
                self.assert_same(tree(local), before)
                self.change(local)
                done = self.send(rtu, "templates", local, "Delete Template Files?=Yes")
                self.check(done, 0, "OK\n")
                self.assertIn(self.QUESTION.format(400), done.err)
                self.assert_same(tree(self.there(rtu)), before | tree(local))

    def test_delete_and_upload_new(self):
        for board in BOARDS:
            with self.subTest(board):
                rtu = self.rtu_of(board)
                local = self.got(rtu, board)
                self.change(local)
                write(os.path.join(self.there(rtu), "directly.xml"), b"goes too")
                self.check(self.send(rtu, "templates", local, "Delete Template Files?=No"), 0, "OK\n")
                self.assert_same(tree(self.there(rtu)), tree(local))
                self.assert_same(tree(self.got(rtu, board, "again")), tree(local))

    def test_cancelled(self):
        rtu = self.rtu()
        local = self.got(rtu, "first")
        before = tree(self.there(rtu))
        self.change(local)
        self.check(self.send(rtu, "templates", local), 1, "Cancelled\n")
        self.assert_same(tree(self.there(rtu)), before)

    def test_a_folder_in_a_folder_cannot_be_deleted(self):
        # The deletion goes one level down, so it stops at the first folder that holds another.
        rtu = self.rtu()
        local = self.got(rtu, "first")
        write(os.path.join(local, "Maps", "Detail", "x.xml"), b"<x/>")
        self.check(self.send(rtu, "templates", local, "Delete Template Files?=Yes"), 0, "OK\n")
        self.assert_same(tree(self.there(rtu)), tree(local))
        self.check(self.send(rtu, "templates", local, "Delete Template Files?=No"), 1, "Delete Error\n")
        self.assert_same(files_below(os.path.join(self.there(rtu), "Maps")), {"Detail/x.xml": b"<x/>"})
        # The way out: what was deleted comes back from the local tree.
        self.check(self.send(rtu, "templates", local, "Delete Template Files?=Yes"), 0, "OK\n")
        self.assert_same(tree(self.there(rtu)), tree(local))

    def test_names_in_latin_1_keep_their_bytes(self):
        rtu = self.rtu("--latin1-names")
        before = tree(self.there(rtu))
        local = self.got(rtu, "first")
        self.assertIn("\u00dcbersicht", os.listdir(local))
        for answer in ("Yes", "No"):
            self.check(self.send(rtu, "templates", local, "Delete Template Files?=" + answer), 0, "OK\n")
            self.assert_same(tree(self.there(rtu)), before)

    def test_a_read_only_file_keeps_the_folder_from_being_cleared(self):
        rtu = self.rtu()
        local = self.got(rtu, "first")
        mine = write(os.path.join(local, "Maps", "mine.xml"), b"mine")
        os.chmod(mine, stat.S_IRUSR)
        done = self.get(rtu, "templates", self.here("first"), "Folder not empty=Yes", "File Exists=Yes",
                        "Overwrite All=Yes")
        self.check(done, 1, "Cancelled\n")
        self.assertIn("[Get Template] Transfer aborted : ", done.err)
        self.assertEqual(contents(mine), b"mine")
        self.assert_same(files_below(local), files_below(self.there(rtu)) | {"Maps/mine.xml": b"mine"})
        os.chmod(mine, stat.S_IRUSR | stat.S_IWUSR)
        self.check(self.get(rtu, "templates", self.here("first"), "Folder not empty=Yes"), 0, "OK\n")
        self.assert_same(tree(local), tree(self.there(rtu)))


def pattern(seed, size):
    """Bytes of which no two stretches are alike for a long way, another lot for each seed."""
    block = b"".join((seed * 40503 + number * number).to_bytes(4, "little") for number in range(1000))
    return (block * (size // len(block) + 1))[:size]
