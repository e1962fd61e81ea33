#!/usr/bin/env python3
"""Opens result files with keltrun.html in a headless Chromium, from the disk and without a network.

    page_test.py PAGE EXAMPLES DATA PROGRAM    ends with 1 when something is wrong, with 77 (skipped) without a Chromium

EXAMPLES and DATA are the folders with events and files of other programs; PROGRAM is the command line, with
whose output what the page saves is compared.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import zipfile

from browser import Page, find_browser, wait_until

MAKE_EVENT = pathlib.Path(__file__).resolve().parents[2] / "scripts/make_event.py"
AXE = pathlib.Path(__file__).resolve().parents[2] / "report_page/node_modules/axe-core/axe.min.js"
CLASS_CARDS = "main .class-card[href^='#class=']"
SIZES = {"phone": (390, 844), "desktop": (1280, 900)}
failures = []


def check(what, found, expected):
    if found != expected:
        failures.append(f"{what}: {found!r}, not {expected!r}")


class WebPage(Page):
    """The page, with the requests of its worker among the faults."""

    def __init__(self, folder):
        self.workers, self.choosers = [], 0
        super().__init__()
        self.folder_of_downloads = folder
        self.call("Page.setDownloadBehavior", behavior="allow", downloadPath=str(folder))
        self.call("Network.emulateNetworkConditions", offline=True, latency=0, downloadThroughput=0, uploadThroughput=0)
        self.call("Target.setAutoAttach", autoAttach=True, waitForDebuggerOnStart=False, flatten=True)

    def _note(self, event):
        if event["method"] == "Target.attachedToTarget" and event["params"]["targetInfo"]["type"] == "worker":
            self.workers.append(event["params"]["sessionId"])
            for method in ("Network.enable", "Runtime.enable", "Log.enable"):
                command = {"id": 1_000_000, "method": method, "params": {}, "sessionId": self.workers[-1]}
                os.write(self.commands, json.dumps(command).encode() + b"\0")
        self.choosers += event["method"] == "Page.fileChooserOpened"
        super()._note(event)

    def start(self):
        self.open(PAGE.as_uri(), "document.body?.dataset.engine === 'ready'")

    def choose(self, *files):
        root = self.call("DOM.getDocument")["root"]
        chooser = self.call("DOM.querySelector", nodeId=root["nodeId"], selector="#chooser")
        self.call("DOM.setFileInputFiles", files=[str(file) for file in files], **chooser)

    def drop(self, *files):
        data = {"items": [], "files": [str(file) for file in files], "dragOperationsMask": 1}
        for kind in ("dragEnter", "dragOver", "drop"):
            self.call("Input.dispatchDragEvent", type=kind, x=300, y=300, data=data)

    def idle(self):
        wait_until(lambda: self.run("document.body.dataset.work === 'idle'"))

    def open_files(self, *files):
        self.choose(*files)
        wait_until(lambda: self.run("document.body.dataset.work === 'busy' || !!document.querySelector('#dialog[open], .trouble')"
                                    " || !document.body.classList.contains('empty')"))
        self.idle()

    def text(self, selector):
        return self.run(f"document.querySelector({json.dumps(selector)})?.innerText ?? null")

    def key(self, name, number, text=None):
        """Presses a key as a keyboard does, so that the browser acts on it."""
        more = {"text": text} if text else {}
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=name, code=name, windowsVirtualKeyCode=number, **more)

    def count(self, selector):
        return self.run(f"document.querySelectorAll({json.dumps(selector)}).length")

    def runners(self):
        found = re.search(r"(\d+) runners?", self.text("main .hero") or "")
        return int(found[1]) if found else None

    def press_button(self, selector):
        self.run(f"document.querySelector({json.dumps(selector)}).click(); 0")

    def save(self, form):
        """The path of what the browser saved. It drops all but ten downloads of a page within a second or so."""
        time.sleep(1.2)
        before = set(self.folder_of_downloads.iterdir())
        self.press_button("#desk-save")
        self.press_button(f"#dialog [data-form={form}]")
        new = lambda: [path for path in set(self.folder_of_downloads.iterdir()) - before if path.suffix != ".crdownload"]
        wait_until(new)
        self.idle()
        if self.run("document.getElementById('dialog').open"):
            self.press_button("#dialog [data-act=close]")
        return new()[0]


def program(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], check=True, capture_output=True).stdout


def check_accessibility(page, where):
    if not AXE.exists():
        return
    wait_until(lambda: page.run("document.getAnimations().length === 0"))
    # axe is evaluated by the protocol, which the policy of the page does not bind.
    page.run(AXE.read_text("utf-8") + ";0")
    page.run("window.found = null; axe.run({resultTypes: ['violations']}).then(r => window.found = r.violations.map(v => `${v.id} ${v.nodes[0].target} ${v.nodes[0].failureSummary.slice(0, 200)}`)); 0")
    wait_until(lambda: page.run("window.found !== null"))
    check(where + ": accessibility", page.run("window.found"), [])


def check_first_view(page):
    for name, size in SIZES.items():
        page.resize(*size)
        for scheme in ("light", "dark"):
            page.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
            page.start()
            where = f"first view, {name} {scheme}"
            check(where + ": title", page.text("h1"), "Open a result file")
            check(where + ": wider than the window", page.run("document.documentElement.scrollWidth > innerWidth"), False)
            check_accessibility(page, where)
    page.call("Emulation.setEmulatedMedia", features=[])
    page.press_button("#top button")
    check("first view in Japanese", page.text("h1"), "成績ファイルを開く")
    check_accessibility(page, "first view in Japanese")
    page.press_button("#top button")


def check_keyboard(page):
    """The keyboard alone reaches everything."""
    page.start()
    page.call("Page.setInterceptFileChooserDialog", enabled=True)
    reached = []
    for _ in range(5):
        page.key("Tab", 9)
        reached.append(page.run("document.activeElement.id || document.activeElement.tagName"))
    check("order of the first view", reached[:4], ["skip", "BUTTON", "BUTTON", "choose"])
    page.run("document.getElementById('choose').focus()")
    page.key("Enter", 13, "\r")
    wait_until(lambda: page.run("true") and page.choosers == 1)
    page.call("Page.setInterceptFileChooserDialog", enabled=False)
    page.open_files(EXAMPLES / "hoshinomori/event.lxm")
    page.run("document.getElementById('desk-save').focus()")
    page.key("Enter", 13, "\r")
    check("save by keyboard", page.run("document.getElementById('dialog').open"), True)
    page.key("Escape", 27)
    check("closed by Escape", page.run("document.getElementById('dialog').open"), False)
    check("back at the button", page.run("document.activeElement.id"), "desk-save")


def check_opening(page):
    """By choosing and by dropping; the report is that of the event, with every view."""
    page.start()
    page.open_files(EXAMPLES / "hoshinomori/event.lxm")
    event = json.loads(program("info", EXAMPLES / "hoshinomori/event.lxm", "--json"))
    check("runners", page.runners(), sum(each["runners"] for each in event["classes"]))
    check("classes", page.count(CLASS_CARDS), len(event["classes"]))
    check("remarks button", page.count("#desk-remarks"), 1)
    for size in SIZES.values():
        page.resize(*size)
        page.run("location.hash = ''")
        check(f"{size}: wider than the window", page.run("document.documentElement.scrollWidth > innerWidth"), False)
        check_accessibility(page, f"report {size}")
        page.press_button("#desk-save")
        check_accessibility(page, f"save {size}")
        page.press_button("#dialog [data-act=close]")
    page.run("location.hash = '#class=M21A&view=splits'")
    wait_until(lambda: page.count(".splits tbody tr") > 0)
    page.start()
    page.drop(EXAMPLES / "midorigaoka/event.lxm")
    wait_until(lambda: not page.run("document.body.classList.contains('empty')"))
    page.idle()
    check("dropped", page.text("#desk .file"), "event.lxm")


def check_every_format(page):
    """Files of other programs are read as the program reads them."""
    for file in sorted(FOREIGN.rglob("*")):
        if file.suffix == ".json" or not file.is_file() or file.stat().st_size == 0:
            continue
        native = subprocess.run([PROGRAM, "info", str(file), "--json"], capture_output=True)
        page.start()
        page.open_files(file)
        opened = not page.run("document.body.classList.contains('empty')")
        check(f"{file.name} is opened", opened, native.returncode == 0)
        if opened and native.returncode == 0:
            check(f"{file.name}: runners", page.runners(), sum(each["runners"] for each in json.loads(native.stdout)["classes"]))
            check(f"{file.name}: has a heading", bool(page.text("main h1")), True)


def check_trouble(page, folder):
    """Wrong and damaged files: a sentence, and what is open stays open."""
    text = folder / "notes.txt"
    text.write_text("Notes of the last meeting\n", "utf-8")
    cut = folder / "cut.lxm"
    cut.write_bytes((EXAMPLES / "hoshinomori/event.lxm").read_bytes()[:20000])
    page.start()
    for file in (text, cut):
        page.open_files(file)
        check(f"{file.name}: message names it", file.name in (page.text(".trouble") or ""), True)
        check(f"{file.name}: nothing is open", page.run("document.body.classList.contains('empty')"), True)
    # Beside a good file, each bad one is still named.
    page.choose(text, cut, EXAMPLES / "hoshinomori/event.lxm")
    wait_until(lambda: page.count("#dialog[open] .trouble"))
    for file in (text, cut):
        check(f"{file.name} beside a good file", file.name in page.text("#dialog .trouble"), True)
    page.press_button("#dialog [data-act=close]")
    runners = page.runners()
    page.choose(cut)
    wait_until(lambda: page.count("#as-other"))
    page.press_button("#as-other")
    wait_until(lambda: page.count("#dialog .trouble"))
    page.idle()
    check("message beside an event", "cut.lxm" in page.text("#dialog .trouble"), True)
    page.press_button("#dialog [data-act=close]")
    check("the event stays", page.runners(), runners)
    check("one file", page.count("#shown-file"), 0)


def check_two_files(page):
    """Beside each other, and merged."""
    page.start()
    page.open_files(EXAMPLES / "hoshinomori/event.lxm")
    first = page.runners()
    page.choose(EXAMPLES / "midorigaoka/event.lxm")
    wait_until(lambda: page.count("#as-other"))
    check_accessibility(page, "question")
    page.press_button("#as-other")
    wait_until(lambda: page.count("#shown-file"))
    page.idle()
    second = page.runners()
    page.run("const list = document.getElementById('shown-file'); list.value = '0'; list.dispatchEvent(new Event('change', {bubbles: true})); 0")
    check("the first one again", page.runners(), first)
    page.choose(EXAMPLES / "midorigaoka/event.lxm")
    wait_until(lambda: page.count("#as-more"))
    page.press_button("#as-more")
    wait_until(lambda: page.runners() != first)
    page.idle()
    merged = program("merge", EXAMPLES / "hoshinomori/event.lxm", EXAMPLES / "midorigaoka/event.lxm", "-o", page.folder_of_downloads / "merged.lxm",
                     "--match", "name", "--prefer", "new", "--quiet")
    check("program's merge", merged, b"")
    event = json.loads(program("info", page.folder_of_downloads / "merged.lxm", "--json"))
    check("merged", page.runners(), sum(each["runners"] for each in event["classes"]))
    page.press_button("#desk-close")
    check("the other one stays", page.runners(), second)
    # Several at once: the first is opened, and the page asks about the rest.
    page.start()
    page.choose(EXAMPLES / "hoshinomori/event.lxm", EXAMPLES / "midorigaoka/event.lxm")
    wait_until(lambda: page.count("#as-other"))
    check("several at once", page.runners(), first)


def classes_of(file):
    return [(each["name"], each["runners"]) for each in json.loads(program("info", file, "--json"))["classes"]]


def check_saving(page):
    """What is saved is what the program writes, and can be opened again."""
    event = EXAMPLES / "hoshinomori/event.lxm"
    page.start()
    page.open_files(event)
    names = [name for name, _ in classes_of(event)]
    for form in ("lxm", "iof3", "iof2", "splitsbrowser", "winsplits", "oe2010"):
        file = page.save(form)
        check(f"saved {form}: classes", [name for name, _ in classes_of(file) if name in names], names)
        if form == "lxm":
            check("saved lxm: runners", classes_of(file), classes_of(event))
    table = page.save("results-csv")
    check("result table", table.read_bytes(), program("results", event, "--as", "csv", "--lang", "en"))
    check("analyses", len(json.loads(page.save("analyze-json").read_text("utf-8"))),
          len(json.loads(program("analyze", event, "--all", "--as", "json"))))
    check("laps", len(page.save("analyze-tidy-csv").read_text("utf-8").splitlines()) > 1000, True)
    site = page.save("site")
    with zipfile.ZipFile(site) as archive:
        check("site", archive.namelist(), ["index.html", "event.lxm", "results.xml", "results.csv"])
        check("site is whole", archive.testzip(), None)
        page_of_site = archive.read("index.html").decode()
        check("site: files that are not linked",
              [name for name in archive.namelist()[1:] if f'href="{name}"' not in page_of_site], [])
    report = page.save("report")
    check("report", report.read_bytes(), program("report", event, "--lang", "en"))
    page.open(report.as_uri())
    check("saved report", page.text("main h1"), json.loads(program("info", event, "--json"))["event"]["name"])
    # And the saved page opens again in the page itself.
    page.start()
    page.open_files(site.parent / "event.lxm")
    check("lap file again", page.count(CLASS_CARDS), len(names))


def check_large(page, folder):
    """The page stays alive while the library works."""
    large = folder / "large.lxm"
    subprocess.run([sys.executable, MAKE_EVENT, "--classes", "20", "--runners-per-class", "100", "--controls", "20", "--seed", "1",
                    "--out", str(large)], check=True, stdout=subprocess.DEVNULL)
    page.start()
    page.run("window.beats = 0; setInterval(() => { if (document.body.dataset.work === 'busy') ++window.beats; }, 10); 0")
    page.open_files(large)
    check("runners of a large event", page.runners(), sum(number for _, number in classes_of(large)))
    check("the page was alive", page.run("window.beats") > 5, True)


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        downloads = folder / "downloads"
        downloads.mkdir()
        with WebPage(downloads) as page:
            page.resize(1280, 900)
            check_first_view(page)
            check_keyboard(page)
            check_opening(page)
            check_trouble(page, folder)
            check_two_files(page)
            check_saving(page)
            check_every_format(page)
            check_large(page, folder)
            check("the worker was watched", len(page.workers) > 0, True)
            check("messages, errors and requests", page.faults, [])
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    if find_browser() is None:
        sys.exit(77)
    PAGE, EXAMPLES, DATA = (pathlib.Path(each).resolve() for each in sys.argv[1:4])
    FOREIGN = DATA / "foreign"
    PROGRAM = sys.argv[4]
    sys.exit(main())
