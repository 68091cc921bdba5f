#!/bin/sh
# Builds wlanSyncTool and runs it in a sandbox root on a sample database:
# a dot11ACL row is inserted and then deleted, as the device's framework
# reports them.  Shows the driver commands, the configuration-file change and
# the log of each run.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/host/deps.sh"
cmake -S "$top" -B "$top/build" >/dev/null
cmake --build "$top/build" -j "$(nproc 2>/dev/null || echo 2)" >/dev/null
tool=$top/build/wlanSyncTool

R=$(mktemp -d /tmp/wlansync-demo-XXXXXX)
cat > "$R.seed.sql" <<'SQL'
INSERT INTO dot11VAP (vapName, vapEnabled, profileName, radioList) VALUES ('ap2', 1, 'default', '1');
INSERT INTO dot11Interface VALUES ('vap1', 'ap2', 1, '');
INSERT INTO dot11ACL VALUES ('ap2', '00:1A:2B:3C:4D:5E');
SQL
"$top/host/kit/sandbox.sh" "$R" "$R.seed.sql"
rm -f "$R.seed.sql"
export WLANSYNC_ROOT="$R" PATH="$R/bin:$PATH"
cfg=$R/etc/Wireless/RT2860AP/RT2860AP.dat

step() {
    echo "== $1"
    shift
    cp "$cfg" "$R/before.dat"
    : > "$R/calls.log"
    : > "$R/var/log/wlanSyncTool.log"
    echo "\$ wlanSyncTool $*"
    status=0
    "$tool" "$@" || status=$?
    echo "exit status: $status"
    echo "driver commands:"
    tr '\t' ' ' < "$R/calls.log" | sed 's/^/  /'
    echo "configuration file:"
    diff -u "$R/before.dat" "$cfg" | tail -n +3 | grep '^[-+]' | sed 's/^/  /' || echo "  (unchanged)"
    echo "log:"
    sed 's/^/  /' "$R/var/log/wlanSyncTool.log"
    echo
}

step "insert of a dot11ACL row for VAP ap2 (vap1)" "$R/tmp/system.db" 18 dot11ACL 1
sqlite3 "$R/tmp/system.db" "DELETE FROM dot11ACL WHERE rowid=1"
step "delete of that row" "$R/tmp/system.db" 9 dot11ACL 1 vapName macAddress ap2 00:1A:2B:3C:4D:5E
echo "sandbox kept in $R"
