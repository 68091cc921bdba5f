// The authenticator daemon restart.
#include <gtest/gtest.h>

#include "auth/auth.h"
#include "sandbox.h"

namespace {

TEST(EapDaemonRestart, CyclesWirelessPortsAndRewritesEapIfname) {
    kit::Sandbox box("INSERT INTO vlanPortMgmt VALUES ('eth0','BRIDGE'), ('vap0','BRIDGE'),"
                     " ('wds1','BRIDGE'), ('vap2','ACCESS');"
                     "INSERT INTO vlan VALUES (1,'dummy'), (3,'dummy'), (10,'dummy'), (7,'eth0');");
    box.enter();
    box.setCfg("A=1\nEAPifname=br0\nB=2\n");
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), 0);
    EXPECT_EQ(box.cfg(), "A=1\nB=2\nEAPifname=bdg1;bdg3;bdg10\n");
    EXPECT_EQ(box.calls(), (std::vector<std::string>{
                               "killall rt2860apd", "ifconfig vap0 down", "ifconfig wds1 down",
                               "ifconfig vap0 up", "ifconfig wds1 up",
                               box.root() + "/mavo2.0/bin/rt2860apd"}));
}

TEST(EapDaemonRestart, EmptyTablesAndFailures) {
    kit::Sandbox box;
    box.enter();
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), 0);
    EXPECT_EQ(box.cfgLines().back(), "EAPifname=");
    EXPECT_EQ(box.calls().size(), 2u);  // killall and the daemon only

    box.sql("DROP TABLE vlanPortMgmt;");
    std::string before = box.cfg();
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), -1);
    EXPECT_EQ(box.calls().size(), 2u);  // the daemon was not touched

    box.sql("CREATE TABLE vlanPortMgmt (PhyInterfaceName TEXT, PortType TEXT);"
            "INSERT INTO vlanPortMgmt VALUES (NULL, 'BRIDGE');");
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), -1);
    EXPECT_EQ(box.calls().back(), "killall rt2860apd");  // stopped, not restarted
    EXPECT_EQ(box.cfg(), before);
}

}  // namespace
