# The rig's own steps, numbered after those of sim/changes.sh: a value
# longer than iwpriv sends (it cuts it at 1024 bytes, with no NUL).
step "An SSID of 1100 bytes on ap1's profile" \
    "UPDATE dot11Profile SET ssid=replace(hex(zeroblob(550)), '0', 's') WHERE profileName='default'"
