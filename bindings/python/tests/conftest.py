"""Paths of the examples, and a separate folder for the settings file."""
import os
import pathlib
import sys
import tempfile

import pytest

_config = tempfile.TemporaryDirectory()
os.environ["XDG_CONFIG_HOME"] = _config.name

PROJECT = pathlib.Path(__file__).resolve().parents[3]
sys.path.append(str(PROJECT / "bindings/python"))


@pytest.fixture
def event():
    return str(PROJECT / "examples/hoshinomori/event.lxm")


@pytest.fixture
def root(event):
    import keltrun2

    root = keltrun2.clsKeltrun2()
    assert root.FileControl.LoadLapFile(event), root.ErrorComment
    return root


@pytest.fixture
def analyzer(root):
    analyzer = root.NewAnalyzer
    analyzer.AddClass("M21A")
    analyzer.Execute()
    return analyzer
