"""The three forms of a listing, and what LIST and NLST take."""

import calendar
import ftplib
import os
import re
import unittest

from running_simulator import SharedSimulatorTest, SimulatorTest, current_folder, listing
import listings


def write(path, text, *date):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    seconds = calendar.timegm(date)
    os.utime(path, (seconds, seconds))


def volume_with_three_entries(root):
    """An RTU's folder whose one volume holds two files and a folder, all with dates of their own."""
    volume = os.path.join(root, "ata0a")
    os.mkdir(volume)
    write(os.path.join(volume, "K5902-041A-0300.out"), "x" * 300, 2014, 11, 21, 9, 5, 7)
    write(os.path.join(volume, "vxworks"), "x" * 12, 1980, 1, 1, 0, 0, 0)
    os.mkdir(os.path.join(volume, "webfiles"))
    os.utime(os.path.join(volume, "webfiles"), (0, calendar.timegm((2010, 6, 14, 7, 45, 20))))
    return root


class ListingForms(SimulatorTest):
    def client_of(self, *options):
        return self.login(self.start("--folder", volume_with_three_entries(self.temporary_folder()), *options))

    def test_table(self):
        client = self.client_of()
        self.assertEqual(listing(client), (
            b"  size          date       time       name\r\n"
            b"--------       ------     ------    --------\r\n"
            b"     300    Nov-21-2014  09:05:07   K5902-041A-0300.out  \r\n"
            b"      12    Jan-01-1980  00:00:00   vxworks           \r\n"
            b"    2048    Jun-14-2010  07:45:20   webfiles          <DIR>\r\n"))
        client.cwd("webfiles")
        self.assertEqual(listing(client).splitlines()[2:], [
            b"    2048    Jun-14-2010  07:45:20   .                 <DIR>",
            b"    2048    " + self.date_of_volume(client) + b"   ..                <DIR>"])

    def date_of_volume(self, client):
        return re.search(rb"2048    (\S+  \S+)   ata0a", listing(client, "/"))[1]

    def test_unix_without_dots(self):
        client = self.client_of("--listing", "unix", "--no-dots")
        self.assertEqual(listing(client), (
            b"-rwxrwxrwx   1 0        0             300 Nov 21  2014 K5902-041A-0300.out\r\n"
            b"-rwxrwxrwx   1 0        0              12 Jan  1  1980 vxworks\r\n"
            b"drwxrwxrwx   1 0        0            2048 Jun 14  2010 webfiles\r\n"))
        client.cwd("webfiles")
        self.assertEqual(listing(client), b"")

    def test_unix_shows_the_time_of_a_young_file(self):
        modified = calendar.timegm((2016, 3, 9, 4, 5, 6))
        young = [listings.Entry("vxworks", 12, modified, is_folder=False)]
        self.assertEqual(listings.render("unix", young, now=modified + 3600),
                         b"-rwxrwxrwx   1 0        0              12 Mar  9 04:05 vxworks\r\n")

    def test_dos(self):
        self.assertEqual(listing(self.client_of("--listing", "dos")), (
            b"11-21-14 09:05AM    300 K5902-041A-0300.out\r\n"
            b"01-01-80 00:00AM     12 vxworks\r\n"
            b"06-14-10 07:45AM  <DIR>  webfiles\r\n"))


class ListingArguments(SharedSimulatorTest):
    def test_a_folder_as_the_argument(self):
        self.client.cwd("/ata0a/webfiles/Tmpl/Maps")
        here = listing(self.client)
        self.client.cwd("/")
        self.assertEqual(listing(self.client, "/ata0a/webfiles/Tmpl/Maps"), here)

    def test_files_masks_and_missing_folders_are_refused(self):
        for argument in ("vxworks", "*.out", "/ata0a/nowhere"):
            with self.subTest(argument), self.assertRaisesRegex(ftplib.error_perm, "^550 "):
                listing(self.client, argument)

    def test_nlst(self):
        self.assertEqual(self.client.nlst("webfiles"), ["gui", "ISaGRAF", "Tmpl", "xml"])

    def test_the_root_lists_the_volumes(self):
        self.assertEqual(self.client.nlst("/"), ["ata0a"])
        self.assertEqual(self.login(self.start("--board", "K5901")).nlst("/"), ["c:", "d:"])

    def test_latin1_name_keeps_its_byte(self):
        client = self.login(self.start("--latin1-names"), encoding="latin-1")
        self.assertIn("\u00dcbersicht", client.nlst("webfiles/Tmpl"))
        client.cwd("webfiles/Tmpl/\u00dcbersicht")
        self.assertIn("/\u00dcbersicht", current_folder(client))
        self.assertEqual(len(client.nlst()), 4)


if __name__ == "__main__":
    unittest.main()
