#!/bin/sh
# Runs a test program against a private CUPS server: a cupsd listening on a
# socket in a temporary folder, with two cups-pdf queues, TEST-PDF (the
# default) and TEST-PDF2. Nothing outside that folder is touched; the
# server is stopped and the folder removed on the way out.
# The program learns the set-up from JK_PRINTER_SETUP (cupsd / unavailable).
set -u

CUPSD=/usr/sbin/cupsd
PPD=/usr/share/ppd/cups-pdf/CUPS-PDF_opt.ppd
BACKEND=/usr/lib/cups/backend/cups-pdf

missing=""
[ -x "$CUPSD" ] || missing="$missing cupsd"
{ [ -f "$PPD" ] && [ -e "$BACKEND" ]; } || missing="$missing cups-pdf"
command -v lpadmin >/dev/null 2>&1 || missing="$missing lpadmin"
command -v lpoptions >/dev/null 2>&1 || missing="$missing lpoptions"
if [ -n "$missing" ]; then
    JK_PRINTER_SETUP=unavailable JK_PRINTER_SKIP_REASON="not installed:$missing" exec "$@"
fi

P=$(mktemp -d "${TMPDIR:-/tmp}/jk-cups.XXXXXX") || exit 1
CUPSD_PID=""
cleanup() {
    if [ -n "$CUPSD_PID" ]; then
        kill "$CUPSD_PID" 2>/dev/null
        wait "$CUPSD_PID" 2>/dev/null
    fi
    rm -rf "$P"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# The filters run as user lp: the folder must be readable by others.
chmod 755 "$P"
mkdir -p "$P/etc" "$P/spool" "$P/tmp" "$P/cache" "$P/state" "$P/log" "$P/home"
# Jobs are copied through TempDir by the filters, which run as user lp.
chmod 1777 "$P/tmp"

cat >"$P/etc/cupsd.conf" <<CONF
Listen $P/cups.sock
Browsing No
WebInterface No
LogLevel warn
DefaultAuthType None
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
CONF

cat >"$P/etc/cups-files.conf" <<CONF
ServerRoot $P/etc
RequestRoot $P/spool
TempDir $P/tmp
CacheDir $P/cache
StateDir $P/state
AccessLog $P/log/access_log
ErrorLog $P/log/error_log
PageLog $P/log/page_log
SystemGroup root
CONF

"$CUPSD" -f -c "$P/etc/cupsd.conf" -s "$P/etc/cups-files.conf" &
CUPSD_PID=$!

# Clients: this server only; lpoptions/cupsSetDests write under HOME (or
# under CUPS_SERVERROOT when run as root), both inside the folder.
export CUPS_SERVER="$P/cups.sock" HOME="$P/home" CUPS_SERVERROOT="$P/etc"
unset LPDEST PRINTER

i=0
# lpstat -r exits 0 even while the scheduler is not up yet: read its answer.
until [ -S "$P/cups.sock" ] && lpstat -r 2>/dev/null | grep -q "is running"; do
    i=$((i + 1))
    if [ $i -gt 100 ] || ! kill -0 "$CUPSD_PID" 2>/dev/null; then
        echo "cupsd did not start:" >&2
        cat "$P/log/error_log" >&2 2>/dev/null
        exit 1
    fi
    sleep 0.1
done

for q in TEST-PDF TEST-PDF2; do
    lpadmin -p "$q" -v cups-pdf:/ -P "$PPD" -o pdftops-renderer-default=pdftocairo -E || exit 1
done
lpoptions -d TEST-PDF >/dev/null || exit 1

JK_PRINTER_SETUP=cupsd "$@"
