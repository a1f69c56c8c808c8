"""The forms in which RTUs list a folder.

All of them end their lines in CR LF. Dates are the file's own, in UTC, so that a listing is the same everywhere.
"""

import time
from dataclasses import dataclass

MONTHS = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()
LISTING_ERROR = "error reading entry: 16"  # text of a listing that breaks off, in its data and in its reply
FOLDER_SIZE = 2048  # one cluster, as a DOS file system reports it
RECENT_SECONDS = 180 * 24 * 3600  # younger entries of an "ls -l" show the time in place of the year


@dataclass(frozen=True)
class Entry:
    """One line of a listing. The modification time is in seconds since 1970."""

    name: str
    size: int
    modified: float
    is_folder: bool

    @property
    def date(self):
        return time.gmtime(self.modified)


def table(entries, now):
    """Size, date, time and name in columns under two head lines."""
    del now
    lines = ["  size          date       time       name", "--------       ------     ------    --------"]
    return lines + [_table_line(entry) for entry in entries]


def _table_line(entry):
    date = entry.date
    size = FOLDER_SIZE if entry.is_folder else entry.size
    day = f"{MONTHS[date.tm_mon - 1]}-{date.tm_mday:02}-{date.tm_year:04}"
    clock = f"{date.tm_hour:02}:{date.tm_min:02}:{date.tm_sec:02}"
    return f"{size:8}    {day}  {clock}   {entry.name:16}  {'<DIR>' if entry.is_folder else ''}"


def unix(entries, now):
    """Lines like those of "ls -l"."""
    return [_unix_line(entry, now) for entry in entries]


def _unix_line(entry, now):
    date = entry.date
    mode = "drwxrwxrwx" if entry.is_folder else "-rwxrwxrwx"
    size = FOLDER_SIZE if entry.is_folder else entry.size
    recent = 0 <= now - entry.modified < RECENT_SECONDS
    when = f"{date.tm_hour:02}:{date.tm_min:02}" if recent else f" {date.tm_year:04}"
    return f"{mode}   1 0        0        {size:8} {MONTHS[date.tm_mon - 1]} {date.tm_mday:2} {when} {entry.name}"


def dos(entries, now):
    """Lines like those of "dir", with a clock of 24 hours and an AM that means nothing."""
    del now
    return [_dos_line(entry) for entry in entries]


def _dos_line(entry):
    when = time.strftime("%m-%d-%y %H:%MAM", entry.date)
    return f"{when}  <DIR>  {entry.name}" if entry.is_folder else f"{when} {entry.size:6} {entry.name}"


FORMATS = {"table": table, "unix": unix, "dos": dos}


def render(form, entries, now=None):
    """The listing of the entries as it goes over the wire. Names keep the bytes they have on disk."""
    lines = FORMATS[form](entries, time.time() if now is None else now)
    return wire_lines(lines)


def wire_lines(lines):
    """Lines as bytes, each with its CR LF."""
    return "".join(line + "\r\n" for line in lines).encode("utf-8", "surrogateescape")
