// The authenticator: daemon restart, RADIUS servers, VAP bridge ports.
#include "auth/auth.h"
#include "sandbox.h"

namespace {

using Lines = std::vector<std::string>;

TEST(EapDaemonRestart, CyclesWirelessPortsAndRewritesEapIfname) {
    kit::Entered box("INSERT INTO vlanPortMgmt VALUES ('eth0','BRIDGE'), ('vap0','BRIDGE'), ('wds1','BRIDGE'),"
                     " ('vap2','ACCESS'); INSERT INTO vlan VALUES (1,'dummy'), (3,'dummy'), (10,'dummy'), (7,'eth0');");
    box.setCfg("A=1\nEAPifname=br0\nB=2\n");
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), 0);
    EXPECT_EQ(box.cfg(), "A=1\nB=2\nEAPifname=bdg1;bdg3;bdg10\n");
    Lines calls = {"killall rt2860apd", "ifconfig vap0 down", "ifconfig wds1 down", "ifconfig vap0 up",
                   "ifconfig wds1 up", box.daemon()};
    EXPECT_EQ(box.calls(), calls);

    box.sql("DELETE FROM vlanPortMgmt; DELETE FROM vlan;");
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), 0);
    EXPECT_EQ(box.cfg(), "A=1\nB=2\nEAPifname=\n");
    EXPECT_EQ(box.calls().size(), calls.size() + 2);  // killall and the daemon only

    box.sql("DROP TABLE vlanPortMgmt;");
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), -1);
    EXPECT_EQ(box.calls().size(), calls.size() + 2);  // the daemon was not touched
    box.sql("CREATE TABLE vlanPortMgmt (PhyInterfaceName TEXT, PortType TEXT);"
            "INSERT INTO vlanPortMgmt VALUES (NULL, 'BRIDGE');");
    EXPECT_EQ(eapDaemonRestart(box.db().c_str()), -1);
    EXPECT_EQ(box.calls().back(), box.daemon());  // a failure starts it again: 802.1X never left down
    EXPECT_EQ(box.cfg(), "A=1\nB=2\nEAPifname=\n");
}

// The lines the RADIUS rewrite owns, in file order.
std::string radiusLines(const kit::Sandbox& box) {
    std::string owned;
    for (const auto& line : box.cfgLines())
        if (line.rfind("RADIUS_", 0) == 0 || line.rfind("own_ip_addr", 0) == 0) owned += line + "\n";
    return owned;
}

std::string server(const std::string& address, const std::string& port, const std::string& secret) {
    std::string lines;
    for (auto [key, v] : {std::pair{"Server", address}, {"Port", port}, {"Key", secret}})
        lines += "RADIUS_" + std::string(key) + "=" + v + ";" + v + ";" + v + ";" + v + "\n";
    return lines;
}

TEST(RadiusClient, InsertRewritesTheServersLastAndRestartsTheDaemon) {
    kit::Sandbox box("INSERT INTO radiusClient VALUES ('192.168.1.5', '1812', 's');"
                     "INSERT INTO ipAddressTable VALUES ('10.0.0.1', 2), ('192.168.1.10', 2);");
    std::string cfg = box.cfg();  // RADIUS_Server to EAPifname stand together there
    cfg.erase(cfg.find("RADIUS_Server="), cfg.find("PreAuthifname=") - cfg.find("RADIUS_Server="));
    EXPECT_EQ(box.change(18, "radiusClient", 1).status, 0);
    EXPECT_EQ(box.cfg(), cfg + "own_ip_addr=192.168.1.10\n" + server("192.168.1.5", "1812", "s") + "EAPifname=\n");
    Lines restart = {"killall rt2860apd", "killall rt2860apd", box.daemon()};
    EXPECT_EQ(box.calls(), restart);

    EXPECT_EQ(box.change(9, "radiusClient", 1, {"authserver", "192.168.1.5"}).status, 255);
    EXPECT_EQ(box.log(), "[8] radiusClientHandler:969: Invalid delete database operation.\n");
    EXPECT_EQ(box.calls(), restart);  // the daemon keeps running
    box.sql("DELETE FROM radiusClient;");  // no row left to report: called as the framework would
    box.enter();
    EXPECT_EQ(radiusClientHandler(box.db().c_str(), 23, 1, nullptr, 0, 0, nullptr), 0);
    EXPECT_EQ(radiusLines(box), "");
}

TEST(RadiusClient, OwnAddressAndValuesAsTheyStand) {
    const std::string row = "INSERT INTO radiusClient VALUES ", own = "; INSERT INTO ipAddressTable VALUES ";
    const std::string evil = "x'; touch PWNED; '$(touch PWNED)`touch PWNED`;";
    // With status 255 the file keeps the lines it had.
    struct Case { std::string sql, lines; int status; std::string log = ""; } cases[] = {
        {row + "('192.168.10.5', '1', 's')" + own + "('192.168.1.10', 2)", server("192.168.10.5", "1", "s"), 0},
        {row + "('10.1.2.3', '1', 'a'), ('192.168.1.5', '2', 'b')" + own + "('192.168.1.10', 2), ('10.1.2.1', 2)",
         "own_ip_addr=10.1.2.1\n" + server("10.1.2.3", "1", "a") + server("192.168.1.5", "2", "b"), 0},
        {row + "('192.168.1.5', '1', 's')" + own + "('192.168', 2)", server("192.168.1.5", "1", "s"), 0},
        {row + "('1.2.3.4;$(touch PWNED)', '1', " + kit::sqlText(evil) + ")",
         server("1.2.3.4;$(touch PWNED)", "1", evil), 0},
        {row + "('1.2.3.4', '1', 'a' || char(10) || 'b')", "", 255,
         "[8] radiusClientHandler:1004: Value of RADIUS_Key holds a line end: not written.\n"},
        {row + "('1.2.3.4', NULL, 's')", "", 255},
    };
    for (const Case& c : cases) {
        kit::Sandbox box;
        box.sql(box.armed(c.sql) + ";");
        std::string before = radiusLines(box);
        EXPECT_EQ(box.change(18, "radiusClient", 1).status, c.status) << c.sql;
        EXPECT_EQ(radiusLines(box), c.status ? before : box.armed(c.lines)) << c.sql;
        EXPECT_FALSE(box.pwned()) << c.sql;
        EXPECT_EQ(box.log(), c.log);
        EXPECT_EQ(box.calls().back(), box.daemon()) << c.sql;  // a failure too leaves it running
    }
}

TEST(VlanPortMgmt, OnlyAVapBridgePortRestartsTheDaemon) {
    // {opType, port, type, restarts}; a deleted row is judged by its prior values.
    for (auto [op, name, type, restarts] : {std::tuple{18, "vap1", "BRIDGE", true}, {23, "eth0", "BRIDGE", false},
                                            {18, "wds0", "BRIDGE", false}, {18, "vap1", "ACCESS", false},
                                            {9, "vap1", "BRIDGE", true}, {9, "eth0", "BRIDGE", false}}) {
        kit::Sandbox box("INSERT INTO vlan VALUES (5, 'dummy');");
        box.sql(op == 9 ? "" : "INSERT INTO vlanPortMgmt VALUES ('" + std::string(name) + "', '" + type + "');");
        EXPECT_EQ(box.change(op, "VlanPortMgmt", 1, {"PhyInterfaceName", "PortType", name, type}).status, 0);
        EXPECT_EQ(!box.calls().empty(), restarts) << name << " " << type;
        EXPECT_EQ(box.cfgLines().back() == "EAPifname=bdg5", restarts) << name;
    }
    kit::Sandbox box("INSERT INTO vlanPortMgmt VALUES ('vap1', NULL);");
    EXPECT_EQ(box.change(18, "VlanPortMgmt", 1).status, 255);
    box.sql("UPDATE vlanPortMgmt SET PortType='BRIDGE'; DROP TABLE vlan;");
    EXPECT_EQ(box.change(23, "VlanPortMgmt", 1).status, 255);  // the restart failed
}

}  // namespace
