# The driver rig's benchmark, sourced by its guest (host/driver/init) in
# place of the runs: both paths side by side, taking turns, each measure
# from the same start (a fresh copy of a root with the real iwpriv and
# busybox's programs in front of the driver, the driver loaded anew):
#   vap  a WPA2-PSK VAP start: ap2 with the "secure" profile, on vap1
#        (root /ap/bench-vap, where the row says so already)
#   day  the day of changes of sim/changes.sh after the access point's
#        boot (root /ap/bench-day)
# Each measure is one line of /out/bench:
#   <what> <path> <wall ms> <processes> <tool runs> <framework runs> <status>
# wall is wlanMeasure's; processes counts every process started in the
# machine during the measure, less those of measuring /bin/true (so not
# the measured process itself); tool and framework runs are those started
# inside the measure.
rounds_vap=5 rounds_day=3
[ ! -f /bench.rounds ] || . /bench.rounds
forks() { while read -r key value; do [ "$key" = processes ] && P=$value && return; done < /proc/stat; }
# measure WHAT PATH CMD...: CMD under wlanMeasure, one line of /out/bench.
measure() {
    what=$1 path=$2
    shift 2
    forks
    before=$P
    wlanMeasure "$@" > /tmp/measure 2> /dev/null
    forks
    set -- $(tail -n 1 /tmp/measure)
    wall=$1 status=$4
    tools=0 frameworks=0
    if [ "$what" = day ]; then
        tools=$(grep -c '^-- ' /tmp/day)
        frameworks=$(grep -c '^== step' /tmp/day)
    fi
    echo "$what $path $wall $((P - before - idle)) $tools $frameworks $status" >> /out/bench
}
# fresh WHAT PATH: the root and the driver as at the start, the path chosen.
fresh() {
    rm -rf "$R"
    cp -a "/ap/bench-$1" "$R"
    rmmod rt2860sim && insmod /lib/modules/rt2860sim.ko || say "reloading rt2860sim failed"
    driver=""
    [ "$2" = direct ] || driver=utility
    export WLANSYNC_DRIVER=$driver WLANSYNC_ROOT=$R
}
# The day as one command, each step applied by the framework.
cat > /tmp/day.sh << 'EOF'
step() {
    echo "== step $1"
    wlanFramework /bin/wlanSyncTool "$WLANSYNC_ROOT/tmp/system.db" "$2"
}
. /changes.sh
EOF
idle=0
forks
before=$P
wlanMeasure /bin/true > /tmp/measure
forks
idle=$((P - before))
: > /out/bench
i=0
while [ "$i" -lt "$rounds_vap" ]; do
    i=$((i + 1))
    for path in utility direct; do
        fresh vap "$path"
        measure vap "$path" /bin/wlanSyncTool "$R/tmp/system.db" 23 dot11VAP 2 vapName vapEnabled ap2 0
    done
done
i=0
while [ "$i" -lt "$rounds_day" ]; do
    i=$((i + 1))
    for path in utility direct; do
        fresh day "$path"
        tool "$R/mavo2.0/bin/rt2860apd"
        for row in $(cat /ap/boot); do tool wlanSyncTool "$R/tmp/system.db" 23 dot11VAP "$row"; done
        measure day "$path" /bin/sh -c '. /tmp/day.sh > /tmp/day 2>&1'
        killall rt2860apd 2> /dev/null
    done
done
unset WLANSYNC_DRIVER WLANSYNC_ROOT
say "BENCH done at $(cut -d ' ' -f 1 /proc/uptime) s"
