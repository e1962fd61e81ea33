#!/usr/bin/env python3
"""Publishes sites and reads every page of them in a headless Chromium.

    site_test.py PROGRAM EVENT OTHER-EVENT   ends with 1 when something is wrong, with 77 (skipped)
                                             without a Chromium

KELTRUN2_SCREENSHOTS names a folder that gets pictures of some pages.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unicodedata
import urllib.parse
import xml.etree.ElementTree as ElementTree

from browser import Page, find_browser, wait_until

EVERYTHING = ("--charts", "all", "--courses", "--viewer")
ELSEWHERE = ("http://", "https://")  # the maker and the events' own sites: nobody goes there
SITES = [  # classic ones: name, options, what the browser calls the charset of pages and of leg pages, a word of the index
    ("japanese", ("--lang", "ja"), ("Shift_JIS", "Shift_JIS"), "成績表"),
    ("utf-8", ("--lang", "ja", "--charset", "utf-8"), ("UTF-8", "UTF-8"), "成績表"),
    ("english", ("--lang", "en"), ("Shift_JIS", "windows-1252"), "Results"),
]
LISTS = [("ja", "大会の一覧", "ダウンロード"), ("en", "Events", "To take away")]
SHOWN = ("index", "result_m21a", "lap_m21a", "legs_m21a", "chart_m21a", "viewer", "e0_report", "e0_charts")
PARTS = """({
  charset: document.characterSet,
  broken: document.documentElement.outerHTML.split('\\uFFFD').length - 1,
  text: document.body.textContent,
  links: [...document.querySelectorAll('a[href]')].map(a => a.href),
  anchors: [...document.querySelectorAll('[id], a[name]')].map(e => e.id || e.name),
  sheets: [...document.querySelectorAll('link[rel=stylesheet]')].map(e => e.href),
  pictures: [...document.images].map(i => [i.src, i.complete && i.naturalWidth > 0 ? i.naturalWidth : 0]),
})"""
failures = []


def check(what, found, expected):
    if found != expected:
        failures.append(f"{what}: {found!r}, not {expected!r}")


def check_holds(what, text, parts):
    missing = [part for part in parts if plain(part) not in plain(text)]
    check(f"{what}: missing texts", missing, [])


def plain(text):
    """Without blanks; kana, letters and digits of either width are the same."""
    return "".join(unicodedata.normalize("NFKC", text).split())


def publish(program, event, folder, *options):
    subprocess.run([program, "site", event, folder, "--quiet", *options], check=True)


def file_of(address):
    return pathlib.Path(urllib.parse.unquote(urllib.parse.urlsplit(address).path))


def is_report(file):
    return file.stem == "viewer" or file.stem.endswith("_report")


def read_page(page, file):
    ready = "document.body?.dataset.ready" if is_report(file) else "document.readyState == 'complete'"
    page.open(file.as_uri(), ready)
    page.run("document.querySelectorAll('img').forEach(picture => { picture.loading = 'eager'; })")
    wait_until(lambda: page.run("[...document.images].every(picture => picture.complete)"))
    return page.run(PARTS)


def take_picture(page, site, file):
    folder = os.environ.get("KELTRUN2_SCREENSHOTS")
    if folder and file.stem in SHOWN:
        page.screenshot(pathlib.Path(folder, f"{site}-{file.stem}.png"))


def charset_of(file, charsets):
    return "UTF-8" if is_report(file) else charsets[file.stem.startswith("legs_")]


def read_site(page, site, folder, charsets):
    """Reads every page that can be reached from the index; returns them by name."""
    pages, waiting, used, pointed = {}, [folder / "index.html"], set(), []
    while waiting:
        file = waiting.pop()
        used.add(file)
        if file.suffix != ".html" or file.name in pages or not file.is_file():
            continue
        parts = pages[file.name] = read_page(page, file)
        take_picture(page, site, file)
        name = f"{site}, {file.name}"
        check(f"{name}: charset", parts["charset"], charset_of(file, charsets))
        check(f"{name}: letters that do not decode", parts["broken"], 0)
        check(f"{name}: pictures without content", [src for src, width in parts["pictures"] if not width], [])
        inside = [href for href in parts["links"] if not href.startswith(ELSEWHERE)]
        pointed += inside
        waiting += map(file_of, inside)
        used.update(map(file_of, parts["sheets"] + [src for src, _ in parts["pictures"]]))
    check_targets(site, folder, pages, pointed, used)
    return pages


def check_targets(site, folder, pages, pointed, used):
    check(f"{site}: links to nowhere", [str(file) for file in used if not file.is_file()], [])
    check(f"{site}: links out of the folder", [str(file) for file in used if file.parent != folder], [])
    # Those of the report are its views, which its own test opens.
    fragments = [(file_of(address).name, urllib.parse.unquote(fragment)) for address in pointed
                 if (fragment := urllib.parse.urlsplit(address).fragment) and not is_report(file_of(address))]
    check(f"{site}: fragments to nowhere", [(name, anchor) for name, anchor in fragments
                                            if name in pages and anchor not in pages[name]["anchors"]], [])
    # The map has a picture and no place on the chart page.
    unused = [file.name for file in folder.iterdir() if file not in used and not file.stem.endswith("_7")]
    check(f"{site}: files that no page leads to", unused, [])


def check_names(site, pages, event):
    classes = ElementTree.parse(event).getroot().findall("classes/class")
    check_holds(f"{site}, index", pages["index.html"]["text"], [klass.get("name") for klass in classes])
    results = "".join(parts["text"] for name, parts in pages.items() if name.startswith("result_"))
    runners = [runner for klass in classes for runner in klass.iter("runner") if runner.get("result")]
    check_holds(f"{site}, result lists", results, [runner.get("name") for runner in runners])


def check_sites(page, program, event, top):
    for site, options, charsets, word in SITES:
        folder = top / site
        publish(program, event, folder, "--classic", *EVERYTHING, *options)
        pages = read_site(page, site, folder, charsets)
        check_holds(f"{site}, index", pages["index.html"]["text"], [word, "ほしの森オリエンテーリング競技会"])
        check_holds(f"{site}, analysis", pages["lap_m21a.html"]["text"], ["ﾜﾀﾅﾍﾞ", "M21A"])
        check_holds(f"{site}, viewer", pages["viewer.html"]["text"], ["ほしの森", "Tom Moreau"])
        check_names(site, pages, event)


def check_adding(page, program, events, top):
    folder = top / "added"
    for number, event in enumerate(events):
        publish(program, event, folder, "--classic", "--lang", "ja", "--add", "--prefix", f"e{number}_")
    pages = read_site(page, "added", folder, ("Shift_JIS", "Shift_JIS"))
    titles = [ElementTree.parse(event).getroot().find("event").get("name") for event in events]
    read_page(page, folder / "index.html")
    found = page.run("[...document.querySelectorAll('.t-event-name')].map(e => e.textContent)")
    check("added: newest first", list(map(plain, found)), list(map(plain, reversed(titles))))
    check("added: pages", {name[:2] for name in pages}, {"in", *(f"e{i}" for i in range(len(events)))})


def check_lists(page, program, events, top):
    """Sites of reports: the index lists the events, and everything works without scripts."""
    for language, title, take_away in LISTS:
        folder = top / f"list_{language}"
        for number, event in enumerate(events):
            publish(program, event, folder, "--add", "--prefix", f"e{number}_", "--lang", language,
                    "--charts", "all", "--courses")
        pages = read_site(page, f"list {language}", folder, ("UTF-8", "UTF-8"))
        check(f"list {language}: pages", set(pages), {"index.html", *(
            f"e{i}_{kind}.html" for i in range(len(events)) for kind in ("report", "charts"))})
        names = [ElementTree.parse(event).getroot().find("event").get("name") for event in events]
        check_holds(f"list {language}, index", pages["index.html"]["text"], [title, *names])
        for name, selector in (("index", "body"), ("e0_charts", "body"), ("e0_report", "main")):
            check_phone(page, folder / f"{name}.html", f"list {language}, {name}", f"'{selector}'")
        check_without_scripts(page, folder / "e0_report.html", take_away)


def check_phone(page, file, what, selector):
    page.resize(390, 844)
    read_page(page, file)
    check(f"{what}: overflow", page.run(f"Math.max(document.querySelector({selector}).scrollWidth - 390, 0)"), 0)
    small = page.run("""[...document.querySelectorAll('.links a, .jump a, .keltrun-events li')]
        .filter(e => e.getBoundingClientRect().height < 40).map(e => e.textContent)""")
    check(f"{what}: small targets", small, [])
    page.resize(1280, 800)


def check_without_scripts(page, file, take_away):
    page.call("Emulation.setScriptExecutionDisabled", value=True)
    page.open(file.as_uri(), "document.readyState == 'complete'")
    text = page.run("document.body.innerText")
    links = page.run("[...document.querySelectorAll('.links a')].map(a => a.getAttribute('href'))")
    page.call("Emulation.setScriptExecutionDisabled", value=False)
    check_holds(f"{file.name} without scripts", text, [take_away, "Tom Moreau", "M21A"])
    check(f"{file.name} without scripts: links", links, [
        "e0_event.lxm", "e0_results.xml", "e0_results.csv", "e0_charts.html", "index.html"])


def main():
    if not find_browser():
        print("SKIPPED: NO CHROMIUM IS INSTALLED, THE PUBLISHED SITE IS NOT TESTED", file=sys.stderr)
        return 77
    program, event, other = sys.argv[1:]
    with Page() as page, tempfile.TemporaryDirectory() as folder:
        check_sites(page, program, event, pathlib.Path(folder).resolve())
        check_adding(page, program, (event, other, event), pathlib.Path(folder).resolve())
        check_lists(page, program, (event, other), pathlib.Path(folder).resolve())
        check("console, errors, requests", page.faults, [])
    print("\n".join(failures) or "the sites can be read")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
