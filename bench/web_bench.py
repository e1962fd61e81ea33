#!/usr/bin/env python3
"""The figures of keltrun.html, each with its goal, in a headless Chromium.

    web_bench.py PAGE EVENT [ROUNDS]    EVENT: a lap file of 2,000 runners

The time goes from the choice of the file to the frame after the one that shows the event; the median of the
rounds. The processor time is that of all threads of the page's process; on a busy machine it is the better
measure. The memory is what the browser's process of the page holds by itself (anonymous memory) at most while
it opens the event.
"""
import gzip
import os
import pathlib
import statistics
import sys
import tempfile
import threading
import time

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent.parent / "tests" / each) for each in ("browser", "web")]
import page_test  # noqa: E402
from browser import find_browser  # noqa: E402

SIZE_GOAL, TIME_GOAL, MEMORY_GOAL = 600_000, 800, 200  # bytes, ms, MB
WATCH = """
document.getElementById('chooser').addEventListener('change', () => { window.chosenAt = performance.now(); }, {capture: true});
new MutationObserver(() => requestAnimationFrame(() => requestAnimationFrame(() => window.shownAfter ??= performance.now() - chosenAt)))
  .observe(document.body, {attributes: true, attributeFilter: ['data-ready']}); 0
"""


def renderers():
    """The numbers of the processes of pages."""
    for folder in pathlib.Path("/proc").iterdir():
        if not folder.name.isdigit():
            continue
        try:
            if b"--type=renderer" in (folder / "cmdline").read_bytes():
                yield folder
        except OSError:
            pass


def own_memory(folder):
    try:
        for line in (folder / "smaps_rollup").read_text().splitlines():
            if line.startswith("Anonymous:"):
                return int(line.split()[1]) / 1000
    except OSError:
        pass
    return 0


def processor_time(others):
    """Milliseconds that the page's processes have used so far."""
    ticks = 0
    for folder in renderers():
        if folder not in others:
            try:
                fields = (folder / "stat").read_text().rsplit(")", 1)[1].split()
                ticks += int(fields[11]) + int(fields[12])
            except OSError:
                pass
    return ticks * 1000 / os.sysconf("SC_CLK_TCK")


class Memory(threading.Thread):
    """Looks for the largest memory of a page's process until it is told to stop."""

    def __init__(self, before):
        super().__init__()
        self.most, self.done, self.before = 0, False, before

    def run(self):
        while not self.done:
            self.most = max([self.most, *(own_memory(each) for each in renderers() if each not in self.before)])
            time.sleep(0.05)


def main():
    page_test.PAGE, event = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    if not find_browser():
        sys.exit("there is no Chromium")
    size = len(gzip.compress(page_test.PAGE.read_bytes(), 9))
    others = set(renderers())
    times, processor_times = [], []
    with tempfile.TemporaryDirectory() as downloads, page_test.WebPage(pathlib.Path(downloads)) as page:
        for number in range(rounds + 1):
            page.start()
            time.sleep(1)  # the browser's own work after a start is over
            page.run(WATCH)
            memory = Memory(others) if number == 0 else None  # watching slows down
            if memory:
                memory.start()
            before = processor_time(others)
            page.open_files(event)
            page_test.wait_until(lambda: page.run("window.shownAfter"))
            if memory:
                memory.done = True
                memory.join()
                most = memory.most
            else:
                times.append(page.run("window.shownAfter"))
                processor_times.append(processor_time(others) - before)
    for name, value, goal, unit in (("size, gzipped", size / 1000, SIZE_GOAL / 1000, "KB"),
                                    ("file to first view", statistics.median(times), TIME_GOAL, "ms"),
                                    ("processor time", statistics.median(processor_times), float("inf"), "ms"),
                                    ("memory", most, MEMORY_GOAL, "MB")):
        wanted = f"at most {goal:.0f} {unit}  {'met' if value <= goal else 'MISSED'}" if goal < float("inf") else ""
        print(f"{name:20} {value:8.0f} {unit}  {wanted}")


if __name__ == "__main__":
    main()
