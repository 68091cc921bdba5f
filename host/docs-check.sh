#!/bin/sh
# Keeps README.md and docs/*.md true to the test command: sh host/docs-check.sh
#
# - Every code block is fenced and tagged: ```sh for commands to run,
#   ```text for output, files and anything else shown, ```sql for
#   statements a test reads from the document (docs/drift.md's views).  An indented block
#   (four blanks after an empty line, outside a list) is an error.
# - Every command line of an sh block is run by a stage or listed below as
#   not run, with the reason.  A command line is run by a stage when the same
#   text is a whole line of host/test.sh (each stage's commands stand there
#   alone on their lines, as typed from the top of the checkout).  Compared:
#   the line with a "\" line end joined to the next, a comment from "  #"
#   (two blanks) on dropped, blanks at both ends dropped and runs of blanks
#   made one.  Lines starting with "#" are comments.  An entry of the list
#   that no sh block holds any more is an error too.
# - Every figure of docs/figures.md, a list item "- **name**: text", ends in
#   "(YYYY-MM-DD, machine and load)", may continue on lines indented by two
#   blanks, and has a name no other figure has.
# Prints what fails; ends with "docs checks: N passed, M failed" (one check
# per document), status 0 only when M is 0.
set -u
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top" || exit 1

# Not run by any stage: "reason :: command line", compared as above.
notrun='the test command itself :: sh host/test.sh
one stage of the test command, as an example :: sh host/test.sh plain
the stage list, not a test :: sh host/test.sh --list
needs a board'\''s sysroot (the arm stage builds with Debian'\''s, through host/arm.sh) :: cmake -S . -B build-arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake -DWLANSYNC_SYSROOT=/path/to/target/sysroot -DBUILD_TESTING=OFF
needs a board'\''s build tree :: cmake --build build-arm
needs a board'\''s build tree :: arm-linux-gnueabihf-strip -o /tmp/wlanSyncTool build-arm/wlanSyncTool
needs a board'\''s build tree :: arm-linux-gnueabihf-readelf -d /tmp/wlanSyncTool | grep NEEDED
installs into a root file system for a board :: DESTDIR=/tmp/rootfs cmake --install build --strip
on the device :: wlanSyncTool /tmp/system.db 23 dot11VAP 2
on the device :: WLANSYNC_TRACE=1 wlanSyncTool /tmp/system.db 23 dot11VAP 2
on the device :: logread | grep wlanSyncTool
on the device (the sandbox tests and the oracle run the same options) :: wlanSyncTool --check /tmp/system.db
on the device (the sandbox tests and the oracle run the same options) :: wlanSyncTool --resync /tmp/system.db
example on a simulated access point; the scenario stage runs the same verbs :: sh sim/ap create /tmp/ap
example on a simulated access point; the scenario stage runs the same verbs :: sh sim/ap apply /tmp/ap "UPDATE dot11Radio SET configuredChannel=1"
example on a simulated access point; the scenario stage runs the same verbs :: sh sim/ap driver /tmp/ap
example on a simulated access point; the scenario stage runs the same verbs :: sh sim/ap exec /tmp/ap ip link
example on a simulated access point; the scenario stage runs the same verbs :: sh sim/ap destroy /tmp/ap
example on a simulated access point :: WLANSYNC_TRACE=1 sh sim/ap apply /tmp/ap "UPDATE dot11VAP SET ssid='\''Office'\'' WHERE rowid=2"
a benchmark: it prints figures and judges nothing :: sh sim/bench.sh
a benchmark: it prints figures and judges nothing :: sh host/driver.sh bench
a long series, for figures (the powercut stage runs 20 a file system) :: sh host/powercut.sh 200
a long series, for figures (the powercut stage runs 20 a file system) :: POWERCUT_FS=ubifs POWERCUT_WINDOW=6-10 sh host/powercut.sh 200
the tests of one name, as an example :: ctest --test-dir build -R FieldRules'

docs="README.md $(ls docs/*.md 2> /dev/null)"
passed=0 failed=0 used=""
for doc in $docs; do
    out=$(awk -v doc="$doc" -v figures="$([ "$doc" = docs/figures.md ] && echo 1)" '
        function norm(s) { sub(/  +#.*$/, "", s); gsub(/[ \t]+/, " ", s); sub(/^ /, "", s); sub(/ $/, "", s); return s }
        function fail(n, msg) { printf "%s:%d: %s\n", doc, n, msg }
        function figure(   t) {
            if (item == "") return
            t = item; item = ""
            if (t !~ /^- \*\*[^*]+\*\*: /) { fail(itemline, "a figure is \"- **name**: text (YYYY-MM-DD, machine and load)\": " substr(t, 1, 60)); return }
            if (t !~ /\((20[0-9][0-9])-(0[1-9]|1[0-2])-(0[1-9]|[12][0-9]|3[01]), [^()]+\)$/) { fail(itemline, "a figure without its date, machine and load at its end: " substr(t, 1, 60)); return }
            name = t; sub(/^- \*\*/, "", name); sub(/\*\*.*/, "", name)
            if (name in seen) fail(itemline, "figure " name " named twice (first at line " seen[name] ")")
            seen[name] = itemline
        }
        /^ *```/ {
            figure()
            if (!fence) {
                tag = $0; sub(/^ *```/, "", tag)
                if (tag != "sh" && tag != "text" && tag != "sql") fail(NR, "a code block tagged \"" tag "\": sh for commands, sql for statements a test reads, text for the rest")
                fence = 1; start = NR; cmd = ""
            } else {
                if (cmd != "") fail(NR, "an sh block ending in \\")
                fence = 0
            }
            prevblank = 0
            next
        }
        fence && tag == "sh" {
            line = $0
            if (cmd == "" && line ~ /^[ \t]*(#|$)/) next
            if (line ~ /\\$/) { cmd = cmd substr(line, 1, length(line) - 1) " "; next }
            cmd = cmd line
            print "CMD\t" NR "\t" norm(cmd)
            cmd = ""
            next
        }
        fence { next }
        {
            if (prevblank && !inlist && $0 ~ /^(    |\t)/) fail(NR, "an indented code block: fence it and tag it sh or text")
            if (figures && $0 ~ /^- /) { figure(); item = $0; itemline = NR }
            else if (figures && item != "" && $0 ~ /^  [^ ]/) { t = $0; sub(/^  /, "", t); item = item " " t }
            else if (figures) figure()
            if ($0 ~ /^[ \t]*$/) prevblank = 1
            else { prevblank = 0; inlist = $0 ~ /^([-*] |[0-9]+\. |  )/ }
        }
        END { figure(); if (fence) fail(start, "a code block that never ends") }
    ' "$doc")
    bad=$(printf '%s\n' "$out" | grep -v '^CMD	' | grep .)
    # Each command line: in host/test.sh, or listed as not run.
    cmds=$(printf '%s\n' "$out" | sed -n 's/^CMD	//p')
    while IFS='	' read -r n cmd; do
        [ -n "$cmd" ] || continue
        used="$used
$cmd"
        if sed 's/^[ \t]*//; s/[ \t][ \t]*/ /g; s/ $//' host/test.sh | grep -qxF -- "$cmd"; then continue; fi
        if printf '%s\n' "$notrun" | sed 's/^.* :: //' | grep -qxF -- "$cmd"; then continue; fi
        bad="${bad:+$bad
}$doc:$n: run by no stage and not listed as not run in host/docs-check.sh: $cmd"
    done << EOF
$cmds
EOF
    if [ -n "$bad" ]; then
        printf '%s\n' "$bad"
        echo "FAIL $doc"
        failed=$((failed + 1))
    else
        echo "ok   $doc"
        passed=$((passed + 1))
    fi
done
# The list holds no command that no document shows any more.
stale=$(printf '%s\n' "$notrun" | sed 's/^.* :: //' | sort -u | while IFS= read -r cmd; do
    printf '%s\n' "$used" | grep -qxF -- "$cmd" || echo "host/docs-check.sh: listed as not run, but in no sh block: $cmd"
done)
if [ -n "$stale" ]; then
    printf '%s\n' "$stale"
    echo "FAIL the list of commands not run"
    failed=$((failed + 1))
else
    passed=$((passed + 1))
fi
echo "docs checks: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
