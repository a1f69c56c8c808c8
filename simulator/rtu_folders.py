"""The RTU's file system: a folder of this machine, looked at as a DOS file system is.

Names are found without regard to case, an exact match first. Nothing outside the folder can be named: ".." ends at the
root, and a symbolic link that leads out is not there.
"""

import os
import stat

from pyftpdlib.filesystems import AbstractedFS

from listings import Entry

FORBIDDEN = frozenset('*?"<>|:\\') | {chr(code) for code in range(32)}


class RtuFolders(AbstractedFS):
    """What pyftpdlib asks of a file system. Paths named "path" are real ones, resolved by ftp2fs."""

    def ftp2fs(self, ftppath):
        """The real path: every component that is there as it is stored, the rest as given."""
        path = self.root
        for component in self.ftpnorm(ftppath).split("/"):
            if component:
                path = os.path.join(path, stored_name(path, component))
        return path

    def chdir(self, path):
        self.cwd = self.fs2ftp(path)

    def listdir(self, path):
        """The names in a folder, sorted. Links that lead out of the RTU are left out."""
        with os.scandir(path) as found:
            names = [entry.name for entry in found if not entry.is_symlink() or self.validpath(entry.path)]
        return sorted(names, key=lambda name: (name.lower(), name))

    def entries(self, path, dots):
        """The entries of a folder; with dots, "." and ".." stand first where the folder lies below a volume."""
        names = self.listdir(path)
        if dots and self.is_in_volume(path):
            names = [".", "..", *names]
        return [entry for entry in (entry_of(path, name) for name in names) if entry]

    def is_in_volume(self, path):
        """Whether the path lies below a volume: the root and the volumes themselves cannot be changed."""
        return os.path.dirname(path) != self.root and path != self.root

    def can_hold(self, path):
        """Whether a DOS file system can hold an entry of this name at this place."""
        return self.is_in_volume(path) and not FORBIDDEN & set(os.path.basename(path))


def stored_name(folder, name):
    """The name under which the entry is stored in the folder; the name itself when there is none."""
    if os.path.lexists(os.path.join(folder, name)):
        return name
    folded = name.lower()
    try:
        return min((stored for stored in os.listdir(folder) if stored.lower() == folded), default=name)
    except OSError:
        return name


def entry_of(folder, name):
    """The entry as a listing shows it, or None when it has just gone."""
    try:
        status = os.stat(os.path.join(folder, name))
    except OSError:
        return None
    return Entry(name, status.st_size, status.st_mtime, stat.S_ISDIR(status.st_mode))
