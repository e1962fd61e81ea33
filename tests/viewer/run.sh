#!/bin/sh
# run.sh PROGRAM EVENT PYTHON: publishes the event with its viewer page and works that in a browser.
set -eu
here=$(dirname "$0")
site=$(mktemp -d)
trap 'rm -rf "$site"' EXIT
"$1" site "$2" "$site" --viewer --quiet
PYTHONPATH="$here/../browser" "$3" -B "$here/viewer_test.py" "$site/viewer.html"
