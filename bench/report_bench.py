#!/usr/bin/env python3
"""How long the report takes to show itself and to scroll, in a headless Chromium slowed down four times.

    report_bench.py PROGRAM EVENT CLASS    prints a JSON object of the figures below

Times are of the page's own clock, in milliseconds from the start of the navigation:

- paint: the first frame with contents, which the browser reports itself
- event, results, splits, race: the frame after the one in which the view is complete and answers
- scroll: the longest time that the page was not able to answer while its longest lists were
  scrolled through, from the browser's long-task entries; 0 when there was none of 50 ms

and packed: the size of the file in bytes, packed by gzip. Times are medians of three runs, each in a
browser of its own, because the browser's garbage collector adds to single ones. Prints nothing
without a Chromium.
"""
import gzip
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / 'tests' / 'browser'))
from browser import Page, find_browser  # noqa: E402

SLOWED = 4
RUNS = 3
VIEWS = {'event': '', 'results': 'class=%s', 'splits': 'class=%s&view=splits', 'race': 'class=%s&view=race&show=all'}
OBSERVER = """
new MutationObserver(() => document.body?.dataset.ready && !window.openedAfter &&
  requestAnimationFrame(() => requestAnimationFrame(() => window.openedAfter ??= performance.now())))
  .observe(document, {subtree: true, attributes: true, attributeFilter: ['data-ready']});
"""
# Scrolls by two thirds of a screen in every other frame, as a thumb does that is in a hurry, and
# resolves with the longest task meanwhile.
SCROLL = """
window.longest = null;
(async () => {
  const tasks = [];
  const observer = new PerformanceObserver((list) => tasks.push(...list.getEntries()));
  observer.observe({type: 'longtask'});
  const place = document.querySelector('.scroll') ?? document.scrollingElement;
  const frame = () => new Promise(requestAnimationFrame);
  for (let last = -1, still = 0; still < 10;) {
    place.scrollBy(0, innerHeight * 2 / 3);
    await frame();
    await frame();
    still = place.scrollTop === last ? still + 1 : 0;
    last = place.scrollTop;
  }
  tasks.push(...observer.takeRecords());
  window.longest = Math.max(0, ...tasks.map((task) => task.duration));
})(); 0
"""


def opened(page, url):
    page.open(url, 'window.openedAfter')
    return page.run('window.openedAfter')


def longest_task(page):
    page.run(SCROLL)
    while page.run('window.longest') is None:
        time.sleep(0.1)
    return page.run('window.longest')


def measure(page, url, class_name):
    page.call('Page.addScriptToEvaluateOnNewDocument', source=OBSERVER)
    page.resize(390, 844)
    page.call('Emulation.setCPUThrottlingRate', rate=SLOWED)
    time.sleep(2)  # the browser's own start is over
    measured = {'scroll': 0}
    for view, address in VIEWS.items():
        measured[view] = opened(page, url + '#' + (address % class_name if address else ''))
        if view == 'event':
            measured['paint'] = page.run("performance.getEntriesByName('first-contentful-paint')[0].startTime")
        measured['scroll'] = max(measured['scroll'], longest_task(page))
    assert not page.faults, page.faults
    return measured


def measure_in_new_browser(url, class_name):
    with Page() as page:
        return measure(page, url, class_name)


def main():
    program, event, class_name = sys.argv[1:]
    if not find_browser():
        return
    with tempfile.TemporaryDirectory() as folder:
        report = pathlib.Path(folder) / 'report.html'
        subprocess.run([program, 'report', event, '-o', str(report), '--quiet'], check=True)
        runs = [measure_in_new_browser(report.as_uri(), class_name) for _ in range(RUNS)]
        measured = {figure: statistics.median(run[figure] for run in runs) for figure in runs[0]}
        measured['packed'] = len(gzip.compress(report.read_bytes()))
        print(json.dumps(measured))


if __name__ == '__main__':
    main()
