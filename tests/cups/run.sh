#!/bin/sh
# Prints on a queue of a private print server and looks at what arrives there.
#   run.sh PROGRAM     PROGRAM is built from print_page.cpp
# Ends with 77 (skipped) where there is no print server to start.
set -eu
program=$1

PATH=$PATH:/usr/sbin:/sbin
for tool in cupsd lpadmin pdftotext; do
  command -v "$tool" >/dev/null || {
    echo "SKIPPED: printing was NOT tested, there is no $tool (cups-daemon, cups-client, poppler-utils)"
    exit 77
  }
done

dir=$(mktemp -d "${TMPDIR:-/tmp}/kcups.XXXXXX") # short: the path of a socket has at most 107 bytes
server=
finish() {
  [ -z "$server" ] || { kill "$server" && wait "$server"; } 2>/dev/null || true
  rm -rf "$dir"
}
trap finish EXIT
fail() {
  echo "FAILED: $1"
  tail -n 20 "$dir/error_log" 2>/dev/null || true
  exit 1
}

# Without any server there are no printers, and no error.
export CUPS_SERVER="$dir/socket"
[ -z "$("$program")" ] || fail "printers without a server"

# The queue's backend keeps the document instead of printing it.
mkdir "$dir/bin" "$dir/bin/backend" "$dir/etc" "$dir/spool" "$dir/cache" "$dir/state" "$dir/tmp"
for part in daemon filter monitor notifier driver; do
  [ ! -e "/usr/lib/cups/$part" ] || ln -s "/usr/lib/cups/$part" "$dir/bin/$part"
done
cat >"$dir/bin/backend/capture" <<END
#!/bin/sh
[ \$# -gt 0 ] || { echo 'direct capture "Unknown" "Capture"'; exit 0; }
echo "\$5" >"$dir/options"
if [ -n "\${6:-}" ]; then cat "\$6"; else cat; fi >"$dir/part.pdf"
mv "$dir/part.pdf" "$dir/captured.pdf"
END
chmod 700 "$dir/bin/backend/capture"

cat >"$dir/etc/cups-files.conf" <<END
ServerRoot $dir/etc
ServerBin $dir/bin
RequestRoot $dir/spool
CacheDir $dir/cache
StateDir $dir/state
TempDir $dir/tmp
AccessLog $dir/access_log
ErrorLog $dir/error_log
PageLog $dir/page_log
END
cat >"$dir/etc/cupsd.conf" <<END
Listen $CUPS_SERVER
Browsing Off
WebInterface No
DefaultAuthType None
<Location />
  Allow all
</Location>
<Location /admin>
  Allow all
</Location>
<Policy default>
  <Limit All>
    Allow all
  </Limit>
</Policy>
END
cupsd -f -c "$dir/etc/cupsd.conf" -s "$dir/etc/cups-files.conf" 2>"$dir/messages" &
server=$!

tries=0
until lpadmin -p Capture -E -v capture:/ -m raw 2>"$dir/lpadmin"; do
  tries=$((tries + 1))
  kill -0 "$server" 2>/dev/null || { cat "$dir/messages"; fail "the print server did not start"; }
  [ "$tries" -lt 100 ] || { cat "$dir/lpadmin"; fail "no queue on the print server"; }
  sleep 0.1
done

# What the server says of its queues, and the sheet with its size and its text.
output=$("$program" Capture) || fail "the program failed"
[ "$output" = "Capture
210 x 148 mm" ] || fail "unexpected output: $output"
tries=0
until [ -e "$dir/captured.pdf" ]; do
  tries=$((tries + 1))
  [ "$tries" -lt 300 ] || fail "nothing arrived"
  sleep 0.1
done
pdftotext "$dir/captured.pdf" - | grep -q "山田太郎" || fail "the text is not on the sheet"
grep -q "media=iso_a5_148x210mm" "$dir/options" || fail "the paper was not asked for"

# A queue that there is not, and one that takes no jobs.
"$program" Nowhere >/dev/null 2>&1 && fail "printed on a queue that there is not"
cupsreject Capture
"$program" Capture >/dev/null 2>"$dir/refusal" && fail "printed on a queue that takes no jobs"
grep -q "cannot print on Capture: ." "$dir/refusal" || fail "no reason: $(cat "$dir/refusal")"
echo "printed on a queue: passed"
