"""The RTU's file system: names without regard to case, changes, and no way out of it."""

import ftplib
import io
import os
import tempfile
import unittest

from running_simulator import SharedSimulatorTest, Simulator, current_folder, fetch


class FileSystemTest(SharedSimulatorTest):
    def assert_refused(self, command, code="550"):
        with self.assertRaisesRegex(ftplib.error_perm, f"^{code} ", msg=command):
            self.client.voidcmd(command)

    def rename(self, old, new):
        self.client.sendcmd("RNFR " + old)
        return self.client.voidcmd("RNTO " + new)

    def store(self, name, data=b"new"):
        return self.client.storbinary("STOR " + name, io.BytesIO(data))


class Names(FileSystemTest):
    def test_every_component_is_found_without_regard_to_case(self):
        self.client.cwd("/ATA0A/Webfiles/GUI/")
        self.assertEqual(current_folder(self.client), "/ata0a/webfiles/gui")
        self.assertEqual(len(fetch(self.client, "k5902-041a-0300.GUI")), 24576)

    def test_an_exact_match_comes_first(self):
        for name in ("readme", "README", "ReadMe"):
            self.file(name, text=name)
        self.assertEqual(fetch(self.client, "ReadMe"), b"ReadMe")
        self.assertEqual(fetch(self.client, "readme"), b"readme")

    def test_storing_under_another_case_keeps_the_entry(self):
        self.file("Notes.txt", text="old")
        self.store("NOTES.TXT")
        self.assertFalse(self.is_there("NOTES.TXT"))
        self.assertEqual(fetch(self.client, "Notes.txt"), b"new")

    def test_names_a_dos_file_system_cannot_hold(self):
        for name in ("a*b", "a?b", 'a"b', "a:b", "a\\b"):
            with self.subTest(name):
                self.assert_refused("MKD " + name)
                with self.assertRaisesRegex(ftplib.error_perm, "^550 "):
                    self.store(name)


class Changes(FileSystemTest):
    def test_stored_bytes_come_back(self):
        data = bytes(range(256)) * 5000
        self.assertTrue(self.store("blob", data).startswith("226"))
        self.assertEqual(fetch(self.client, "blob"), data)

    def test_storing_in_ascii_turns_line_ends(self):
        self.client.storlines("STOR lines", io.BytesIO(b"one\ntwo\n"))
        self.assertEqual(fetch(self.client, "lines"), b"one\ntwo\n")

    def test_delete(self):
        self.file("Old.txt")
        self.client.delete("OLD.TXT")
        self.assertFalse(self.is_there("Old.txt"))
        self.assert_refused("DELE Old.txt")
        self.assert_refused("DELE webfiles")

    def test_folders_are_made_and_removed(self):
        self.client.mkd("backup")
        self.assertTrue(self.is_there("backup"))
        self.assert_refused("MKD BACKUP")
        self.assert_refused("RMD webfiles")
        self.client.rmd("Backup")
        self.assertFalse(self.is_there("backup"))

    def test_rename(self):
        self.rename(self.file("app.new"), "app.out")
        self.assertTrue(self.is_there("app.out"))
        self.assertFalse(self.is_there("app.new"))

    def test_rename_that_changes_only_the_case(self):
        self.rename(self.file("report.txt"), "Report.TXT")
        self.assertTrue(self.is_there("Report.TXT"))
        self.assertFalse(self.is_there("report.txt"))

    def test_rename_onto_another_file_is_refused(self):
        self.file("one")
        self.file("two", text="kept")
        with self.assertRaisesRegex(ftplib.error_perm, "^550 "):
            self.rename("one", "TWO")
        self.assertTrue(self.is_there("one"))
        self.assertEqual(fetch(self.client, "two"), b"kept")

    def test_rename_needs_a_source(self):
        self.assert_refused("RNTO x", code="503")
        self.assert_refused("RNFR nowhere")

    def test_the_root_and_the_volumes_do_not_change(self):
        for command in ("MKD /other", "RMD /ata0a", "RMD /", "RNFR /ata0a", "DELE /ata0a"):
            self.assert_refused(command)
        with self.assertRaisesRegex(ftplib.error_perm, "^550 "):
            self.store("/file")
        self.assertEqual(os.listdir(self.simulator.folder), ["ata0a"])


class WaysOut(FileSystemTest):
    """Nothing beside the RTU's folder can be read, changed or seen."""

    @classmethod
    def setUpClass(cls):
        outer = tempfile.TemporaryDirectory()
        cls.addClassCleanup(outer.cleanup)
        cls.outer = outer.name
        cls.secret = os.path.join(cls.outer, "secret")
        with open(cls.secret, "w", encoding="utf-8") as file:
            file.write("secret")
        os.makedirs(os.path.join(cls.outer, "rtu", "ata0a"))
        cls.simulator = Simulator("--folder", os.path.join(cls.outer, "rtu"))

    def link(self, name, target):
        path = self.simulator.path("ata0a/" + name)
        os.symlink(target, path)
        self.addCleanup(os.remove, path)

    def assert_secret_untouched(self):
        with open(self.secret, encoding="utf-8") as file:
            self.assertEqual(file.read(), "secret")

    def test_dots_end_at_the_root(self):
        self.client.cwd("../../../..")
        self.assertEqual(current_folder(self.client), "/")
        self.assertEqual(self.client.nlst(), ["ata0a"])

    def test_dots_in_names(self):
        for name in ("../secret", "../../secret", "/../secret", "../../../../../../etc/passwd", "/etc/passwd",
                     self.secret):
            with self.subTest(name), self.assertRaisesRegex(ftplib.error_perm, "^550 "):
                fetch(self.client, name)
        self.assert_refused("DELE ../../secret")
        with self.assertRaisesRegex(ftplib.error_perm, "^550 "):
            self.store("../../secret")
        self.assert_secret_untouched()

    def test_links_that_lead_out_are_not_there(self):
        self.link("link", self.secret)
        self.link("door", self.outer)
        self.link("dangling", os.path.join(self.outer, "made"))
        self.assertEqual(self.client.nlst(), [])
        for name in ("link", "LINK", "door/secret", "door/SECRET"):
            with self.subTest(name), self.assertRaisesRegex(ftplib.error_perm, "^550 "):
                fetch(self.client, name)
        for name in ("link", "door/secret", "door/made", "dangling"):
            with self.subTest(name), self.assertRaisesRegex(ftplib.error_perm, "^550 "):
                self.store(name)
        for command in ("CWD door", "DELE link", "DELE door/secret", "MKD door/made", "RNFR door/secret"):
            self.assert_refused(command)
        self.assert_secret_untouched()
        self.assertEqual(sorted(os.listdir(self.outer)), ["rtu", "secret"])

    def test_renaming_through_a_link_is_refused(self):
        self.link("door", self.outer)
        with self.assertRaisesRegex(ftplib.error_perm, "^550 "):
            self.rename(self.file("mine"), "door/mine")
        self.assertTrue(self.is_there("mine"))

    def test_a_nul_in_a_name(self):
        self.assert_refused("RETR a\0b", code="501")
        self.assertEqual(current_folder(self.client), "/ata0a")


if __name__ == "__main__":
    unittest.main()
