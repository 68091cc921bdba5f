#!/bin/sh
# One pass of the power-cut loop, changes made as the device's framework
# makes them: loop.sh ROOT TOOL FRAMEWORK.  Each step commits one row to
# the database, which lives on the same disk or flash as the driver file,
# and then runs the tool for it (sim/framework.cpp), so that a cut can fall
# between the two: ap2 enabled, an access-list entry inserted, the channel
# changed, a RADIUS server inserted, the entry deleted, the channel changed
# back, the server deleted (the tool refuses that: its lines stay, drift by
# design) and ap2 disabled.  After a pass the database is as before it.
# Exit statuses are ignored: without a real vap1 the VAP start fails at its
# very end (the MAC address).  With POWERCUT_ENDS set (the reference run),
# the hash of the file after each step is added to that file: a cut there
# is not partway through a change.
R=$1
tool=$2
framework=$3
step() {
    WLANSYNC_ROOT=$R PATH=$R/bin:$PATH "$framework" "$tool" "$R/tmp/system.db" "$1" > /dev/null 2>&1 || true
    [ -z "${POWERCUT_ENDS:-}" ] || sha1sum < "$R/etc/Wireless/RT2860AP/RT2860AP.dat" | cut -d ' ' -f 1 >> "$POWERCUT_ENDS"
}
step "UPDATE dot11VAP SET vapEnabled=1 WHERE vapName='ap2'"
step "INSERT INTO dot11ACL VALUES ('ap2', '00:21:6A:11:22:33')"
step "UPDATE dot11Radio SET configuredChannel=11 WHERE radioNo=1"
step "INSERT INTO radiusClient VALUES ('10.0.0.5', '1812', 'another secret')"
step "DELETE FROM dot11ACL WHERE vapName='ap2'"
step "UPDATE dot11Radio SET configuredChannel=6 WHERE radioNo=1"
step "DELETE FROM radiusClient WHERE authserver='10.0.0.5'"
step "UPDATE dot11VAP SET vapEnabled=0 WHERE vapName='ap2'"
