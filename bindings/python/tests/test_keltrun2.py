"""The object model from Python: what Python adds to it, and that every part is reachable."""
import ast
import concurrent.futures
import datetime
import gc
import inspect
import os
import pathlib
import re
import subprocess
import sys
import weakref

import pytest

import keltrun2 as kr
import make_docs
from conftest import PROJECT


def test_loads_merges_and_saves(root, event, tmp_path):
    def count():
        return sum(root.ClassData(i).LapCount for i in range(1, root.ClassCount + 1))

    before = count()
    mode = kr.KR_LOADMODE_MERGE_NAME | kr.KR_LOADMODE_NOTADD_NEWDATA
    assert root.FileControl.LoadLapFile(event, LoadMode=mode)
    assert count() == before
    saved = tmp_path / "event.lap"
    assert root.FileControl.SaveLapFile(str(saved))
    assert saved.read_bytes().startswith(b"$LAPFILE")
    assert any(remark.Text.startswith("courses") for remark in root.FileControl.SaveRemarks)


def test_files_and_rows_for_other_programs(root, event, tmp_path):
    assert root.FileControl.LoadLapFile(event)
    runners = [runner for klass in root.classes for runner in klass]
    names = sorted(runner.RunnerName for runner in runners)
    rows = kr.result_rows(root, splits=True)
    assert sorted(row["name"] for row in rows) == names and "split1" in rows[0]
    laps = kr.lap_rows(root, ["M21A"])
    assert {row["class"] for row in laps} == {"M21A"} and float(laps[0]["lap_s"]) > 0
    for form in ("iof3", "iof2", "oe2010"):
        saved = str(tmp_path / form)
        assert kr.save(root, saved, format=form) and root.FileControl.OutputCharset == ""
        read = kr.clsKeltrun2()  # the youngest root, until it is gone
        assert kr.load(read, saved), read.ErrorComment
        assert len([runner for klass in read.classes for runner in klass]) == len(runners)
        del read
    with pytest.raises(ValueError, match="splitsbrowser"):
        kr.save(root, str(tmp_path / "x"), format="xls")
    assert root.TextControl.EncodeText("ä", "windows-1252") == b"\xe4"


def test_estimates_of_the_event(root, event):
    assert root.FileControl.LoadLapFile(event)
    estimate = root.NewEstimate()
    klass = estimate.ClassData("M21A")
    assert [k.ClassName for k in estimate.classes] == [k.ClassName for k in root.classes]
    assert not klass.IsTimed(8) and root.NewEstimate("none").ClassData("M21A").IsTimed(8)
    assert len(klass) == klass.Count == root.ClassData("M21A").LapCount
    mistakes = {(runner.SerialNum, leg) for runner in klass
                for leg in range(1, klass.LegCount + 1) if runner.IsMistake(leg)}
    assert len(mistakes) == sum(runner.MistakeCount for runner in klass) > 20
    for serial, leg in mistakes:
        runner = estimate.RunnerData(serial)
        assert runner.MistakeWord(leg) in (kr.MistakeWord.kLikely, kr.MistakeWord.kSure)
        assert runner.LeastLoss(leg) < runner.Loss(leg) < runner.LargestLoss(leg)
    assert kr.MistakeWordName(kr.MistakeWord.kSure) == "sure"
    text = root.TextControl
    assert text.OutputEstimateCsv(estimate, "M21A").count("\n") > 400
    assert text.OutputEstimateText(estimate, "M21A").count("* M21A") == len(klass)
    analyzer = root.NewAnalyzer
    analyzer.UntimedLegs = "auto"
    analyzer.AddClass("M21A")
    analyzer.Execute()
    assert not analyzer.GeneralData.IsTimed(15)
    assert '"mistakeChance"' in text.OutputJson(analyzer, Estimate=estimate)
    assert "leg 80-81 is untimed" in root.EventRemarks()[0]
    assert root.ShiftClock(73, 40.0) > 100
    assert root.EventRemarks()[0].startswith("the clock of control 73 was corrected by +40 s")
    with pytest.raises(kr.AutomationError):
        analyzer.UntimedLegs = "some"


def test_merge_is_the_programs(root, tmp_path):
    def lap_file(name, **runners):
        lines = "".join(f'<runner name="{runner}" result="{result}" rank="{rank}"/>'
                        for runner, (result, rank) in runners.items())
        path = tmp_path / name
        path.write_text(f'<keltrun><classes><class name="M">{lines}</class></classes></keltrun>')
        return str(path)

    def ranks():
        runners = (root.ClassData("M").LapData(i) for i in range(1, root.ClassData("M").LapCount + 1))
        return {runner.RunnerName: runner.Rank for runner in runners}

    event = lap_file("event.lxm", A=("0:10:00", "1"))
    late = lap_file("late.lxm", a=("0:11:00", ""), L=("0:09:00", ""))
    for options, expected in (
        ({}, {"A": "2", "L": "1"}),
        ({"prefer": "new"}, {"a": "2", "L": "1"}),
        ({"known_only": True}, {"A": "1"}),
        ({"match": "none"}, {"A": "2", "L": "1", "a": "3"}),
        ({"renew_ranks": False}, {"A": "1", "L": ""}),
    ):
        assert root.FileControl.LoadLapFile(event)
        assert kr.merge(root, late, **options)
        assert ranks() == expected, options
    assert root.FileControl.RenewRanks is False
    assert not kr.merge(root, "missing.lxm")
    with pytest.raises(ValueError, match="name, id, none"):
        kr.merge(root, late, match="club")


def test_what_a_load_says(root, tmp_path):
    (tmp_path / "bad.lxm").write_text("<keltrun><class")
    assert not root.FileControl.LoadLapFile(str(tmp_path / "bad.lxm"))
    assert "bad.lxm" in root.ErrorComment
    root.FileControl.LoadLapFile("x.txt", kr.KR_FILETYPE_IMPORT_ONLY, kr.KR_LOADMODE_MERGE_NAME,
                                 "$IMPORT_ONLY\nname,class\n,M21A\n")
    remark = root.FileControl.LoadRemarks[-1]
    assert (remark.Line, remark.Severity) == (3, kr.RemarkSeverity.kWarning)
    assert "names no runner" in remark.Text
    (tmp_path / "list.csv").write_bytes(b"CLASS,NAME,TIME\r\nA,J\xf6rg,9:00\r\nA,Ann,9:01\r\n")
    for charset, remarks in (("", 1), ("windows-1252", 0)):
        root.FileControl.InputCharset = charset
        assert root.FileControl.LoadLapFile(str(tmp_path / "list.csv"))
        assert root.ClassData(1).LapData(1).RunnerName == "Jörg"
        assert len(root.FileControl.LoadRemarks) == remarks


def test_progress_handlers(root, event):
    seen = []
    handle = root.FileControl.OnProgress(seen.append)
    assert root.FileControl.LoadLapFile(event)
    assert seen[0] == 0 and seen[-1] == 100
    handle.Detach()
    seen.clear()

    def stop(percent):
        raise KeyboardInterrupt(percent)

    root.FileControl.OnProgress(stop)
    with pytest.raises(KeyboardInterrupt):
        root.FileControl.LoadLapFile(event)
    assert seen == []


def test_errors_have_numbers(root, analyzer):
    for call, number in (
        (lambda: analyzer.Item(1).LapTime(52), 9),
        (lambda: root.SegmentData(10_000), 9),
        (lambda: root.RenameClass(root.ClassData(1).ClassName, root.ClassData(2).ClassName), 457),
        (lambda: root.HtmlControl.OutputAnalysis(None), 91),
        (lambda: kr.SetStartup(Language="en"), 5),
    ):
        with pytest.raises(kr.AutomationError) as raised:
            call()
        assert raised.value.Number == number
    assert root.ClassData("no such class") is None


def test_days_and_pythons_own_times():
    hour = datetime.timedelta(hours=1, seconds=2)
    assert kr.to_timedelta(kr.from_timedelta(hour)) == hour
    assert kr.from_timedelta(hour) == 3602 / 86400
    for marker in (kr.KR_TIME_NODATA, kr.KR_TIME_SKIP, kr.KR_TIME_DISQ):
        assert kr.to_timedelta(float(int(marker))) is None
    day = datetime.datetime(2024, 2, 29, 10, 30)
    assert kr.from_datetime(day) == 45351.4375
    assert kr.to_datetime(45351.4375) == day
    assert kr.to_datetime(0) is None


def test_analysis_and_its_outputs(root, analyzer):
    analyzer.ExtraAnalyze()
    analyzer.Vesmer()
    finishers = [analyzer.Item(i) for i in range(1, analyzer.Count + 1)]
    assert finishers[0].Rank == "1"
    widest = max(max(abs(f.VesmerX), abs(f.VesmerY)) for f in finishers)
    assert widest == pytest.approx(100)
    assert analyzer.GeneralData.LegDifficulty(1).Value > 0
    page = root.HtmlControl.OutputAnalysis(analyzer, Encoding="utf-8")
    assert "charset=utf-8" in page and finishers[0].Result in page
    viewer = root.HtmlControl.OutputViewer([kr.ViewerSet(analyzer, kr.DataSetKind.kClass)])
    assert viewer.startswith("<!DOCTYPE html>") and "DecompressionStream" in viewer
    assert root.TextControl.OutputJson(analyzer).startswith("{")
    assert root.TextControl.OutputCsvSplitsBrowser(analyzer).count("\r\n") > analyzer.Count
    results = root.NewResultsHolder
    results.AddClass("M21A")
    results.CalcRank()
    assert results.RankInDataSet(1) == "1"
    assert results.Item(1).RunnerName == finishers[0].RunnerName


def named(number):
    runner = kr.clsLapData()
    runner.RunnerName = f"R{number}"
    return runner


def sequences():
    """Sequences of three items, with the items as the component counts them, from 1."""
    root = kr.clsKeltrun2()
    klass, course = root.AddClass("M"), root.AddCourse(1)
    analyzer, results = root.NewAnalyzer, root.NewResultsHolder
    course.ControlCount = 3
    for i in (1, 2, 3):
        runner = named(i)
        runner.SetLap(1, i / 86400)
        runner.Result = f"0:00:0{i}"
        klass.AddLapObject(runner)
        course.SetControlNum(i, 30 + i)
    analyzer.AddClass(1)
    analyzer.Execute()
    results.AddClass(1)
    for sequence, at in (klass, klass.LapData), (course, course.ControlNum), (
            analyzer, analyzer.Item), (results, results.Item):
        yield sequence, [at(i) for i in (1, 2, 3)]


def test_what_is_counted_is_a_sequence():
    for sequence, items in sequences():
        assert len(sequence) == 3 and list(sequence) == items
        for index in (0, 2, -1, -3):
            assert sequence[index] == items[index]
        for part in (slice(1, None), slice(None, None, -2), slice(5, 9)):
            assert sequence[part] == items[part]
        assert items[1] in sequence and list(reversed(sequence)) == items[::-1]
        for index, error in ((3, IndexError), (-4, IndexError), ("M", TypeError)):
            with pytest.raises(error):
                sequence[index]
        with pytest.raises(ValueError):
            sequence[::0]
        assert "a sequence of" in type(sequence).__doc__


def test_loops_may_change_what_they_run_over(root):
    for klass in root.classes:
        root.RemoveClass(klass.ClassName)
    assert root.classes == [] and root.ClassCount == 0
    klass = root.AddClass("M")
    assert klass and len(klass) == 0, "an empty class is there all the same"
    for number in (1, 2):
        klass.AddLapObject(named(number))
    assert [klass.RemoveLap(1) or runner.RunnerName for runner in klass] == ["R1", "R2"]
    course = kr.clsCourseData()
    course.ControlCount = -1
    assert len(course) == 0 and list(course) == []


def test_texts_of_objects(root, analyzer):
    root.AddCourse(7).ControlCount = 2
    runner = named(1)
    runner.StartTime = kr.clsTimeValue(0.5)
    for made, expected in (
        (root.courses[-1], "<clsCourseData CourseIndex=7, ControlCount=2>"),
        (root.AddClass("W"), "<clsClassData ClassName='W', LapCount=0>"),
        (runner, "<clsLapData RunnerName='R1', ClassName='', Result=''>"),
        (runner.StartTime, "<clsTimeValue Value=0.5, ToString()='12:00:00'>"),
        (kr.clsDateValue(1), "<clsDateValue Value=1.0, ToString()='1899/12/31'>"),
        (root.NewResultsHolder, "<clsResultsHolder DataSetName='', Count=0>"),
        (root.SeparateClassAndCourseValue("1,,M,m,3"), "<ClassAndCourseValue ValueName='M', "
         "ClassIndex=1, CourseNum=0, FileName='m', RunnerCount=3>"),
        (kr.ViewerSet(root.NewAnalyzer), "<ViewerSet Analyzer=<clsAnalyzer DataSetName='', "
         "IsExecuted=False, Count=0>, Kind=<DataSetKind.kClass: 0>>"),
    ):
        assert repr(made) == expected
    assert str(runner.StartTime) == "12:00:00"
    assert str(root.EventData) == root.EventData.ToString()
    assert repr(analyzer[0]).startswith("<clsAnalyzedRunnerData RunnerName='")
    assert re.findall(r"\d+", root.Version()) == kr.__version__.split(".")


def test_segments(root):
    assert [s.SegmentName for s in root.segments] == [
        root.SegmentData(i).SegmentName for i in range(1, root.SegmentCount + 1)]
    assert root.SegmentCount > 0
    segment = root.SegmentData(1)
    analyzer = segment.Analyzer()
    analyzer.Execute()
    assert analyzer.ControlCount == segment.ControlCount


def test_charts_and_the_mouse(root, analyzer, tmp_path):
    picture = kr.CairoPicture(800, 600)
    chart = kr.clsChartObject()
    chart.SetPictureObject(picture)
    ratio = kr.ChartRatioToFit(analyzer, chart, kr.KR_CHART_NORMAL)
    root.GraphicControl.DrawChart(analyzer, chart, kr.KR_CHART_NORMAL, ratio, 1, 0, 0)
    chart.DrawChart()
    assert picture.Encode().startswith(b"\x89PNG")
    assert {chart.MousePointRunnerIndex(x, 300) for x in range(52, 748)} - {0}
    width = chart.Width
    chart.Titles = chart.AutoColors = chart.ClearNames = chart.FitMost = True
    chart.SetPictureObject(picture)
    assert chart.Width < width and len(kr.kChartColors) == 8


def test_prints_to_pdf(root, analyzer):
    book = kr.clsPrintBook()
    book.Init("", kr.KR_PAPER_A4, kr.tpotPortrate, 10, 10, 10, 10, 1)
    root.GraphicControl.PrintHeads = True
    root.GraphicControl.PrintAnalysis(analyzer, book)
    assert book.PageCount > 0
    book.Execute()
    assert book.PrinterObject.Document.startswith(b"%PDF")
    picture = kr.CairoPicture(300, 400)
    white = picture.Encode()
    book.ShowPreview(picture, 1)
    assert picture.Encode() != white


def host(base, calls, noted, **methods):
    """An object of a host's class. The noted methods record their first argument in `calls`."""
    for name in noted.split():
        methods[name] = lambda *args, name=name: calls.append((name, *args[:1]))
    return type("Host", (base,), {name: staticmethod(call) for name, call in methods.items()})()


def surface(base, calls, noted="", **methods):
    noted += " DrawLine DrawBox DrawCircle DrawText SetClip ResetClip"
    return host(base, calls, noted, TextWidth=lambda text, style: style.Size * 0.5 * len(text),
                TextHeight=lambda style: style.Size, **methods)


def test_a_printer_of_the_host(root):
    calls, sheets, texts = [], [], []

    def new_sheet():
        texts.append([])
        sheets.append(surface(kr.DrawingSurface, texts[-1]))
        return sheets[-1]

    press = host(kr.Printer, calls, "SetPaperSize SetOrientation EndDocument", NewSheet=new_sheet,
                 Measure=lambda: surface(kr.DrawingSurface, []), DeviceName=lambda: "press",
                 Metrics=lambda: kr.PaperMetrics(PaperWidth=210, PaperHeight=297))
    kr.InstallPrinter(press)
    assert kr.FindPrinter("press") is press and "press" in kr.PrinterNames()
    results = root.NewResultsHolder
    results.AddClass("M21A")
    results.CalcRank()
    book = kr.clsPrintBook()
    book.Init("press", kr.KR_PAPER_A5, kr.tpotPortrate, 10, 10, 10, 10, 1)
    root.GraphicControl.PrintResult(results, book, PrintID=True)
    book.Execute()
    kr.RemovePrinter("press")
    assert ("SetPaperSize", kr.KR_PAPER_A5) in calls and calls[-1] == ("EndDocument",)
    assert len(sheets) == book.PageCount
    name = results.Item(1).RunnerName
    assert any(call[0] == "DrawText" and name in call[1] for call in texts[0])


def test_a_grid_of_the_host(root, analyzer):
    cells = {}
    grid = host(kr.clsGridObject, [], "",
                SetTextMatrix=lambda row, col, text: cells.update({(row, col): text}))
    root.GraphicControl.DrawGrid(analyzer, grid)
    assert cells[2, 1] == analyzer.Item(1).Result
    assert max(row for row, _ in cells) == 4 * (analyzer.ControlCount + 1) + 14


def test_a_picture_of_the_host_lives_as_long_as_the_chart(root, analyzer):
    calls = []
    chart = kr.clsChartObject()
    chart.SetPictureObject(surface(kr.PictureBox, calls, "SetScaleMode SetBackColor Clear SetWidth",
                                   Width=lambda: 800, ScaleWidth=lambda: 800,
                                   ScaleHeight=lambda: 600))
    gc.collect()
    root.GraphicControl.DrawChart(analyzer, chart, kr.KR_CHART_NORMAL, 1, 1, 0, 0)
    chart.DrawChart()
    names = [call[0] for call in calls]
    assert names.count("DrawLine") > analyzer.Count and "DrawText" in names


def test_windows_of_the_host(root, event, tmp_path):
    percents, questions = [], []
    kr.SetHostWindows(host(
        kr.HostWindows, questions, "",
        OpenProgress=lambda caption: host(kr.frmProgressBar, percents, "SetPercent"),
        AskYesNo=lambda text, title: not questions.append(text)))
    try:
        root.FileControl.ProgressVisible = True
        assert root.FileControl.LoadLapFile(event)
        assert root.FileControl.OutputHtml(str(tmp_path / "new"), "index.html")
    finally:
        kr.SetHostWindows(None)
    assert percents and questions
    assert (tmp_path / "new" / "index.html").exists()


def test_sites(root, tmp_path):
    options = kr.SiteOptions(OutputFolder=str(tmp_path), IndexFile="index.html", Charset="utf-8")
    options.ChartFile, options.ChartOption, options.ViewerFile = "c_*.html", "0", "viewer.html"
    assert root.FileControl.OutputSite(options), root.ErrorComment
    name = root.ClassData("M21A").FileName
    written = {path.name for path in tmp_path.iterdir()}
    assert {"index.html", "viewer.html", f"c_{name}.html", f"c_{name}_0.png"} <= written
    with pytest.raises(AttributeError):
        kr.SiteOptions(OutputFoldr="typing error")


def test_the_report_as_a_site(root, tmp_path):
    options = kr.ReportSiteOptions(OutputFolder=str(tmp_path), Prefix="a_", AddToIndex=True)
    assert root.FileControl.ReportSiteConflicts(options) == []
    assert root.FileControl.OutputReportSite(options), root.ErrorComment
    assert set(root.FileControl.ReportSiteFiles(options)) == {str(path) for path in tmp_path.iterdir()}
    (tmp_path / "index.html").write_text("a page of somebody else")
    alone = kr.ReportSiteOptions(OutputFolder=str(tmp_path))
    assert len(root.FileControl.ReportSiteConflicts(alone)) == 1
    assert not root.FileControl.OutputReportSite(alone)


def test_a_missing_member_of_a_hosts_class_is_an_error(root, analyzer):
    chart = kr.clsChartObject()
    with pytest.raises(RuntimeError, match="SetScaleMode"):
        chart.SetPictureObject(kr.PictureBox())


def test_parts_outlive_their_owners(event):
    root = kr.clsKeltrun2()
    root.FileControl.LoadLapFile(event)
    analyzer = root.NewAnalyzer
    analyzer.AddClass(1)
    analyzer.Execute()
    lap = root.ClassData(1).LapData(1)
    general = analyzer.GeneralData
    best = [general.UpperLapObject(leg, rank) for leg in range(1, analyzer.ControlCount + 2)
            for rank in range(1, 7)]
    others = [analyzer.Item(i) for i in range(1, analyzer.Count + 1)]
    speed = next(runner for runner in others if runner not in best).CruiseSpeed
    files, texts, first = root.FileControl, root.TextControl, analyzer.Item(1)
    del root
    gc.collect()
    assert analyzer.Count > 0 and lap.RunnerName and first.OtherData.RunnerName
    del analyzer, first, best, others  # nothing but the speed keeps that runner alive
    gc.collect()
    assert speed.ToString("#0.0") and general.UpperLapTotal > 0
    assert files.FileLoadFilter
    with pytest.raises(kr.AutomationError, match="no root object"):
        texts.OutputInfoJson()
    assert not files.SaveLapFile("never written")


def test_a_host_may_clear_everything_while_it_is_called(event):
    def disturbed(run, **made_of):
        root = kr.clsKeltrun2()
        assert root.FileControl.LoadLapFile(event)
        analyzer = root.NewAnalyzer
        analyzer.AddClass("M21A")
        analyzer.Execute()
        calls = []

        def disturb(what):
            calls.append(what)
            if made_of["clear"]:
                analyzer.Clear()
                root.Clear()

        run(root, analyzer, disturb)
        return calls

    def grid(root, analyzer, disturb):
        root.GraphicControl.DrawGrid(analyzer, host(
            kr.clsGridObject, [], "", SetTextMatrix=lambda row, col, text: disturb(text)))

    def chart(root, analyzer, disturb):
        picture = surface(kr.PictureBox, [], "SetScaleMode SetBackColor SetWidth",
                          Clear=lambda: disturb("clear"), Width=lambda: 800,
                          ScaleWidth=lambda: 800, ScaleHeight=lambda: 600)
        drawn = kr.clsChartObject()
        drawn.SetPictureObject(picture)
        root.GraphicControl.DrawChart(analyzer, drawn, kr.KR_CHART_NORMAL, 1, 1, 0, 0)
        drawn.DrawChart()

    def print_out(root, analyzer, disturb):
        book = kr.clsPrintBook()
        sheet = surface(kr.DrawingSurface, [])
        type(sheet).DrawText = lambda self, text, *rest: disturb(text)

        def unload(sheet=sheet):
            book.TryUnload()
            return sheet

        kr.InstallPrinter(host(kr.Printer, [], "SetPaperSize SetOrientation EndDocument",
                               NewSheet=unload, Measure=lambda: sheet, DeviceName=lambda: "p",
                               Metrics=lambda: kr.PaperMetrics(PaperWidth=210, PaperHeight=297)))
        book.Init("p", kr.KR_PAPER_A4, kr.tpotPortrate, 10, 10, 10, 10, 1)
        kr.RemovePrinter("p")
        root.GraphicControl.PrintAnalysis(analyzer, book)
        book.Execute()

    for run in grid, chart, print_out:
        undisturbed = disturbed(run, clear=False)
        assert undisturbed and disturbed(run, clear=True) == undisturbed


def test_pictures_and_charts_that_hold_each_other_are_collected(analyzer):
    class Picture(kr.PictureBox):
        SetScaleMode = SetBackColor = Clear = lambda self, *args: None
        Width = ScaleWidth = ScaleHeight = lambda self: 800.0

    for chart_class in kr.clsChartObject, type("Chart", (kr.clsChartObject,), {}):
        picture = Picture()
        chart = chart_class()
        picture.chart = chart
        chart.SetPictureObject(picture)
        gone = weakref.ref(picture)
        del picture
        gc.collect()
        assert gone() is not None and chart.Width > 0, "the chart holds it"
        del chart
        gc.collect()
        assert gone() is None


def test_objects_without_init_raise():
    tried = 0
    for name, cls in vars(kr._native).items():
        if not inspect.isclass(cls) or issubclass(cls, BaseException):
            continue
        made = cls.__new__(cls)
        for key, member in vars(cls).items():
            if not isinstance(member, property) or key.startswith("_") or key in ("name", "value"):
                continue
            tried += 1
            with pytest.raises(TypeError, match="__init__"):
                getattr(made, key)
        if hasattr(cls, "__members__"):
            with pytest.raises(TypeError, match="__init__"):
                int(made)
    assert tried > 150
    root = kr.clsKeltrun2()
    for call in (lambda: root.HtmlControl.OutputAnalysis(kr.clsAnalyzer.__new__(kr.clsAnalyzer)),
                 lambda: kr.clsChartObject().SetPictureObject(kr.PictureBox.__new__(kr.PictureBox)),
                 lambda: kr.clsAnalyzer.Execute(kr.clsAnalyzer.__new__(kr.clsAnalyzer))):
        with pytest.raises((TypeError, RuntimeError)):
            call()


def test_bytes_are_utf8_or_raise(root):
    assert root.AddClass("女子".encode()).ClassName == "女子"
    assert root.AddClass(bytearray(b"W21")).ClassName == "W21"
    before = root.ClassCount
    for bad in (b"\xff", "女子".encode("shift_jis"), bytearray(b"a\xe3\x81")):
        with pytest.raises(UnicodeDecodeError):
            root.AddClass(bad)
        with pytest.raises(UnicodeDecodeError):
            root.FileName = bad
        with pytest.raises(UnicodeDecodeError):
            root.EventData.EventName = bad
    assert root.ClassCount == before


def test_threads_with_roots_of_their_own(event, tmp_path):
    def serve(number):
        root = kr.clsKeltrun2()
        assert not root.FileControl.LoadLapFile(f"missing{number}.lxm")
        assert f"missing{number}" in root.ErrorComment
        assert root.FileControl.LoadLapFile(event)
        for i in range(number):
            root.RemoveClass(root.ClassData(1).ClassName)
        analyzer = root.NewAnalyzer
        analyzer.AddClass(1)
        analyzer.Execute()
        cells = []
        root.GraphicControl.DrawGrid(analyzer, host(
            kr.clsGridObject, [], "", SetTextMatrix=lambda row, col, text: cells.append(text)))
        picture = kr.CairoPicture(400, 300)
        chart = kr.clsChartObject()
        chart.SetPictureObject(picture)
        root.GraphicControl.DrawChart(analyzer, chart, kr.KR_CHART_NORMAL, 1, 1, 0, 0)
        chart.DrawChart()
        return (root.HtmlControl.OutputAnalysis(analyzer), root.TextControl.OutputInfoJson(), cells,
                picture.Encode())

    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        together = list(pool.map(serve, range(8)))
    assert together == [serve(number) for number in range(8)]


# Each call waits for another thread that has not run yet. A call that held the interpreter's lock
# would wait forever.
WAITING_CALLS = """
import os, sys, threading
import keltrun2 as kr

event, pipe, call = sys.argv[1:]
root = kr.clsKeltrun2()
if call != "load":
    assert root.FileControl.LoadLapFile(event), root.ErrorComment

def other():
    if call == "load":
        with open(pipe, "wb") as out, open(event, "rb") as source:
            out.write(source.read())
    else:
        with open(pipe, "rb") as source:
            assert source.read()

thread = threading.Timer(0.2, other)
thread.start()
if call == "load":
    assert root.FileControl.LoadLapFile(pipe, kr.KR_FILETYPE_KELTRUN2), root.ErrorComment
    assert root.ClassCount > 0
elif call == "save":
    assert root.FileControl.SaveLapFile(pipe, kr.KR_FILETYPE_KELTRUN2), root.ErrorComment
elif call == "print":
    kr.InstallPrinter(kr.PdfPrinter("pipe", pipe))
    book = kr.clsPrintBook()
    book.Init("pipe", kr.KR_PAPER_A4, kr.tpotPortrate, 1, 1, 1, 1, 1)
    book.DrawBox(1, 1, 9, 9, 0, 1, True)
    book.Execute()
elif call == "draw":
    kr.CairoPicture(10, 10).Save(pipe)
thread.join()
"""


@pytest.mark.parametrize("call", ["load", "save", "print", "draw"])
def test_other_threads_run_during_long_calls(event, tmp_path, call):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    subprocess.run([sys.executable, "-c", WAITING_CALLS, event, str(pipe), call], check=True,
                   timeout=60)


# Declarations that are only for C++ and therefore not bound.
CPP_ONLY = {"AppendDateTime", "AppendTwoDigits", "CheckIndex", "CheckObject", "RaiseIndexError",
            "Startup"}
CPP_KINDS = {"define", "typedef"}


def declared_names(folder):
    subprocess.run([PROJECT / "scripts/make-docs", "--xml", folder], check=True)
    return [name for name, description in make_docs.declarations(folder / "xml")
            if description.get("kind") not in CPP_KINDS and description.get("prot") != "protected"
            and "operator" not in name and "~" not in name
            and not CPP_ONLY & set(name.split("."))]


def test_everything_in_the_public_headers_is_bound(tmp_path):
    def is_bound(name):
        scope, _, member = name.rpartition(".")
        if not scope:
            return hasattr(kr, member)
        cls = getattr(kr, scope)
        setter = getattr(getattr(cls, member.removeprefix("Set"), None), "fset", None)
        return hasattr(cls, member) or setter is not None

    names = declared_names(tmp_path)
    assert len(names) > 500
    made = {f"{name}.{name}" for name in names}  # constructors
    missing = [name for name in names if name not in made and not is_bound(name)]
    assert missing == [], missing


def test_what_may_be_none_says_so(root, analyzer):
    results, general, runner = root.NewResultsHolder, analyzer.GeneralData, analyzer.Item(1)
    for call, *arguments in [
            (root.ClassData, 99), (root.ClassData, "no such class"), (root.CourseData, 99),
            (root.CourseData, "99"), (root.ClassData(1).LapData, 0), (analyzer.Item, 0),
            (analyzer.FullSetItem, 0), (results.Item, 1), (results.FullSetItem, 1),
            (general.LegDifficulty, 0), (general.UpperLapObject, 1, 0), (runner.LapRelative, 0),
            (runner.MissTime, 0), (kr.FindPrinter, "no such printer")]:
        assert call(*arguments) is None
        assert ") -> Optional[" in call.__doc__, call.__doc__


def test_every_member_is_documented():
    undocumented = []
    for name, cls in vars(kr._native).items():
        if not inspect.isclass(cls) or issubclass(cls, BaseException):
            continue
        for key, member in vars(cls).items():
            if key in getattr(cls, "__members__", {}) and f"\n  {key} : " not in cls.__doc__:
                undocumented.append(f"{name}.{key}")
            if key.startswith("_") or key in getattr(cls, "__members__", {}):
                continue
            if isinstance(member, int) or key in ("name", "value"):
                continue
            text = getattr(member, "__doc__", None) or ""
            if isinstance(member, staticmethod):
                text = member.__func__.__doc__
            lines = text.strip().splitlines()
            if not lines[0 if isinstance(member, property) else 1:]:
                undocumented.append(f"{name}.{key}")
    assert undocumented == [], undocumented


def test_stubs_name_everything_and_are_valid():
    path = pathlib.Path(kr.__file__).with_name("_native.pyi")
    stub = ast.parse(path.read_text(encoding="utf-8"))
    names = {node.name for node in stub.body if isinstance(node, (ast.ClassDef, ast.FunctionDef))}
    names |= {node.target.id for node in stub.body if isinstance(node, ast.AnnAssign)}
    assert {name for name in vars(kr._native) if not name.startswith("_")} == names - {"__version__"}
    text = ast.unparse(stub)
    for signature in ("__iter__(self) -> typing.Iterator[clsAnalyzedRunnerData]", "__version__: str",
                      "__getitem__(self, arg0: slice) -> list[int]",
                      "classes(self) -> list[clsClassData]"):
        assert signature in text
