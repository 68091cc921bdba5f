#!/bin/sh
# The tool's main job on a simulated access point: installs what is needed,
# builds the tool, creates the access point and applies a day of changes as
# the device's framework would, showing what each one did.  Ends with what
# the driver holds and the final driver configuration file.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/host/deps.sh"
cmake -S "$top" -B "$top/build" > /dev/null
cmake --build "$top/build" -j "$(nproc 2>/dev/null || echo 2)" --target wlanSyncTool wlanFramework > /dev/null
R=${1:-$(mktemp -u /tmp/wlansync-ap-XXXXXX)}
ap() { sh "$top/sim/ap" "$@"; }
# Set before create, which may fail half way: every exit takes the access
# point down, ^C and kill included.
trap 'ap destroy "$R"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
ap create "$R"

failed=0
step() {
    echo
    echo "== $1"
    echo "   SQL: $2"
    ap apply "$R" "$2" || failed=1
}

. "$top/sim/changes.sh"

echo
echo "== What the driver holds now"
ap driver "$R"
echo
echo "== Interfaces"
ap exec "$R" ip -brief link | grep -E '^(vap|wds)'
echo
echo "== Interfaces in the database (MAC addresses stored by the tool)"
sqlite3 "$R/tmp/system.db" "SELECT interfaceName, vapName, macAddress FROM dot11Interface"
echo
echo "== The driver configuration file"
cat "$R/etc/Wireless/RT2860AP/RT2860AP.dat"
echo
if [ "$failed" -eq 0 ]; then echo "every step's exit status was 0"; else echo "a step failed"; fi
exit "$failed"
