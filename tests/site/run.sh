#!/bin/sh
# run.sh PROGRAM EVENT OTHER-EVENT PYTHON: publishes the events as sites and reads those in a browser.
set -eu
here=$(dirname "$0")
PYTHONPATH="$here/../browser" "$4" -B "$here/site_test.py" "$1" "$2" "$3"
