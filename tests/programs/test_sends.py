"""Sends of one file, on both boards: what replaces what, and what the RTU holds when a send is cut short.

However a send of an image ends, the RTU holds a whole one: the old one, or the new one that is perhaps not renamed yet.
"""

import concurrent.futures
import contextlib
import ftplib
import json
import os

from harness import (APPLICATION, LONGEST_SECONDS, ProgramTest, connections, contents, files_below, log_in, run, told,
                     write)
from held_upload import UploadDoor

BOARDS = ("K5901", "K5902")
NEW_IMAGE = bytes(range(256)) * 4000  # more than the 900 KB below which an image looks cut off
NEW_COMPANION = b"the new WebCli"
REPLACE_APPLICATION = "Replace Application File?=OK"
REPLACE_GUI = "Replace GUI File?=OK"
REPLACE_OS = "Replace Operating System File?=OK"
SEVERAL_AT_ONCE = 6  # runs that mostly wait before they log in again


class SendTest(ProgramTest):
    def send(self, rtu, what, path, *answers):
        return run("send", what, "--from", path, *rtu.options(),
                   *(part for answer in answers for part in ("--answer", answer)))

    def image_for(self, board):
        """A folder with a new image as its board needs it; the image's path."""
        if board == "K5902":
            write(self.here(board, "WebCli"), NEW_COMPANION)
        return write(self.here(board, "vxworks"), NEW_IMAGE)

    def info(self, rtu):
        done = run("info", "--json", *rtu.options())
        self.check(done, 0)
        return json.loads(done.out)


class Application(SendTest):
    def test_a_newer_one_takes_the_place_of_all_others(self):
        for board in BOARDS:
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                write(rtu.data("forgotten.out.bak"), b"")
                name = board + "-042.out"
                done = self.send(rtu, "application", write(self.here(name), b"new"),
                                 "Warning, version mismatch!=Yes", REPLACE_APPLICATION)
                self.check(done, 0, "OK\n")
                self.assertEqual([each for each in os.listdir(rtu.data()) if ".out" in each], [name])
                self.assertEqual(contents(rtu.data(name)), b"new")
                shown = self.info(rtu)["application"]
                self.assertEqual((shown["name"], shown["size"]), (name, 3))

    def test_the_same_name_is_overwritten(self):
        for board in BOARDS:
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                before = files_below(rtu.path())
                done = self.send(rtu, "application", write(self.here(APPLICATION[board]), b"new"), REPLACE_APPLICATION)
                self.check(done, 0, "OK\n")
                place = os.path.relpath(rtu.data(APPLICATION[board]), rtu.path())
                self.assertEqual(files_below(rtu.path()), before | {place: b"new"})

    def test_a_name_that_differs_only_in_case_loses_the_application(self):
        # The RTU stores the new one under the old one's name; that name is not the new one's, and is cleared away.
        rtu = self.rtu()
        done = self.send(rtu, "application", write(self.here("K5902-041a-0300.out"), b"new"), REPLACE_APPLICATION)
        self.assertEqual([each for each in os.listdir(rtu.data()) if ".out" in each], [])
        self.check(done, 1, "OK\n")
        self.assertIn("K5902-041a-0300.out is not on the RTU as it was sent", done.err)
        # The way out: nothing is in the way of the next one.
        self.check(self.send(rtu, "application", self.here("K5902-041a-0300.out")), 0, "OK\n")
        self.assertEqual(contents(rtu.data("K5902-041a-0300.out")), b"new")

    def test_what_stands_after_each_failure(self):
        old, new = APPLICATION["K5902"], "K5902-042.out"
        for fault, result, status, stands in (
                ("cut-before=STOR", "Cancelled", 1, {old: "old"}),
                ("refuse:552=STOR", "Cancelled", 1, {old: "old"}),
                ("cut-during=STOR", "Cancelled", 1, {old: "old", new: "part"}),
                ("refuse-during:552=STOR", "Cancelled", 1, {old: "old", new: "part"}),
                ("cut-after=STOR", "Cancelled", 1, {old: "old", new: "new"}),
                # Others that cannot be cleared away do not count for the word, but for the status.
                ("refuse=DELE", "OK", 1, {old: "old", new: "new"}),
                ("cut-before=DELEx*", "OK", 1, {old: "old", new: "new"}),
                ("cut-before=DELE", "OK", 0, {new: "new"}),
                ("cut-after=DELE", "OK", 0, {new: "new"})):
            with self.subTest(fault):
                rtu = self.rtu("--fault", fault)
                whole = {"old": contents(rtu.data(old)), "new": NEW_IMAGE}
                done = self.send(rtu, "application", write(self.here(new), NEW_IMAGE),
                                 "Warning, version mismatch!=Yes", REPLACE_APPLICATION)
                self.check(done, status, result + "\n")
                found = {each: which(contents(rtu.data(each)), whole)
                         for each in os.listdir(rtu.data()) if ".out" in each}
                self.assertEqual(found, stands)


class Gui(SendTest):
    def test_a_newer_one_takes_the_place_of_the_old_one(self):
        for board in BOARDS:
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                before = files_below(rtu.data("webfiles"))
                name = board + "-042 B.gui"
                self.check(self.send(rtu, "gui", write(self.here(name), b"new"), REPLACE_GUI), 0, "OK\n")
                del before["gui/" + board + "-041A-0300.gui"]
                self.assertEqual(files_below(rtu.data("webfiles")), before | {"gui/" + name: b"new"})
                shown = self.info(rtu)["gui"]
                self.assertEqual((shown["name"], shown["size"]), (name, 3))

    def test_a_gui_of_the_other_board_is_refused(self):
        rtu = self.rtu()
        before = files_below(rtu.path())
        done = self.send(rtu, "gui", write(self.here("K5901-042.gui"), b"new"))
        self.check(done, 1, "INVALID VERSION\n")
        self.assertEqual(files_below(rtu.path()), before)


class OperatingSystem(SendTest):
    def test_the_image_goes_up_beside_the_old_one_and_takes_its_place_last(self):
        for board, companion in (("K5901", []), ("K5902", ["STOR WebCli"])):
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                before = files_below(rtu.boot())
                self.check(self.send(rtu, "os", self.image_for(board), REPLACE_OS), 0, "OK\n")
                after = before | {"vxworks": NEW_IMAGE}
                if companion:
                    after["WebCli"] = NEW_COMPANION
                self.assertEqual(files_below(rtu.boot()), after)
                changing = [one.replace(f"/{os.path.basename(rtu.boot())}/", "") for one in rtu.commands()
                            if one.startswith(("STOR", "DELE", "RNFR", "RNTO"))]
                self.assertEqual(changing, ["STOR vxworks.new", "DELE vxworks", "RNFR vxworks.new", "RNTO vxworks",
                                            *companion])

    def test_the_case_of_the_name_follows_the_new_image(self):
        rtu = self.rtu("--board", "K5901")
        self.check(self.send(rtu, "os", write(self.here("VxWorks"), NEW_IMAGE), REPLACE_OS), 0, "OK\n")
        self.assertIn("VxWorks", os.listdir(rtu.boot()))
        self.assertNotIn("vxworks", os.listdir(rtu.boot()))
        self.assertEqual(self.info(rtu)["operatingSystem"]["name"], "VxWorks")

    def test_the_companion_tells_the_boards_apart(self):
        for board, result in (("K5901", "INVALID VERSION\n"), ("K5902", "ERROR\n")):
            with self.subTest(board):
                rtu = self.rtu("--board", board)
                before = files_below(rtu.path())
                other = "K5902" if board == "K5901" else "K5901"
                self.check(self.send(rtu, "os", self.image_for(other), REPLACE_OS), 1, result)
                self.assertEqual(files_below(rtu.path()), before)

    def test_a_companion_that_fails_leaves_the_new_image_and_goes_with_the_next_send(self):
        for fault, companion in (("cut-before=STOR@2", "old"), ("refuse=STOR@2", "old"), ("cut-during=STOR@2", "part"),
                                 ("cut-after=STOR@2", "new")):
            with self.subTest(fault):
                rtu = self.rtu("--fault", fault)
                whole = {"old": contents(rtu.boot("WebCli")), "new": NEW_COMPANION}
                image = self.image_for("K5902")
                self.check(self.send(rtu, "os", image, REPLACE_OS), 1, "Cancelled\n")
                self.assertEqual(contents(rtu.boot("vxworks")), NEW_IMAGE)
                self.assertEqual(which(contents(rtu.boot("WebCli")), whole), companion)
                self.check(self.send(rtu, "os", image, REPLACE_OS), 0, "OK\n")
                self.assertEqual(contents(rtu.boot("WebCli")), NEW_COMPANION)


class ShortOnTheRtu(SendTest):
    """The RTU stores half of a file and says that all went well. The word is OK, and the status is not."""

    def test_each_kind_of_file(self):
        for board, what, path, replace in (("K5901", "os", self.image_for("K5901"), REPLACE_OS),
                                           ("K5902", "application", write(self.here(APPLICATION["K5902"]), b"short"),
                                            REPLACE_APPLICATION),
                                           ("K5902", "gui", write(self.here("K5902-042.gui"), b"short"), REPLACE_GUI)):
            with self.subTest(what):
                rtu = self.rtu("--board", board, "--fault", "truncate=STOR")
                done = self.send(rtu, what, path, replace)
                self.check(done, 1, "OK\n")
                self.assertIn(os.path.basename(path), done.err.split("not done: ")[-1])

    def test_the_companion(self):
        rtu = self.rtu("--fault", "truncate=STOR@2")
        done = self.send(rtu, "os", self.image_for("K5902"), REPLACE_OS)
        self.check(done, 1, "OK\n")
        self.assertIn("WebCli", done.err.split("not done: ")[-1])


# Each fault, the status of the send, and what stands as "vxworks" and as "vxworks.new" behind it. A link that is cut
# once is made again inside the call; "x*" cuts it again, and an RTU that refuses USER does not come back at all.
GONE = "refuse:421=USER@2x*"
CUTS = [
    # The upload. Not repeated: the old image is untouched.
    ("cut-before=STOR", 1, "old", None),
    ("cut-during=STOR", 1, "old", "part"),
    ("cut-after=STOR", 1, "old", "new"),
    (f"cut-after=STOR {GONE}", 1, "old", "new"),
    ("refuse=STOR", 1, "old", None),
    ("refuse:421=STOR", 1, "old", None),
    ("refuse-during:552=STOR", 1, "old", "part"),
    # The deletion.
    ("cut-before=DELE", 0, "new", None),
    ("cut-before=DELEx*", 1, "old", "new"),
    (f"cut-before=DELE {GONE}", 1, "old", "new"),
    ("cut-after=DELE", 0, "new", None),
    (f"cut-after=DELE {GONE}", 1, None, "new"),
    ("refuse=DELE", 1, "old", "new"),
    ("refuse:421=DELEx*", 1, "old", "new"),
    # The rename. When it fails the old image has gone.
    ("cut-before=RNFR", 0, "new", None),
    ("cut-before=RNFRx*", 1, None, "new"),
    (f"cut-before=RNFR {GONE}", 1, None, "new"),
    ("cut-after=RNFR", 0, "new", None),
    ("cut-after=RNFRx*", 1, None, "new"),
    ("refuse=RNFR", 1, None, "new"),
    ("cut-before=RNTO", 0, "new", None),
    ("cut-before=RNTOx*", 1, None, "new"),
    ("cut-after=RNTO", 0, "new", None),
    (f"cut-after=RNTO {GONE}", 1, "new", None),
    ("refuse=RNTO", 1, None, "new"),
]


class CutImage(SendTest):
    """The link is cut at every command of the sequence upload, delete, rename."""

    def endings(self, rtu, image, cuts):
        """How the send of the image ends under each of these faults: its run, and what stands on the RTU then."""
        old = contents(rtu.boot("vxworks"))
        for faults, *_ in cuts:
            write(rtu.boot("vxworks"), old)
            with contextlib.suppress(FileNotFoundError):
                os.remove(rtu.boot("vxworks.new"))
            rtu.tell({"clear": "faults"})
            for fault in faults.split():
                rtu.fault(fault)
            done = self.send(rtu, "os", image, REPLACE_OS)
            stands = [which(contents(rtu.boot(name)), {"old": old, "new": NEW_IMAGE})
                      if os.path.exists(rtu.boot(name)) else None for name in ("vxworks", "vxworks.new")]
            yield done, *stands

    def check_cuts(self, board):
        image = self.image_for(board)
        shares = [CUTS[start::SEVERAL_AT_ONCE] for start in range(SEVERAL_AT_ONCE)]
        rtus = [self.rtu("--board", board) for _ in shares]
        with concurrent.futures.ThreadPoolExecutor(SEVERAL_AT_ONCE) as several:
            endings = list(several.map(lambda rtu, share: list(self.endings(rtu, image, share)), rtus, shares))
        for share, ended in zip(shares, endings):
            for (faults, status, found, beside), (done, found_image, found_beside) in zip(share, ended):
                with self.subTest(faults):
                    self.assertEqual((done.status, found_image, found_beside), (status, found, beside), done)
                    self.assertEqual(done.out, "OK\n" if status == 0 else "Cancelled\n")
                    self.assertTrue(found_image in ("old", "new") or found_beside == "new", "no whole image is left")

    def test_on_k5901(self):
        self.check_cuts("K5901")

    def test_on_k5902(self):
        self.check_cuts("K5902")


class ImageWithoutItsName(SendTest):
    """The rename has failed behind the deletion: the new image stands as vxworks.new, and nothing as vxworks."""

    def setUp(self):
        super().setUp()
        self.target = self.rtu("--board", "K5901", "--fault", "refuse=RNTO")
        self.image = self.image_for("K5901")
        self.check(self.send(self.target, "os", self.image, REPLACE_OS), 1, "Cancelled\n")

    def test_the_panel_shows_no_image_after_the_next_login(self):
        self.assertEqual(self.info(self.target)["operatingSystem"], {"name": "", "date": "", "size": None})

    def test_sending_again_without_a_new_login_fails_at_the_deletion(self):
        # The panel of that login still shows the old image, which is no longer there to be deleted.
        rtu = self.rtu("--board", "K5901", "--fault", "refuse=RNTO")
        session = self.session(*connections(rtu))
        session.do(*log_in(rtu), {"type": "cmbFileType", "text": "Operating System"})
        for _ in range(2):
            effects = told(session.do({"pick": self.image}, {"answer": "OK"}, {"click": "cmdSendFile"}))
            self.assertEqual(effects[-2], "txtResult.text = Cancelled")
            self.assertNotIn("vxworks", os.listdir(rtu.boot()))
            self.assertEqual(contents(rtu.boot("vxworks.new")), NEW_IMAGE)
        self.assertEqual([one for one in rtu.commands() if one[:4] in ("DELE", "RNTO")],
                         ["DELE /c:/vxworks", "RNTO /c:/vxworks", "DELE /c:/vxworks"])

    def test_sending_again_does_not_give_it_its_name(self):
        done = self.send(self.target, "os", self.image)
        self.check(done, 1, "OK\n")
        self.assertIn("vxworks", done.err)
        self.assertNotIn("vxworks", os.listdir(self.target.boot()))
        self.assertEqual(contents(self.target.boot("vxworks.new")), NEW_IMAGE)

    def test_a_rename_by_any_ftp_client_does(self):
        with ftplib.FTP() as ftp:
            ftp.connect("127.0.0.1", self.target.ready["ftp"], LONGEST_SECONDS)
            ftp.login("rtu", "rtu")
            ftp.rename("/c:/vxworks.new", "/c:/vxworks")
        self.assertEqual(self.info(self.target)["operatingSystem"]["size"], len(NEW_IMAGE))
        self.check(self.send(self.target, "os", self.image, REPLACE_OS), 0, "OK\n")
        self.assertEqual(contents(self.target.boot("vxworks")), NEW_IMAGE)


class Bar(SendTest):
    """The bar of a send of one file: shown at nothing, moved by the transfer up to all of it, hidden."""

    SIZE = 16 * 1024 * 1024  # more than socket buffers hold

    def bar_of_send(self, board, kind, path):
        """Every write to the bar while the file goes through a door that opens when the bar has moved half way."""
        rtu = self.rtu("--board", board)
        door = UploadDoor(rtu, pause=0.02)
        self.addCleanup(door.close)
        session = self.session(*connections(rtu, ftp=door.port))
        session.do(*log_in(rtu), {"type": "cmbFileType", "text": kind}, {"pick": path}, {"answer": "OK"})
        bar = []
        for effect in effects_of(session, {"click": "cmdSendFile"}):
            if effect.get("control") == "barTotFile":
                value = effect["value"]
                bar.append(value if effect["property"] == "value" else effect["property"] + str(value))
                if bar[-1] in range(1, 100):
                    door.open()
        return bar

    def large(self, *names):
        path = write(self.here(*names), b"")
        os.truncate(path, self.SIZE)
        return path

    def assert_one_run(self, bar):
        self.assertEqual((bar[:2], bar[-3:]), ([0, "visibleTrue"], [100, 0, "visibleFalse"]))
        moved = bar[2:-2]
        self.assertEqual(moved, sorted(moved))
        self.assertTrue(any(0 < value < 100 for value in moved), moved)

    def test_application(self):
        self.assert_one_run(self.bar_of_send("K5902", "Application", self.large(APPLICATION["K5902"])))

    def test_gui(self):
        self.assert_one_run(self.bar_of_send("K5901", "GUI", self.large("K5901-042.gui")))

    def test_operating_system_with_its_companion(self):
        write(self.here("os", "WebCli"), NEW_COMPANION)
        bar = self.bar_of_send("K5902", "Operating System", self.large("os", "vxworks"))
        behind = bar.index("visibleFalse") + 1
        self.assert_one_run(bar[:behind])
        self.assertEqual(bar[behind:behind + 2] + bar[-3:], [0, "visibleTrue", 100, 0, "visibleFalse"])


def effects_of(session, action):
    """The effects of an action, each as soon as it comes."""
    session.process.stdin.write(json.dumps(action) + "\n")
    session.process.stdin.flush()
    for line in session.process.stdout:
        effect = json.loads(line)
        yield effect
        if effect["event"] == "done":
            return
    raise AssertionError("the session ended: " + session.process.stderr.read())


def which(data, whole):
    """The name of the file that the data is, "part" for a beginning of the new one."""
    for name, bytes_ in whole.items():
        if data == bytes_:
            return name
    return "part" if whole["new"].startswith(data) else "something else"
