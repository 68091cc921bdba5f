# The day of changes of the simulated access point, one step each as the
# device's framework would apply it: step TITLE SQL.  Sourced by
# sim/scenario.sh and by the driver rig, each with its own step.
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
