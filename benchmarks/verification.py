#!/usr/bin/python3
"""What the verification of a sent configuration costs: FTP commands after the last file has gone up.

Sends 200 files into one folder of the simulated RTU, which lists in the table form, and counts from the simulated RTU's own
log. The number beside it is what one listing for each file would take. Prints figures and asserts nothing.

    benchmarks/verification.py build/release/apps/quillportctl/quillportctl
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
FILES = 200
VERSION = "K5902-041A-0300"


def send(program, folder, log):
    simulator = subprocess.Popen(
        ["/usr/bin/python3", str(ROOT / "simulator/rtu_simulator.py"), "--listing", "table", "--log", log],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    try:
        ready = json.loads(simulator.stdout.readline())
        return subprocess.run(
            [program, "send", "configuration", "--from", folder, "--host", "rtu.bench", "--part-number", "K5902",
             "--user", "rtu", "--answer", "Replace Configuration Files?=OK", "--answer", "Replace RLL program?=No",
             "--connect-to", f"rtu.bench:21:127.0.0.1:{ready['ftp']}",
             "--connect-to", f"rtu.bench:80:127.0.0.1:{ready['http']}"],
            env={**os.environ, "QUILLPORT_PASSWORD": "rtu"}, capture_output=True, text=True)
    finally:
        simulator.stdin.close()
        simulator.wait(timeout=10)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: benchmarks/verification.py PATH-OF-quillportctl")
    with tempfile.TemporaryDirectory() as work:
        folder = pathlib.Path(work, "Configuration", "xml")
        folder.mkdir(parents=True)
        (folder.parent / "ISaGRAF").mkdir()
        (folder.parent / "ISaGRAF" / "prog").write_text("x")
        for number in range(FILES):
            (folder / f"config{number}.xml").write_text(f'<CONFIG VER="{VERSION}" NO="{number}"/>')
        log = os.path.join(work, "log")
        sent = send(sys.argv[1], str(folder), log)
        commands = [json.loads(line).get("command") for line in pathlib.Path(log).read_text().splitlines()]
    stored = [index for index, command in enumerate(commands) if command == "STOR"]
    if len(stored) != FILES:
        sys.exit(f"{len(stored)} of {FILES} files went up: {sent.stderr}")
    behind = commands[stored[-1] + 1:]
    # The count of the ISaGRAF folder begins with a change into it.
    checked = behind[:next((i for i, c in enumerate(behind) if c == "CWD" and i > 0), len(behind))]
    data = sum(1 for command in checked if command == "LIST")
    print(f"{FILES} files verified with {len(checked)} commands ({' '.join(checked)}), {len(checked) + data} round trips;"
          f" a listing for each file: {FILES * 3} round trips (target: at most 10)")


if __name__ == "__main__":
    main()
