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

step "Enable VAP ap2 with the WPA2-PSK profile" \
    "UPDATE dot11VAP SET profileName='secure', vapEnabled=1 WHERE vapName='ap2'"
step "Add an access-list entry to ap2" \
    "INSERT INTO dot11ACL (vapName, macAddress) VALUES ('ap2', '00:21:6A:11:22:33')"
step "Remove it again" \
    "DELETE FROM dot11ACL WHERE macAddress='00:21:6A:11:22:33'"
step "Change channel and wireless mode" \
    "UPDATE dot11Radio SET configuredChannel=11, opMode='ng40+' WHERE radioNo=1"
step "Change the country to Germany" \
    "UPDATE dot11GlobalConfig SET country='276'"
step "Add a WDS peer, then switch WDS on" \
    "INSERT INTO dot11WDSPeers VALUES (1, '00:1A:2B:3C:99:01', 1, 'CCMP', 'wds-link-key');
     UPDATE dot11Radio SET wdsEnabled=1 WHERE radioNo=1"
step "Add a RADIUS server" \
    "INSERT INTO radiusClient VALUES ('10.0.0.5', '1812', 'another secret')"
step "Disable VAP ap2" \
    "UPDATE dot11VAP SET vapEnabled=0 WHERE vapName='ap2'"

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
