"""Keltrun2: analysis of orienteering split times.

    import keltrun2

    root = keltrun2.clsKeltrun2()
    if not keltrun2.load(root, "results.xml"):
        raise SystemExit(root.ErrorComment)
    analyzer = root.NewAnalyzer
    analyzer.AddClass("M21A")
    analyzer.Execute()
    for runner in analyzer:
        print(runner.Rank, runner.Result, runner.RunnerName)

Names are those of the object model. A member that returns a value and takes no argument is a
property. A member that does something is a method, such as Execute(), MakeSegmentSet() and Clear(),
and so is a member with an index, which has a SetX to write. A null pointer of C++ is None.

An analyzer and a result list are sequences of their selected runners, a class is a sequence of its
runners and a course of its control codes: they have len(), indexes from 0, slices and iteration. The
component's own Item and its relatives count from 1. An empty one is still true, so that
"if root.ClassData(name)" asks whether there is such a class. root.classes, root.courses and
root.segments are lists. str() of a value is its ToString().

Times are days as float, and a second is 1/86400; to_timedelta, from_timedelta, to_datetime and
from_datetime convert them to and from Python's own types. load reads any file, merge adds a second one and save writes any format.
result_rows and lap_rows give the event as rows for data frames. Threads may work
in parallel, each with a root of its own.
"""
import csv as _csv
import datetime as _datetime
import io as _io

from ._native import *  # noqa: F401,F403
from ._native import AutomationError, __version__  # noqa: F401

_EPOCH = _datetime.datetime(1899, 12, 30)
_MILLISECONDS_PER_DAY = 86_400_000


def to_timedelta(days: float) -> _datetime.timedelta | None:
    """A time of the model as timedelta; None for the markers (no data, skipped, disqualified)."""
    if days in (0.0, -1.0, -2.0):
        return None
    return _datetime.timedelta(milliseconds=round(days * _MILLISECONDS_PER_DAY))


def from_timedelta(time: _datetime.timedelta) -> float:
    """A timedelta as a time of the model, on its grid of whole milliseconds."""
    return round(time / _datetime.timedelta(milliseconds=1)) / _MILLISECONDS_PER_DAY


def to_datetime(days: float) -> _datetime.datetime | None:
    """A date of the model as datetime (local time, to the second); None for 0, which is no date."""
    if days == 0.0:
        return None
    return _EPOCH + _datetime.timedelta(seconds=round(days * 86_400))


def from_datetime(moment: _datetime.datetime) -> float:
    """A datetime as a date of the model; its time zone is ignored."""
    return (moment.replace(tzinfo=None) - _EPOCH) / _datetime.timedelta(days=1)


_MATCHES = {
    "name": KR_LOADMODE_MERGE_NAME,  # noqa: F405
    "id": KR_LOADMODE_MERGE_ID,  # noqa: F405
    "none": KR_LOADMODE_APPEND,  # noqa: F405
}
_PREFERENCES = {
    "old": KR_LOADMODE_PRIORITY_ORIGINAL,  # noqa: F405
    "new": KR_LOADMODE_PRIORITY_NEWDATA,  # noqa: F405
}


def load(root: clsKeltrun2, file_name: str, *, format: str = "", charset: str = "",  # noqa: F405
         race: int = 0) -> bool:
    """Loads an event from any file that the library reads, as the program does.

    `format` is one of LapFileTypeWords() ("iof3", "oe", "lxm" ...); it is detected when empty.
    `charset` is that of a list without a byte-order mark, and `race` the race or day of a file with
    several, from 1; 0 is the first one with results.

    Returns False when the file cannot be loaded; root.ErrorComment says why. What was assumed is in
    root.FileControl.LoadRemarks. An unknown format raises ValueError.
    """
    kind = LapFileTypeOfWord(format) if format else KR_FILETYPE_AUTODETECT  # noqa: F405
    if kind == KR_FILETYPE_UNKNOWN:  # noqa: F405
        raise ValueError(f"format must be one of {', '.join(LapFileTypeWords())}")  # noqa: F405
    files = root.FileControl
    before = files.ForeignFormats, files.InputCharset, files.Race
    files.ForeignFormats, files.InputCharset, files.Race = True, charset, race
    try:
        return files.LoadLapFile(file_name, kind)
    finally:
        files.ForeignFormats, files.InputCharset, files.Race = before


def save(root: clsKeltrun2, file_name: str, *, format: str = "", charset: str = "",  # noqa: F405
         full: bool = False) -> bool:
    """Saves the event in a format, as the program's convert command does.

    `format` is one of SaveTypeWords() ("iof3", "iof2", "splitsbrowser", "lxm" ...); when it is empty
    the ending of the name decides. `charset` is "utf-8", "utf-8-bom", "cp932" or "windows-1252";
    when it is empty the format has its usual one. With `full`, fixed ranks and ages are saved too.

    Returns False when the file cannot be written; root.ErrorComment says why. What the format has
    no place for is in root.FileControl.SaveRemarks. An unknown format raises ValueError.
    """
    kind = SaveTypeOfWord(format) if format else KR_FILETYPE_AUTODETECT  # noqa: F405
    if kind == KR_FILETYPE_UNKNOWN:  # noqa: F405
        raise ValueError(f"format must be one of {', '.join(SaveTypeWords())}")  # noqa: F405
    files = root.FileControl
    before, files.OutputCharset = files.OutputCharset, charset
    try:
        return files.SaveLapFile(
            file_name, kind, KR_SAVEMODE_FULL if full else KR_SAVEMODE_NORMAL)  # noqa: F405
    finally:
        files.OutputCharset = before


def result_rows(root: clsKeltrun2, class_name: str = "", *, splits: bool = False) -> list:  # noqa: F405
    """Every runner of the event, or of a class, as a dict of texts: the rows of OutputCsvResults.

    The keys are class, place, bib, name, club, card, start, result, behind, status and course, with
    `splits` also split1, split2, ... and finish. pandas.DataFrame takes the list as it is. Like the
    services, this works on the thread's youngest root.
    """
    table = root.TextControl.OutputCsvResults(class_name, Splits=splits)
    return list(_csv.DictReader(_io.StringIO(table, newline="")))


def lap_rows(root: clsKeltrun2, class_names: list | None = None) -> list:  # noqa: F405
    """A dict for each runner and leg of the classes, or of all classes: the rows of OutputCsvLaps.

    Like the services, this works on the thread's youngest root.
    """
    if class_names is None:
        class_names = [klass.ClassName for klass in root.classes]
    sets = []
    for name in class_names:
        analyzer = root.NewAnalyzer
        analyzer.AddClass(name)
        analyzer.Execute()
        sets.append(AnalysisSet(analyzer))  # noqa: F405
    table = root.TextControl.OutputCsvLaps(sets)
    return list(_csv.DictReader(_io.StringIO(table, newline="")))


def merge(root: clsKeltrun2, file_name: str, *, match: str = "name",  # noqa: F405
          prefer: str = "old", known_only: bool = False, renew_ranks: bool = True) -> bool:
    """Adds what another file knows to the event, as the program's merge command does.

    `match` says how a runner is recognized in the class: by "name", by "id", or "none", which
    adds every runner. `prefer` says which value is kept where both files have one, "old" or "new".
    `known_only` leaves out runners who are not in the event. With `renew_ranks`, classes whose
    official ranks were exactly those of their results get new ones, and a remark names the other
    classes that changed.

    Returns False when the file cannot be loaded; root.ErrorComment says why. The remarks are in
    root.FileControl.LoadRemarks. Any other value of match or prefer raises ValueError.
    """
    if match not in _MATCHES or prefer not in _PREFERENCES:
        raise ValueError(f"match must be one of {', '.join(_MATCHES)}; "
                         f"prefer must be one of {', '.join(_PREFERENCES)}")
    mode = _MATCHES[match] | _PREFERENCES[prefer]
    if known_only:
        mode |= KR_LOADMODE_NOTADD_NEWDATA  # noqa: F405
    files = root.FileControl
    before = files.RenewRanks, files.ForeignFormats
    files.RenewRanks, files.ForeignFormats = renew_ranks, True
    try:
        return files.LoadLapFile(file_name, LoadMode=mode)
    finally:
        files.RenewRanks, files.ForeignFormats = before
