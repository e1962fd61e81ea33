#!/usr/bin/env python3
"""How long the report takes to open in a headless Chromium.

    viewer_bench.py PROGRAM EVENT CLASS    prints milliseconds for the split table and the line chart

Measured by the page's own clock, from the start of the navigation to the frame after the one that shows
the data. Prints nothing without a Chromium.
"""
import json
import pathlib
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / 'tests' / 'browser'))
from browser import Page, find_browser  # noqa: E402

OBSERVER = """
new MutationObserver(() => document.body?.dataset.ready && !window.openedAfter &&
  requestAnimationFrame(() => requestAnimationFrame(() => window.openedAfter ??= performance.now())))
  .observe(document, {subtree: true, attributes: true, attributeFilter: ['data-ready']});
"""


def main():
    program, event, class_name = sys.argv[1:]
    if not find_browser():
        return
    with tempfile.TemporaryDirectory() as site, Page() as page:
        subprocess.run([program, 'site', event, site, '--viewer', '--no-legs', '--quiet'], check=True)
        page.call('Page.addScriptToEvaluateOnNewDocument', source=OBSERVER)
        time.sleep(2)  # the browser's own start is over
        measured = {}
        for view, chosen in (('table', '&view=splits'), ('chart', '&view=race')):
            page.open('file://%s/viewer.html#class=%s%s' % (site, class_name, chosen), 'window.openedAfter')
            measured[view] = page.run('window.openedAfter')
        assert not page.faults, page.faults
        print(json.dumps(measured))


if __name__ == '__main__':
    main()
