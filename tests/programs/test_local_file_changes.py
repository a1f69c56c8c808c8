"""A local file that changes while it is sent: never a short file that was sent as if it were whole."""

import os
import subprocess

from harness import APPLICATION, LONGEST_SECONDS, ProgramTest, Run, contents, start, write
from held_upload import UploadDoor

LARGE = 24 * 1024 * 1024  # more than socket buffers hold
CONFIGURATION = b'<CONFIGURATION VER="K5902-041A-0300"/>'
COMPLAINT = "The local file changed or went away while it was sent"


def shrink(path):
    os.truncate(path, 1024)


def shrink_a_little(path):
    os.truncate(path, LARGE - 1)


def grow(path):
    with open(path, "ab") as file:
        file.write(b"more")


def overwrite(path):
    """Another content of the same length."""
    with open(path, "r+b") as file:
        file.seek(LARGE // 2)
        file.write(b"other")
    os.utime(path, (1, 1))


def _end(process):
    if process.poll() is None:
        process.kill()
    process.communicate()


CHANGES = {"shrinks": shrink, "shrinks by a byte": shrink_a_little, "grows": grow, "vanishes": os.remove,
           "is overwritten": overwrite}


class LocalFileChanges(ProgramTest):
    def send(self, rtu, door, what, path, *answers):
        """A running send whose upload waits at the door."""
        self.addCleanup(door.close)
        process = start("send", what, "--from", path, *rtu.options(ftp=door.port),
                        *(part for answer in answers for part in ("--answer", answer)),
                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(_end, process)
        return process

    def changed_while_sent(self, process, door, change):
        door.wait_for_upload(LONGEST_SECONDS)
        change()
        door.open()
        out, err = process.communicate(timeout=LONGEST_SECONDS)
        return Run(process.returncode, out, err)

    def large_file(self, *names):
        path = write(self.here(*names), b"")
        os.truncate(path, LARGE)
        return path

    def test_an_image(self):
        for what, change in CHANGES.items():
            with self.subTest(what):
                rtu = self.rtu("--board", "K5901")
                image = self.large_file("image", "vxworks")
                old = contents(rtu.boot("vxworks"))
                door = UploadDoor(rtu)
                process = self.send(rtu, door, "os", image, "Replace Operating System File?=OK")
                done = self.changed_while_sent(process, door, lambda: change(image))
                self.check(done, 1, "Cancelled\n")
                self.assertIn("ftpSendFile failed: " + COMPLAINT, done.err)
                self.assertEqual(contents(rtu.boot("vxworks")), old)  # and what arrived stays beside it
                self.assertTrue(os.path.exists(rtu.boot("vxworks.new")))

    def test_an_application(self):
        rtu = self.rtu("--board", "K5902")
        path = self.large_file("K5902-042.out")
        old = contents(rtu.data(APPLICATION["K5902"]))
        door = UploadDoor(rtu)
        process = self.send(rtu, door, "application", path, "Warning, version mismatch!=Yes",
                            "Replace Application File?=OK")
        done = self.changed_while_sent(process, door, lambda: shrink(path))
        self.check(done, 1, "Cancelled\n")
        self.assertIn("ftpSendFile failed: " + COMPLAINT, done.err)
        self.assertEqual(contents(rtu.data(APPLICATION["K5902"])), old)

    def test_one_file_of_many(self):
        # A raise among many files ends the send with the word "OK": only the status tells.
        rtu = self.rtu("--xml-files", "0")
        os.makedirs(rtu.data("webfiles", "xml"), exist_ok=True)
        write(self.here("xml", "a.xml"), CONFIGURATION)
        path = write(self.here("xml", "b.xml"), CONFIGURATION)
        door = UploadDoor(rtu)
        process = self.send(rtu, door, "configuration", self.here("xml"))
        done = self.changed_while_sent(process, door, lambda: os.remove(path))
        self.check(done, 1, "OK\n")
        self.assertIn("ftpSendFiles failed: ", done.err)
        self.assertIn("b.xml", done.err)
        self.assertEqual(os.listdir(rtu.data("webfiles", "xml")), ["a.xml"])
