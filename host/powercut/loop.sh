#!/bin/sh
# One pass of the power-cut loop, real tool invocations against a fixed
# database: loop.sh ROOT TOOL.  Starts VAP ap2, inserts an access-list
# entry, changes the channel, inserts a RADIUS server, deletes the entry and
# changes the channel back: one replacement of the driver configuration file
# each.  The channel changes read a second database that differs only in the
# channel, so that nothing writes to a database.  Exit statuses are ignored:
# without a real vap1 the VAP start fails at its very end (the MAC address).
# With POWERCUT_ENDS set (the reference run), the hash of the file at the end
# of each invocation is added to that file: a cut there is not partway
# through a change.
R=$1
tool=$2
db=$R/tmp/system.db
radio="radioNo interfaceName cardNo rogueAPEnabled configuredChannel band opMode
       dothEnabled dothMaxPower dothMarkDfs wdsEnabled"
run() {
    WLANSYNC_ROOT=$R PATH=$R/bin:$PATH "$tool" "$@" > /dev/null 2>&1 || true
    [ -z "${POWERCUT_ENDS:-}" ] || sha1sum < "$R/etc/Wireless/RT2860AP/RT2860AP.dat" | cut -d ' ' -f 1 >> "$POWERCUT_ENDS"
}
run "$db" 23 dot11VAP 2 vapName vapEnabled profileName ap2 0 default
run "$db" 18 dot11ACL 1
# shellcheck disable=SC2086 # the column names are words
run "$R/tmp/channel11.db" 23 dot11Radio 1 $radio 1 wlan0 1 0 6 2.4GHz ng 0 0 0 0
run "$db" 18 radiusClient 2
run "$db" 9 dot11ACL 1 vapName macAddress ap2 00:21:6A:11:22:33
# shellcheck disable=SC2086
run "$db" 23 dot11Radio 1 $radio 1 wlan0 1 0 11 2.4GHz ng 0 0 0 0
