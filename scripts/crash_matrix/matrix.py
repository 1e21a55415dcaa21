"""Stops an update at every call that changes a file and looks at what is left; see crash_matrix.sh."""

import argparse
import multiprocessing
import shutil
import signal
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

import judge
import stages
import tracing
import world

ERRORS = ("ENOSPC", "EIO", "EACCES")
ATTEMPTS = 30  # to meet one call; a loaded machine downloads in other pieces each time
DOUBLE = (60, 20)  # points of the first run, points of each run that mends


@dataclass
class Result:
    what: str
    tried: bool = True
    lost: list = field(default_factory=list)
    torn: list = field(default_factory=list)
    unmended: list = field(default_factory=list)


def spread(items, count):
    """As many of them as asked for, evenly distributed, the first and the last among them."""
    items = list(items)
    if count is None or count >= len(items):
        return items
    if count < 2:
        return items[:count]
    return [items[i * (len(items) - 1) // (count - 1)] for i in range(count)]


class Trial:
    """One stage on one home. Each process that tries points has its own."""

    def __init__(self, stage, home):
        self.stage, self.home = stage, home

    def _stop(self, link, call, how):
        number = call.number
        for attempt in range(ATTEMPTS):
            world.fill(self.home, link.state)
            met, exact, near = tracing.stop(self.home, link, call, number, how)
            # A download may come in fewer pieces now: in the end any of them will do.
            if met == (call.path, call.turn) or met and met[0] == call.path and attempt > 5:
                return True
            number = exact or (near if attempt > 4 and near else number + 1)
        return False

    def point(self, number, link, call, how, after=""):
        program = " ".join(link.command[1:]).replace(self.stage.command[-1], "...")
        result = Result(f"{after}{how} at {call.name} {call.number} of '{program}', {call.path}")
        result.tried = self._stop(link, call, how)
        if result.tried:
            result.lost, result.torn = self.stage.judge.stopped(self.home)
            result.unmended = self.stage.judge.mended(
                self.home, *tracing.run(self.home, self.stage.command))
        return [result]

    def double(self, number, link, call, how):
        """Stops the run that mends too, at a spread of its calls."""
        if not self._stop(link, call, how):
            return [Result(f"{call}", tried=False)]
        folder = self.home.parent / f"{self.home.name}.double"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        killed = folder / "killed"
        world.fill(killed, self.home)
        after = f"after {call.name} {call.number}, {call.path}: "
        links = tracing.explore(killed, self.stage.command, self.home, folder,
                                self.stage.judge.codes)
        calls = [(link, call) for link in links for call in link.calls]
        shift = number % max(1, len(calls) // DOUBLE[1])  # not the same ones each time
        return [result for link, call in spread(calls[shift:], DOUBLE[1])
                for result in self.point(number, link, call, how, after)]


_trial = None  # of this process


def _begin(stage, folder, numbers):
    global _trial
    signal.signal(signal.SIGTERM, signal.SIG_DFL)
    _trial = Trial(stage, folder / f"home{numbers.get()}")


def _work(task):
    method, number, link, call, how = task
    try:
        return getattr(_trial, method)(number, link, call, how)
    except SystemExit as fault:
        return [Result(f"{how} at {call}", tried=False, unmended=[str(fault)])]


def judge_stage(stage, folder, options):
    exploring = folder / f"{stage.name}.links"
    exploring.mkdir()
    links = tracing.explore(stage.start, stage.command, folder / "home0", exploring)
    calls = [(link, call) for link in links for call in link.calls]
    print(f"{stage.name}: {len(links)} programs, calls that change a file: "
          + ", ".join(str(len(link.calls)) for link in links), flush=True)
    if options.errors:
        todo = [(*point, f"error={error}") for point in calls for error in ERRORS]
    else:
        todo = [(*point, "signal=KILL") for point in calls]
    counted = len(todo)
    todo = spread(todo, DOUBLE[0] if options.double and options.sample is None else options.sample)
    method = "double" if options.double else "point"
    tasks = [(method, number, *point) for number, point in enumerate(todo)]
    results, started = [], time.monotonic()
    forking = multiprocessing.get_context("fork")
    numbers = forking.Queue()
    for number in range(1, options.jobs + 1):
        numbers.put(number)
    with forking.Pool(options.jobs, _begin, (stage, folder, numbers)) as pool:
        for number, found in enumerate(pool.imap_unordered(_work, tasks), 1):
            results += found
            for result in found:
                for kind in ("lost", "torn", "unmended"):
                    for fault in getattr(result, kind):
                        print(f"{kind}: {result.what}: {fault}", flush=True)
                if not result.tried:
                    print(f"not tried: {result.what}", flush=True)
            if number % 100 == 0:
                print(f"  {number} of {len(tasks)}, {time.monotonic() - started:.0f} s", flush=True)
    return counted, len(todo), results


def main():
    parser = argparse.ArgumentParser(prog="crash_matrix.sh")
    parser.add_argument("--bin", type=Path, required=True)
    parser.add_argument("--errors", action="store_true")
    parser.add_argument("--double", action="store_true")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--stage", action="append")
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # leaves no server and no folder either
    base = Path("/dev/shm") if Path("/dev/shm").is_dir() else Path(tempfile.gettempdir())
    folder = Path(tempfile.mkdtemp(prefix="crash_matrix.", dir=base))
    is_good = True
    if options.errors:
        # Where rights cannot be set, the owner must still get those that they need.
        judge.Judge.rights = 0o700
    made = world.World(folder, options.bin.resolve())
    try:
        made.serve()
        rows = []
        for stage in stages.stages(made, folder):
            if options.stage and stage.name not in options.stage:
                continue
            counted, wanted, results = judge_stage(stage, folder, options)
            tried = sum(result.tried for result in results)
            faults = [sum(bool(getattr(result, kind)) for result in results)
                      for kind in ("lost", "torn", "unmended")]
            rows.append((stage.name, counted, len(results), tried, *faults))
            is_good = is_good and tried == len(results) >= wanted > 0 and not any(faults)
        print("{:10}{:>10}{:>10}{:>10}{:>10}{:>10}{:>12}".format(
            "stage", "points", "chosen", "tried", "lost", "torn", "not mended"))
        for row in rows:
            print("{:10}{:>10}{:>10}{:>10}{:>10}{:>10}{:>12}".format(*row))
    finally:
        made.close()
        shutil.rmtree(folder, ignore_errors=True)
    sys.exit(0 if is_good and rows else 1)


if __name__ == "__main__":
    main()
