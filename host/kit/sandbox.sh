#!/bin/sh
# Makes a sandbox root for wlanSyncTool: sandbox.sh ROOT [SQL-FILE...]
#   ROOT/etc/Wireless/RT2860AP/RT2860AP.dat   the driver configuration file
#   ROOT/mavo2.0/bin/iwpriv, rt2860apd        stand-ins that record their calls
#   ROOT/bin/ifconfig, killall                stand-ins: put ROOT/bin first on PATH
#   ROOT/tmp/system.db                        the schema, then the SQL files given
#   ROOT/calls.log                            every stand-in call, in order
# Run the tool with WLANSYNC_ROOT=ROOT and PATH=ROOT/bin:$PATH.
set -eu
root=$1
shift
kit=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$root/etc/Wireless/RT2860AP" "$root/mavo2.0/bin" "$root/bin" "$root/tmp" "$root/var/log"
cp "$kit/RT2860AP.dat" "$root/etc/Wireless/RT2860AP/RT2860AP.dat"
for name in mavo2.0/bin/iwpriv mavo2.0/bin/rt2860apd bin/ifconfig bin/killall; do
    cp "$kit/bin/standin" "$root/$name"
done
: > "$root/calls.log"
rm -f "$root/tmp/system.db"
cat "$kit/schema.sql" "$@" | sqlite3 "$root/tmp/system.db"
