#!/usr/bin/python3
"""Dependencies point one way: apps -> adapters -> core, and the core includes the standard library alone."""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
# Headers of the standard library have no folder and no ending; C's own are spelled <cstdint> and so on.
STANDARD = re.compile(r"^[a-z_0-9]+$")
CORE_ROOMS = {"control", "inventory", "transfer", "send", "get", "platform"}


def sources(*folders):
    for folder in folders:
        for ending in ("*.h", "*.cpp"):
            yield from sorted((ROOT / folder).rglob(ending))


def includes(path):
    return INCLUDE.findall(path.read_text(encoding="utf-8"))


class Includes(unittest.TestCase):
    def test_the_core_includes_the_standard_library_alone(self):
        checked = 0
        for path in sources("src"):
            for bracket, header in includes(path):
                checked += 1
                own = bracket == '"' and header.split("/")[0] in CORE_ROOMS
                self.assertTrue(own or (bracket == "<" and STANDARD.match(header)), f"{path}: {header}")
        self.assertGreater(checked, 50)

    def test_the_platform_includes_no_other_room(self):
        for path in sources("src/platform"):
            for bracket, header in includes(path):
                if bracket == '"':
                    self.assertEqual(header.split("/")[0], "platform", f"{path}: {header}")

    def test_no_adapter_includes_a_program(self):
        for path in sources("adapters"):
            for bracket, header in includes(path):
                self.assertFalse(header.startswith(("apps/", "quillportctl/", "quillport/")), f"{path}: {header}")

    def test_the_portable_adapters_call_no_posix(self):
        posix = re.compile(r"^(unistd|fcntl|poll|dirent|netdb|termios|pwd|sys/.*|arpa/.*|netinet/.*)\.h$|^sys/")
        for path in sources("adapters/ftp", "adapters/http", "adapters/xml"):
            for _, header in includes(path):
                self.assertIsNone(posix.match(header), f"{path}: {header}")

    def test_every_file_of_the_core_is_built(self):
        listed = set(re.findall(r"^\s+(\w+/\w+\.cpp)", (ROOT / "src/CMakeLists.txt").read_text(), re.MULTILINE))
        present = {str(path.relative_to(ROOT / "src")) for path in sources("src") if path.suffix == ".cpp"}
        self.assertEqual(listed, present)


if __name__ == "__main__":
    sys.exit(unittest.main())
