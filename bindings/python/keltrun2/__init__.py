"""Keltrun2: analysis of orienteering split times.

    import keltrun2

    root = keltrun2.clsKeltrun2()
    if not root.FileControl.LoadLapFile("event.lxm"):
        raise SystemExit(root.ErrorComment)
    analyzer = root.NewAnalyzer
    analyzer.AddClass("M21A")
    analyzer.Execute()
    for i in range(1, analyzer.Count + 1):
        runner = analyzer.Item(i)
        print(runner.Rank, runner.Result, runner.RunnerName)

Names are those of the object model. What takes no argument is a property, what takes an index is a
method, with SetX to write. Nothing is None. Times are days as float, a second is 1/86400; the four
functions below turn them into Python's own.
"""
import datetime as _datetime

from ._native import *  # noqa: F401,F403
from ._native import AutomationError  # noqa: F401

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
    """A datetime as a date of the model; its time zone is not looked at."""
    return (moment.replace(tzinfo=None) - _EPOCH) / _datetime.timedelta(days=1)
