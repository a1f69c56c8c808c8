#!/usr/bin/python3
"""The window's speed against the simulated RTU, with the terminal program as its peer in the same run.

Prints four figures and asserts none: start to painted window; from a click on Cancel to the end of the transfer call; the
longest gap between two served window events during a 64 MB Get; the Get's throughput as a ratio to the terminal program's.

    benchmarks/window_benchmark.py build/release

The offscreen platform stands in when there is no display.
"""

import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
RUNS = 9
HOST = "rtu.benchmark"
MEGABYTE = 1_000_000
SIZE = 64 * MEGABYTE
# Slow enough that the cancel strikes in the middle, fast enough that the client is busy.
CANCELLED_BYTES_PER_SECOND = 20 * MEGABYTE


class SimulatedRtu:
    def __init__(self, *options):
        self.process = subprocess.Popen(
            ["/usr/bin/python3", str(ROOT / "simulator/rtu_simulator.py"), "--application-size", str(SIZE), *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        ready = json.loads(self.process.stdout.readline())
        self.connect_to = [f"{HOST}:21:127.0.0.1:{ready['ftp']}", f"{HOST}:80:127.0.0.1:{ready['http']}"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(timeout=10)


class Programs:
    def __init__(self, build):
        self.probe = build / "benchmarks/window_probe"
        self.terminal = build / "apps/quillportctl/quillportctl"
        for program in (self.probe, self.terminal):
            if not program.exists():
                sys.exit(f"{program} is not there; build it first")
        self.environment = dict(os.environ)
        if not (os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")):
            self.environment.setdefault("QT_QPA_PLATFORM", "offscreen")

    def window(self, what, rtu, *words):
        result = subprocess.run([self.probe, what, *words, *rtu.connect_to], env=self.environment, check=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, timeout=300)
        return result.stdout


def seconds_to_painted_window(programs, rtu):
    started = time.monotonic()
    process = subprocess.Popen([programs.probe, "start", *rtu.connect_to], env=programs.environment,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    line = process.stdout.readline()
    seconds = time.monotonic() - started
    process.wait(timeout=30)
    if line != "painted\n":
        sys.exit("the window was never painted")
    return seconds


def window_get(programs, rtu):
    with tempfile.TemporaryDirectory() as folder:
        figures = json.loads(programs.window("get", rtu, folder))
    if figures["result"] != "OK":
        sys.exit(f"the window's Get ended in {figures['result']}")
    return figures


def cancel_milliseconds(programs, rtu):
    with tempfile.TemporaryDirectory() as folder:
        figures = json.loads(programs.window("cancel", rtu, folder))
    if figures["result"] != "Cancelled":
        sys.exit(f"the window's cancelled Get ended in {figures['result']}")
    return figures["cancel_ms"]


def terminal_get(programs, rtu):
    """Seconds from the line just before the transfer call to the end of the command, as in the window."""
    options = [word for target in rtu.connect_to for word in ("--connect-to", target)]
    session = subprocess.Popen([programs.terminal, "session", *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               text=True)

    def read_until(event, control=None):
        while True:
            effect = json.loads(session.stdout.readline())
            if effect["event"] == event and control in (None, effect.get("control")):
                return

    def do(action):
        session.stdin.write(json.dumps(action) + "\n")
        session.stdin.flush()

    with tempfile.TemporaryDirectory() as folder:
        for action in ({"set": "HostName", "value": HOST}, {"set": "partNumber", "value": "K5902"},
                       {"type": "txt_username", "text": "rtu"}, {"type": "txt_password", "text": "rtu"},
                       {"click": "cmd_connect"}, {"type": "cmbFileType", "text": "Application"},
                       {"pick": folder + "/Application"}):
            do(action)
            read_until("done")
        do({"click": "cmdGetFile"})
        read_until("write", "txtResult")
        started = time.monotonic()
        read_until("done")
        seconds = time.monotonic() - started
        session.stdin.close()
        session.wait(timeout=30)
        if not any(path.stat().st_size == SIZE for path in pathlib.Path(folder).rglob("*.out")):
            sys.exit("the terminal program's Get brought no application")
    return seconds


def spread(values, unit, digits):
    return (f"{min(values):.{digits}f} / {statistics.median(values):.{digits}f} / {max(values):.{digits}f} {unit}"
            f"  (least, median, most of {len(values)})")


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: benchmarks/window_benchmark.py BUILD-FOLDER")
    programs = Programs(pathlib.Path(sys.argv[1]).resolve())
    with SimulatedRtu() as rtu:
        starts = [seconds_to_painted_window(programs, rtu) * 1000 for _ in range(RUNS)]
        gets, peers = [], []
        for _ in range(RUNS):  # in turns, so that both meet the same moods of the machine
            gets.append(window_get(programs, rtu))
            peers.append(terminal_get(programs, rtu))
    with SimulatedRtu("--bytes-per-second", str(CANCELLED_BYTES_PER_SECOND)) as rtu:
        cancels = [cancel_milliseconds(programs, rtu) for _ in range(RUNS)]

    seconds = [figures["seconds"] for figures in gets]
    ratio = statistics.median(peers) / statistics.median(seconds)
    print(f"start to painted window     {spread(starts, 'ms', 0)}")
    print(f"click on Cancel to the end  {spread(cancels, 'ms', 1)}")
    print(f"longest gap in a 64 MB Get  {spread([g['longest_gap_ms'] for g in gets], 'ms', 1)}  target: under 50")
    print(f"64 MB Get in the window     {spread([SIZE / MEGABYTE / s for s in seconds], 'MB/s', 0)}")
    print(f"64 MB Get in the terminal   {spread([SIZE / MEGABYTE / s for s in peers], 'MB/s', 0)}")
    print(f"throughput, window to terminal, of the medians: {ratio:.2f}  target: at least 0.95")


if __name__ == "__main__":
    main()
