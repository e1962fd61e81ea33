#!/bin/sh
# run.sh PROGRAM EVENT PYTHON: writes the report of the event and reads it in a browser.
set -eu
here=$(dirname "$0")
PYTHONPATH="$here/../browser" "$3" -B "$here/report_test.py" "$1" "$2"
