#!/bin/sh
# Installs what building and testing wlanSyncTool needs on Debian (bookworm).
set -eu
need=""
for pkg in cmake g++ make libsqlite3-dev sqlite3 libgtest-dev iproute2 net-tools psmisc; do
    dpkg -s "$pkg" >/dev/null 2>&1 || need="$need $pkg"
done
if [ -n "$need" ]; then
    SUDO=""
    [ "$(id -u)" -eq 0 ] || SUDO=sudo
    $SUDO apt-get update || true  # a mirror out of step: install from what was fetched
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends $need
fi
