#!/usr/bin/env python3
"""Reads the report of examples/hoshinomori/event.lxm in a headless Chromium, on a phone and a desktop.

    report_test.py PROGRAM EVENT    ends with 1 when something is wrong, with 77 (skipped) without a Chromium

Figures are compared with those of the program's own JSON. With axe-core in report_page/node_modules
(scripts/install-packages), every view is also checked for accessibility.
"""
import base64
import json
import pathlib
import re
import subprocess
import sys
import tempfile
from xml.sax.saxutils import quoteattr

from browser import Page, find_browser, wait_until

SIZES = {"phone": (390, 844), "desktop": (1280, 900)}
AXE = pathlib.Path(__file__).resolve().parents[2] / "report_page/node_modules/axe-core/axe.min.js"
HOSTILE = "<img src=x onerror=\"document.title='broken'\"></script><script>throw 1</script>'&amp;"
VIEWS = [
    "", "class=M21A", "class=M21A&view=splits", "class=M21A&view=splits&line=loss", "class=M21A&view=splits&line=beh",
    "class=M21A&view=race", "class=M21A&view=race&chart=pos&show=all&at=12", "class=M21A&view=legs",
    "class=M21A&view=legs&sort=cost", "class=M21A&view=legs&leg=12", "class=M21A&view=legs&leg=8",
    "course=M20E/M21A", "course=M20E/M21A&view=race", "segment=62-63-F", "segment=62-63-F&view=splits",
    "segment=62-63-F&view=race", "segment=62-63-F&view=legs", "runner=31", "runner=31&ref=45&leg=13&sort=loss",
    "runner=35", "runner=26&course=M20E/M21A", "compare=", "compare=31", "compare=31,45,40", "compare=31,45",
    "compare=31,8,100", "compare=31,100,8", "compare=31,26,80", "find=", "find=ohara&with=31,8", "find=ohara", "find=zzzz", "club=銀杏OL", "help=", "help=speed",
    "class=M99", "runner=9999", "club=nobody", "view=chart&class=M21A&chart=relative&runners=3,4",
]
failures = []


def check(what, found, expected):
    if found != expected:
        failures.append(f"{what}: {found!r}, not {expected!r}")


def program(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], check=True, capture_output=True).stdout


def write_report(event, file):
    program("report", event, "-o", file, "--quiet")
    return file.as_uri()


def texts(page, selector):
    return page.run(f"[...document.querySelectorAll({json.dumps(selector)})].map(e => e.innerText.trim())")


def address(page):
    return page.run("decodeURIComponent(location.hash)")


def settled(page, hash_):
    wait_until(lambda: page.run("document.body.dataset.ready === location.hash && " + f"decodeURIComponent(location.hash) === {json.dumps(hash_)}"))


def check_view(page, url, view, name):
    """What holds in every view."""
    page.open(f"{url}#{view}")
    where = f"{name} #{view}"
    check(where + ": wider than the window", page.run("document.documentElement.scrollWidth > innerWidth"), False)
    check(where + ": headings", page.run("document.querySelectorAll('main h1').length"), 1)
    odd = re.search(r"\b(NaN|undefined|null|Infinity|\{\d\})\b", page.run("document.body.innerText"))
    check(where + ": odd text", odd and odd[0], None)
    small = page.run("""[...document.querySelectorAll('main .btn, main .chip, main .tabs a, .nav a, .round-button, main select')]
      .filter(e => e.offsetParent && e.getBoundingClientRect().height < 39.5).map(e => e.className)""")
    check(where + ": small targets", small, [])


def check_accessibility(page, where):
    # Colors are those at the end of the animation with which a view appears.
    wait_until(lambda: page.run("document.getAnimations().length === 0"))
    page.run(AXE.read_text("utf-8") + ";0")
    page.run("window.found = null; axe.run({resultTypes: ['violations']}).then(r => window.found = r.violations.map(v => `${v.id} ${v.nodes.slice(0, 3).map(n => n.target + ' ' + n.failureSummary.slice(0, 160)).join(' | ')}`)); 0")
    wait_until(lambda: page.run("window.found !== null"))
    check(where + ": accessibility", page.run("window.found"), [])


def check_all_views(page, url):
    for name, size in SIZES.items():
        page.resize(*size)
        for scheme in ("light", "dark"):
            page.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme},
                                                              {"name": "prefers-reduced-motion", "value": "reduce"}])
            for view in VIEWS:
                language = "ja" if scheme == "dark" else "en"
                check_view(page, url, f"{view}{'&' if view else ''}lang={language}", f"{name} {scheme}")
                if AXE.exists():
                    check_accessibility(page, f"{name} {scheme} #{view}")
    page.call("Emulation.setEmulatedMedia", features=[])


def time_text(seconds):
    whole = int(abs(seconds) + 0.5)
    hours, minutes = divmod(whole // 60, 60)
    return f"{hours}:{minutes:02}:{whole % 60:02}" if hours else f"{minutes}:{whole % 60:02}"


def check_figures(page, url, event):
    """Laps, ranks, elapsed times and positions in the split tables are those of the JSON."""
    page.resize(1280, 12000)  # so high that every row of a long list is there
    for analysis in json.loads(program("analyze", event, "--all", "--as", "json", "--quiet")):
        kind, name = analysis["set"]["kind"], analysis["set"]["name"]
        page.open(f"{url}#{kind}={name}&view=splits")
        wait_until(lambda: page.run("document.querySelectorAll('.splits tbody tr:not([aria-hidden])').length") == len(analysis["runners"]))
        rows = page.run("""[...document.querySelectorAll('.splits tbody tr:not([aria-hidden])')].map(row => [...row.cells].slice(2).map(cell => {
            const part = (selector) => cell.querySelector(selector)?.textContent ?? '';
            const lap = cell.querySelector(':scope > .mut') ? '' : cell.firstChild.textContent;
            return [/[0-9]/.test(lap) ? lap : '', part(':scope > sup'), cell.querySelector('small').firstChild.textContent.trim(), part('small sup')]; }))""")
        expected = [[
            [time_text(lap) if timed and not isinstance(lap, (str, type(None))) else "", str(rank or ""),
             time_text(split) if split and timed else "–", str(position or "")]
            for lap, timed, rank, split, position in zip(
                runner["lap"], analysis["general"]["timed"], runner["lapRank"], runner["modifiedSplit"], runner["splitRank"])]
            for runner in analysis["runners"]]
        check(f"rows of {name}", len(rows), len(expected))
        for runner, found, wanted in zip(analysis["runners"], rows, expected):
            check(f"splits of {runner['name']} in {name}", found, wanted)
        check_estimates(page, url, analysis)


def check_estimates(page, url, analysis):
    """The card has the speed, time lost and number of mistakes of the estimate."""
    for runner in analysis["runners"][:3]:
        estimate = runner["estimate"]
        page.open(f"{url}#runner={runner['serial']}&lang=en")
        tiles = texts(page, ".kpi .v")
        check(f"tiles of {runner['name']}", tiles[:3], [
            f"{estimate['speed'] * 100:.1f}%",
            f"{time_text(estimate['timeLost'])} {time_text(estimate['leastTimeLost'])}–{time_text(estimate['largestTimeLost'])}", str(estimate["mistakes"])])


def check_way_through(page, url):
    """From the first view to a card, comparing, and back."""
    page.resize(*SIZES["phone"])
    page.open(url + "#lang=en")
    page.run("localStorage.clear()")
    page.click_on(".hero .find")
    settled(page, "#find=")
    page.call("Input.insertText", text="ｵﾊﾗ")
    check("nobody found", "Nobody" in texts(page, ".hits-place")[0], True)
    page.run("document.querySelector('#find').value = ''")
    page.call("Input.insertText", text="o hara")
    check("found", texts(page, ".hits b")[0], "Tom O'Hara")
    check("typing is in the address", address(page), "#find=o hara")
    page.click_on(".hits a")
    settled(page, "#runner=31~Tom O'Hara")
    check("title", page.run("document.title"), "Tom O'Hara – ほしの森オリエンテーリング競技会")
    check("focus on the heading", page.run("document.activeElement.tagName"), "H1")
    page.click_on("[data-act=me]")
    check("me", page.run("document.querySelector('[data-act=me]').ariaPressed"), "true")
    check("me in the navigation", texts(page, ".nav [aria-current]"), ["Me"])
    page.click_on(".rivals .chip:nth-child(2)")
    check("a rival is in the address", "&ref=" in address(page), True)
    page.run("document.querySelector('[role=slider]').focus()")
    before = texts(page, ".explained .lead")
    page.press("ArrowLeft")
    check("another leg by key", texts(page, ".explained .lead") != before, True)
    page.click_on(".actions a")
    wait_until(lambda: page.run("document.body.dataset.ready").startswith("#compare="))
    check("compared with the rival", len(texts(page, ".compare thead th")), 3)
    page.run("history.back()")
    wait_until(lambda: page.run("document.querySelector('main').dataset.view") == "runner")
    check("back is where it was", page.run("(top => top > 0 && top < innerHeight)(document.querySelector('.actions a').getBoundingClientRect().top)"), True)
    page.click_on(".nav a:nth-child(1)")
    wait_until(lambda: page.run("document.querySelector('main').dataset.view") == "event")
    check("my card on the first view", texts(page, ".mine h3"), ["Tom O'Hara"])
    page.click_on("[data-act=menu]")
    page.click_on("dialog [data-act=language]")
    check("Japanese", [texts(page, ".nav span")[1], page.run("document.documentElement.lang")], ["クラス", "ja"])
    check_tables_stay(page, url)
    page.open(url + "#class=M21A")
    check("the language stays", texts(page, ".tabs [aria-current]"), ["成績"])
    check("my row is marked", texts(page, "tr.me .nm"), ["Tom O'Hara"])
    page.run("localStorage.clear()")


def check_tables_stay(page, url):
    """A wide table is where it was after going back, and when its second line changes."""
    place = "Math.round(document.querySelector('main .scroll').scrollLeft)"
    page.open(url + "#class=M21A&view=splits")
    page.run("document.querySelector('main .scroll').scrollTo(200, 0)")
    page.click_on("button[data-value=loss]")
    check("the table stays when its second line changes", page.run(place), 200)
    page.run("document.querySelector('.splits tbody tr:nth-child(2) a').click()")  # a click of the mouse would scroll to it
    wait_until(lambda: page.run("document.querySelector('main').dataset.view") == "runner")
    page.run("history.back()")
    wait_until(lambda: page.run("document.querySelector('main').dataset.view") == "set")
    check("back in the table where it was", page.run(place), 200)


def check_race(page, url):
    page.resize(*SIZES["desktop"])
    page.open(url + "#class=M21A&view=race&lang=en")
    check("standings at the finish", texts(page, ".standings .nm")[:2], ["ﾜﾀﾅﾍﾞ ﾋﾛｼ", "ｻｲﾄｳ ﾏｻﾄ"])
    page.run("document.querySelector('.chart').focus()")
    page.press("ArrowLeft")
    check("one control back", [" ".join(texts(page, ".card .h2")[0].split()), address(page)], ["After control 22 control 63", "#class=M21A&view=race&lang=en&at=22"])
    page.press("Home")
    check("to the first control", texts(page, ".standings .nw")[0], "2:16")
    page.open(url + "#class=M21A&view=race&at=8&lang=en")
    check("standings after an untimed leg", texts(page, ".standings .nw")[:2], ["11:09", "+1:06"])
    box = page.run("(b => [b.left, b.top, b.width, b.height])(document.querySelector('.chart').getBoundingClientRect())")
    page.click(box[0] + box[2] * 0.5, box[1] + box[3] * 0.5)
    check("moved by mouse", "&at=1" in address(page), True)


def check_dialogs(page, url):
    page.open(url + "#runner=31&lang=en")
    page.click_on(".kpi [data-help=lost]")
    check("help with a figure of the runner", "Tom O'Hara lost" in texts(page, "dialog .example")[0], True)
    page.click_on("dialog a.link")
    settled(page, "#help=lost&of=31~Tom O'Hara")
    check("dialog closed", page.run("document.querySelector('dialog').open"), False)
    check("explained first", texts(page, "main .word .h3")[0], "Time lost")
    page.click_on("[data-act=theme]")
    check("dark", page.run("getComputedStyle(document.body).backgroundColor"), "rgb(14, 20, 17)")
    page.run("localStorage.clear()")
    page.press("/")
    wait_until(lambda: page.run("document.activeElement.id") == "find")


def pages_of(pdf):
    return len(re.findall(rb"/Type\s*/Page\b", pdf))


def check_paper(page, url):
    for view, sizes, count in (("runner=31", "card", 1), ("class=M21A", "class", 1), ("", "all", None)):
        page.open(f"{url}#{view}")
        pdf = base64.b64decode(page.call("Page.printToPDF", preferCSSPageSize=True)["data"])
        boxes = set(re.findall(rb"/MediaBox\s*\[0 0 ([\d.]+) ([\d.]+)\]", pdf))
        width = min(float(box[0]) for box in boxes)
        check(f"paper of {sizes}", 410 < width < 430 if sizes == "card" else 590 < width < 600, True)
        if count:
            check(f"pages of {sizes}", pages_of(pdf), count)
        else:
            check(f"pages of {sizes}", pages_of(pdf) >= 8, True)


def check_card_of_many_legs(page, event, folder):
    """The card of a runner with 50 legs is one page, too."""
    source = pathlib.Path(event).read_text("utf-8")
    legs = lambda extra: "".join(f'<leg index="{i}" laptime="0:0{1 + i % 4}:{10 + (i * extra) % 50}"/>' for i in range(1, 51))
    runners = "".join(f'<runner name="Runner {i}" club="Club" result="2:1{i}:00" rank="{i}">{legs(7 * i)}</runner>' for i in range(1, 6))
    file = folder / "long.lxm"
    file.write_text(f'{source[:source.index("<classes>")]}<classes><class name="Long" controls="49" length="20000">{runners}</class>{source[source.index("</classes>"):]}', "utf-8")
    page.open(f"{write_report(file, folder / 'long.html')}#runner=3")
    pdf = base64.b64decode(page.call("Page.printToPDF", preferCSSPageSize=True)["data"])
    check("pages of a card with 50 legs", pages_of(pdf), 1)


def check_without_scripts(page, url):
    page.call("Emulation.setScriptExecutionDisabled", value=True)
    page.open(url, ready="document.readyState === 'complete'")
    page.call("Emulation.setScriptExecutionDisabled", value=False)
    check("podiums without scripts", "31:24" in texts(page, "main")[0], True)
    check("lists without scripts", page.run("document.querySelectorAll('noscript table').length >= 8"), True)


def check_hostile_texts(page, event, folder):
    source = pathlib.Path(event).read_text("utf-8")
    hostile = folder / "hostile.lxm"
    value = quoteattr(HOSTILE)
    source = re.sub(r'(<runner name=)"[^"]*"', lambda found: found[1] + value, source)
    source = re.sub(r'( club=| terrain=|<event name=)"[^"]*"', lambda found: found[1] + value, source)
    source = re.sub(r'<class name="M21A"', "<class name=" + value, source)
    hostile.write_text(source, "utf-8")
    url = write_report(hostile, folder / "hostile.html")
    for view in ["class=" + page.run(f"encodeURIComponent({json.dumps(HOSTILE)})"), *VIEWS]:
        page.open(f"{url}#{view}")
        check(f"hostile texts in {view}: elements", page.run("document.querySelectorAll('img, script:not([type]), main script').length"), 0)
        check(f"hostile texts in {view}: title", page.run("document.title").endswith(HOSTILE), True)
    page.open(f"{url}#find=img")
    check("hostile name is text", texts(page, ".hits b")[0], HOSTILE)


def check_endless_words(page, event, folder):
    """Names and clubs that nothing breaks leave room for the times, on a small phone and on paper."""
    source = re.sub(r'(<runner name=|<runner [^>]*? club=)"[^"]*"', lambda found: f'{found[1]}"{"W" * 90}"', pathlib.Path(event).read_text("utf-8"))
    source = re.sub(r' club="[^"]*"', f' club="{"L" * 90}"', source)
    (folder / "endless.lxm").write_text(source, "utf-8")
    url = write_report(folder / "endless.lxm", folder / "endless.html")
    outside = "[...document.querySelectorAll('{0} *')].filter(e => e.getBoundingClientRect().right > innerWidth + 1).length"
    page.resize(320, 800)
    for view in ("class=M21A", "runner=31", "find=", "find=w", "club=" + "L" * 90):
        check_view(page, url, view, "endless words")
    page.open(f"{url}#class=M21A")
    check("endless words: cells in one another", page.run("[...document.querySelectorAll('.results .cl')].filter(e => e.scrollWidth > e.clientWidth + 1).length"), 0)
    page.resize(660, 900)
    page.call("Emulation.setEmulatedMedia", media="print")
    for view in ("class=M21A", "runner=31"):
        page.open(f"{url}#{view}")
        page.run("dispatchEvent(new Event('beforeprint'))")
        check(f"endless words on the paper of {view}", page.run(outside.format("#paper")), 0)
    page.call("Emulation.setEmulatedMedia", media="")


def check_long_list(page, event, folder):
    """Of a long list only the rows near the window are in the page; scrolling and going back find the others."""
    source = pathlib.Path(event).read_text("utf-8")
    runners = re.findall(r"<runner .*?</runner>", re.search(r'<class name="M21A".*?</class>', source, re.S)[0], re.S)
    many = "".join(re.sub(r'name="[^"]*"', f'name="Runner {i:03}"', runners[i % 20]) for i in range(600))
    file = folder / "many.lxm"
    file.write_text(re.sub(r'(<class name="M21A"[^>]*>).*?(</class>)', lambda found: found[1] + many + found[2], source, count=1, flags=re.S), "utf-8")
    url = write_report(file, folder / "many.html")
    page.resize(*SIZES["phone"])
    rows = "[...document.querySelectorAll('tbody tr[aria-rowindex]')]"
    for view in ("", "&view=splits", "&view=legs&leg=3"):
        page.open(f"{url}#class=M21A{view}&lang=en")
        scrolled = "(document.querySelector('.scroll') ?? document.scrollingElement)"
        bottom = "(document.querySelector('.scroll')?.getBoundingClientRect().bottom ?? innerHeight)"
        for to, wanted in (("1e9", 601), ("0", 2), (f"{scrolled}.scrollHeight / 2", 300)):
            page.run(f"{scrolled}.scrollTop = {to}")
            wait_until(lambda: page.run(f"{rows}.some(row => Math.abs(row.ariaRowIndex - {wanted}) < {60 if wanted == 300 else 1} && row.getBoundingClientRect().top < {bottom})"))
        check(f"rows in the page {view}", page.run(f"{rows}.length < 150"), True)
    # Rows that are added above may move those below once more.
    link = "document.elementFromPoint(150, 500)?.closest('tr[aria-rowindex]')?.querySelector('a')"
    seen = []
    wait_until(lambda: seen.append(page.run(f"[{link}?.textContent, {rows}.length, scrollY].join()")) or len(seen) > 4
               and len(set(seen[-4:])) == 1 and page.run(f"{link} != null"))
    name = page.run(f"{link}.textContent")
    page.run(f"{link}.click()")
    wait_until(lambda: page.run("document.querySelector('main').dataset.view") == "runner")
    page.run("history.back()")
    wait_until(lambda: page.run(f"{link}?.textContent") == name)


def check_odd_events(page, event, folder):
    """An event of one runner, one without times, and one without laps."""
    source = pathlib.Path(event).read_text("utf-8")
    runner = re.search(r"<runner .*?</runner>", source, re.S)[0]
    klass = re.search(r"<class .*?>", source)[0]
    head = re.sub(r'(<event\b[^>]*? name=)"[^"]*"', r'\1""', source[:source.index("<classes>")])
    rest = source[source.index("</classes>"):]
    for name, runners in (("one", runner), ("none", "<runner name=\"A\" result=\"DNS\"/>"), ("empty", ""),
                          ("no laps", "<runner name=\"A\" result=\"0:31:00\" rank=\"2\"/><runner name=\"B\" result=\"0:30:00\" rank=\"1\"/>")):
        file = folder / f"{name}.lxm"
        file.write_text(f"{head}<classes>{klass}{runners}</class>{rest}", "utf-8")
        url = write_report(file, folder / f"{name}.html")
        for view in ("", "class=M20E", "class=M20E&view=splits", "class=M20E&view=race", "class=M20E&view=legs",
                     "class=M20E&view=legs&leg=1", "runner=1", "compare=1", "find=a", "help="):
            check_view(page, url, view, name)
    page.open(f"{url}#class=M20E&lang=en")
    check("title without a name", page.run("document.title"), "M20E – Untitled event")
    check("results without laps", [texts(page, ".results .nm"), texts(page, ".results .medal")], [["B", "A"], ["1", "2"]])


def main():
    if not find_browser():
        print("SKIPPED: NO CHROMIUM IS INSTALLED, THE REPORT IS NOT TESTED", file=sys.stderr)
        return 77
    if not AXE.exists():
        print("axe-core is not installed in report_page/node_modules: accessibility is not checked", file=sys.stderr)
    with Page() as page, tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        url = write_report(EVENT, folder / "report.html")
        for part in (check_way_through, check_race, check_dialogs, check_paper, check_without_scripts):
            part(page, url)
        check_figures(page, url, EVENT)
        check_long_list(page, EVENT, folder)
        check_card_of_many_legs(page, EVENT, folder)
        check_odd_events(page, EVENT, folder)
        check_hostile_texts(page, EVENT, folder)
        check_endless_words(page, EVENT, folder)
        check("console, errors, requests", page.faults, [])
        page.call("Page.setBypassCSP", enabled=AXE.exists())  # axe-core is a script from outside
        check_all_views(page, url)
        check("console, errors, requests in all views", page.faults, [])
    print("\n".join(failures) or "the report works")
    return 1 if failures else 0


if __name__ == "__main__":
    PROGRAM, EVENT = sys.argv[1:3]
    sys.exit(main())
