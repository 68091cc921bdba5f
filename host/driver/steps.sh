# The rig's own steps, numbered after those of sim/changes.sh: a value
# longer than iwpriv sends (it cuts it at 1024 bytes, with no NUL); a
# change whose run is lost, repaired by --resync.
step "An SSID of 1100 bytes on ap1's profile" \
    "UPDATE dot11Profile SET ssid=replace(hex(zeroblob(550)), '0', 's') WHERE profileName='default'"

# ap1's SSID changed with the tool's run lost, as a power cut between the
# framework's commit and the tool's leaves it, then repaired.  A fresh
# access point is not in step: --resync first, then the driver's records
# cleared before the change and again before the repair, so that they hold
# the repair's alone (in resync, as --resync prints it).
if wanted; then
    tool wlanSyncTool --resync "$R/tmp/system.db" > /dev/null
    echo "-- resync from the boot: exit status $?" >> "$out/report"
    echo > /proc/rt2860sim/log
    tool wlanFramework --drop 1 /bin/wlanSyncTool "$R/tmp/system.db" \
        "UPDATE dot11Profile SET ssid='Found again' WHERE profileName='default'" > /tmp/step 2>&1
    grep '^-- ' /tmp/step >> "$out/report"
    echo > /proc/rt2860sim/log
    tool wlanSyncTool --resync "$R/tmp/system.db" > "$out/resync"
    echo "-- resync: exit status $?" >> "$out/report"
fi
