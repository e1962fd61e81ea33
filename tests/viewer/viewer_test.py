#!/usr/bin/env python3
"""Works the viewer page of examples/hoshinomori/event.lxm in a headless Chromium.

    viewer_test.py PAGE     ends with 1 when something is wrong, with 77 (skipped) without a Chromium

The expected figures are those of the event file: in class M21A the winner (serial 35) has the laps 153,
94, 82 ... seconds, the second (serial 26) 151, 128, 106 ...
"""
import base64
import gzip
import json
import pathlib
import re
import sys
import tempfile

from browser import Page, find_browser, wait_until

WINNER = "ﾜﾀﾅﾍﾞ ﾋﾛｼ"
HOSTILE = "<img src=x onerror=\"document.title='broken'\"></script><script>throw 1</script>'&amp;"
failures = []


def check(what, found, expected):
    if found != expected:
        failures.append(f"{what}: {found!r}, not {expected!r}")


def texts(page, selector):
    return page.run(f"[...document.querySelectorAll({json.dumps(selector)})].map(e => e.innerText)")


def address(page):
    return page.run("decodeURIComponent(location.hash)")


def point_of_line(page, color, control):
    """The point in the window at which the line of a color passes a control."""
    return page.run(f"""(() => {{
      const path = document.querySelector('#canvas path.{color}:not(.gap)');
      const [x, y] = path.getAttribute('d').slice(1).split(/[ML]/)[{control}].split(' ').map(Number);
      const box = document.querySelector('#canvas svg').getBoundingClientRect();
      return [box.left + x, box.top + y]; }})()""")


def check_table(page, url):
    page.open(url + "#class=M21A")
    first = "#splits tbody tr:first-child "
    check("winner", texts(page, first + ".pick, " + first + ".result"), [WINNER, "0:33:30"])
    check("laps and splits", [text.split() for text in texts(page, first + "td.leg")[:3]],
          [["2:33", "5", "2:33", "5"], ["1:34", "1", "4:07", "1"], ["1:22", "1", "5:29", "1"]])
    check("ranks colored", "1:34" in texts(page, first + "td.leg b.r1"), True)
    check("losses shaded", len(texts(page, "#splits td.l4")) > 0, True)
    page.click_on("[data-sort=lap4]")
    check("sorted by a lap", [text[:4] for text in texts(page, "td:nth-child(11)")][1:3], ["1:12", "1:12"])
    page.click_on("[data-sort=lap4]")
    check("address of the sort", address(page), "#class=M21A&sort=-lap4")
    page.click_on("#search")
    page.call("Input.insertText", text="わたなべ")  # kana of another kind and width
    check("search", texts(page, "#splits tbody .pick"), [WINNER])
    page.click_on("#splits tbody .pick")
    check("selected in the table", "runners=35" in address(page).split("&"), True)
    page.run("document.querySelector('#table-view').scrollLeft = 500")
    check("the name stays", page.run("document.querySelector('td.rank').getBoundingClientRect().left"), 17)


def check_line_chart(page, url):
    page.open(url + "#class=M21A&chart=normal&runners=35,26")
    page.mouse("mouseMoved", *point_of_line(page, "c1", 2))
    tip = texts(page, "#tip")[0].split("\n")
    check("tip", [*tip[:2], *(line for line in tip if "(" in line)],
          ["ｻｲﾄｳ ﾏｻﾄ", "銀杏OL · 0:36:23 · 2 位", "2:08 (3)", "4:39 (4)"])
    page.mouse("mouseMoved", 5, 5)
    check("no tip outside", texts(page, "#tip:not([hidden])"), [])
    page.click(*point_of_line(page, "c1", 2))
    check("a click deselects", address(page), "#class=M21A&chart=normal&runners=35")
    page.open(url + "#class=M21A&chart=relative&runners=26&ref=35")
    page.mouse("mouseMoved", *point_of_line(page, "c0", 2))
    check("behind the reference runner", texts(page, "#tip dd")[-1], "+0:32")  # 4:39 - 4:07
    page.run("document.querySelector('#canvas').focus()")
    page.press("ArrowRight")
    check("the next leg by key", texts(page, "#tip dd")[2].split()[0], "6:25")
    page.press("Enter")
    check("deselected by key", address(page), "#class=M21A&chart=relative&ref=35")


def check_marks(page, url):
    for chart in ("loss", "half", "map"):
        page.open(f"{url}#class=M21A&chart={chart}")
        page.click_on("#canvas .mark.c1")
        check(f"{chart}: tip, click", [*texts(page, "#tip b"), address(page)],
              ["ｻｲﾄｳ ﾏｻﾄ", f"#class=M21A&chart={chart}&runners=26"])


def check_links(page, url):
    page.open(url + "#course=M20E/M21A&view=chart&lang=en")
    check("course in English", texts(page, "h2, .tabs [data-view=chart]"), ["Charts", "M20E/M21A"])
    page.run("location.hash = '#class=男子Ｂ'")
    wait_until(lambda: page.run("document.body.dataset.ready") == "class=男子Ｂ")
    check("followed link", texts(page, "h2"), ["男子Ｂ"])
    page.open(url + "#class=M99")
    check("unknown class", "M99" in texts(page, "#notice")[0], True)
    page.click_on("#language")
    check("language", address(page), "#class=M20E&lang=en")
    page.resize(390, 800)
    for view in ("", "#chart=relative"):
        page.open(url + view)
        check("nothing wider than a phone", page.run("document.documentElement.scrollWidth"), 390)
    page.resize(1280, 800)


def spoiled(block):  # a data block, with HTML in its texts
    data = json.loads(gzip.decompress(base64.b64decode(block[2])))
    for holder in (data["event"], data["set"], *data["runners"]):
        holder.update({key: HOSTILE for key in holder.keys() & {"name", "club", "rank", "class"}})
    return block[1] + base64.b64encode(gzip.compress(json.dumps(data).encode())).decode()


def check_hostile_texts(page, source, folder):
    file = pathlib.Path(folder, "hostile.html")
    file.write_text(re.sub(r'(<script type="application/gzip"[^>]*>)([^<]*)', spoiled, source), "utf-8")
    for view in ("", "#chart=relative", "#chart=loss"):
        page.open(file.as_uri() + view)
        page.click_on(".pick")
        check("hostile name is text", texts(page, "h2"), [HOSTILE])
        check("no elements from data", texts(page, "img, main script, header script"), [])


def main():
    if not find_browser():
        print("SKIPPED: NO CHROMIUM IS INSTALLED, THE VIEWER PAGE IS NOT TESTED", file=sys.stderr)
        return 77
    page_file = pathlib.Path(sys.argv[1]).resolve()
    with Page() as page, tempfile.TemporaryDirectory() as folder:
        for part in (check_table, check_line_chart, check_marks, check_links):
            part(page, page_file.as_uri())
        check_hostile_texts(page, page_file.read_text("utf-8"), folder)
        check("console, errors, requests", page.faults, [])
    print("\n".join(failures) or "the viewer page works")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
