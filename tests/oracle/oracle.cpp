// The oracle of --check and --resync. Seeded random sequences of valid
// changes go through the framework emulator, from a state that --resync made
// in step; docs/drift.md says which differences are by design.
//   ORACLE_SEED=n   replays the one sequence a failure named
//   ORACLE_RUNS=n   how many sequences (default 12, from a random seed)
#include "sandbox.h"

#include <algorithm>
#include <fnmatch.h>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <sqlite3.h>
#include <sstream>

namespace {

using Strings = std::vector<std::string>;

// --- docs/drift.md: its two tables and its views ---------------------------

struct Kind {
    std::string name;
    Strings keys, by;   // key patterns; the changes that leave the kind
    std::string query;  // where the replay leaves the keys alone
};
struct Drift {
    std::vector<Kind> byDesign, leftAlone;
    std::string views;
};

Strings spans(const std::string& cell) {
    static const std::regex span("`([^`]*)`");
    Strings out;
    for (std::sregex_iterator it(cell.begin(), cell.end(), span), end; it != end; ++it) out.push_back((*it)[1]);
    return out;
}

const Drift& drift() {
    static const Drift doc = [] {
        Drift d;
        std::vector<Kind>* table = nullptr;
        bool sql = false;
        std::istringstream in(kit::readFile(WLANSYNC_DRIFT));
        for (std::string line; std::getline(in, line);) {
            if (line.rfind("```", 0) == 0) sql = !sql && line == "```sql";
            else if (sql) d.views += line + "\n";
            if (line.rfind("| ", 0) != 0) continue;
            Strings cells;
            for (size_t at = 1, bar; (bar = line.find('|', at)) != std::string::npos; at = bar + 1)
                cells.push_back(line.substr(at, bar - at));
            if (cells.size() < 4) continue;
            if (cells[2].find("Left by") != std::string::npos) table = &d.byDesign;
            else if (cells[2].find("Holds for") != std::string::npos) table = &d.leftAlone;
            else if (table == &d.byDesign) table->push_back({cells[0], spans(cells[1]), spans(cells[2]), ""});
            else if (table) table->push_back({cells[0], spans(cells[1]), {}, spans(cells[2]).at(0)});
        }
        return d;
    }();
    return doc;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) text.replace(at, from.size(), to);
}

// The keys the replay leaves alone for the database's state: name patterns,
// with "[n]" for entry n of a list line.
Strings leftAlone(const std::string& dbFile) {
    Strings out;
    sqlite3* db = nullptr;
    sqlite3_open(dbFile.c_str(), &db);
    EXPECT_EQ(sqlite3_exec(db, drift().views.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    for (const Kind& kind : drift().leftAlone) {
        sqlite3_stmt* st = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(db, kind.query.c_str(), -1, &st, nullptr), SQLITE_OK) << kind.query;
        while (st && sqlite3_step(st) == SQLITE_ROW)
            for (std::string key : kind.keys) {
                for (int c = 0; c < sqlite3_column_count(st); ++c) {
                    auto text = sqlite3_column_text(st, c);
                    std::string name = sqlite3_column_name(st, c), value = text ? (const char*)text : "";
                    if (name == "p") replaceAll(key, "{i}", std::to_string(std::atoi(value.c_str()) - 1));
                    replaceAll(key, "{" + name + "}", value);
                }
                out.push_back(key);
            }
        sqlite3_finalize(st);
    }
    sqlite3_close(db);
    return out;
}

bool matches(const std::string& pattern, const std::string& key) { return fnmatch(pattern.c_str(), key.c_str(), 0) == 0; }

bool spared(const Strings& alone, const std::string& key, size_t entry) {
    for (const std::string& pattern : alone) {
        size_t open = pattern.back() == ']' ? pattern.rfind('[') : std::string::npos;
        if (open == std::string::npos ? matches(pattern, key)
                                      : entry && matches(pattern.substr(0, open), key) &&
                                            std::stoul(pattern.substr(open + 1)) == entry)
            return true;
    }
    return false;
}

// --- the driver file ----------------------------------------------------------

// Its lines by key (the text before the first '='), each key's lines sorted.
std::map<std::string, Strings> byKey(const std::string& text) {
    std::map<std::string, Strings> keys;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) keys[line.substr(0, line.find('='))].push_back(line);
    for (auto& [key, lines] : keys) std::sort(lines.begin(), lines.end());
    return keys;
}

Strings entries(const std::string& line) {
    Strings out;
    std::istringstream in(line.substr(line.find('=') + 1) + ";");
    for (std::string entry; std::getline(in, entry, ';');) out.push_back(entry);
    return out;
}

std::string joined(const Strings& lines, const std::string& between = " / ") {
    std::string out;
    for (const auto& line : lines) out += (out.empty() ? "" : between) + line;
    return out.empty() ? "(none)" : out;
}

// Where two files differ, lines in any order, a list line entry by entry,
// but for what the replay leaves alone.
Strings differences(const std::string& a, const std::string& b, const Strings& alone) {
    auto ka = byKey(a), kb = byKey(b);
    std::set<std::string> keys;
    for (const auto& [key, _] : ka) keys.insert(key);
    for (const auto& [key, _] : kb) keys.insert(key);
    Strings out;
    for (const auto& key : keys) {
        const Strings &la = ka[key], &lb = kb[key];
        if (la == lb) continue;
        bool differs = la.size() != 1 || lb.size() != 1 ? !spared(alone, key, 0) : false;
        if (la.size() == 1 && lb.size() == 1) {
            Strings ea = entries(la[0]), eb = entries(lb[0]);
            ea.resize(std::max(ea.size(), eb.size()), "(none)");
            eb.resize(ea.size(), "(none)");
            for (size_t e = 0; e < ea.size(); ++e) differs |= ea[e] != eb[e] && !spared(alone, key, e + 1);
        }
        if (differs) out.push_back(joined(la) + "  against  " + joined(lb));
    }
    return out;
}

// --- the access point -----------------------------------------------------------

// The sample configuration, with WEP keys and pass phrases in both profiles, ap2
// enabled on the WPA2-PSK one, an access-list entry and a WDS peer with WDS on.
const char* const kExtra =
    "UPDATE dot11Profile SET wepkey0='0123456789', wepkey1='1123456789', wepkey2='2123456789',"
    " wepkey3='3123456789', wepAuth='Open', pskPassAscii=ssid||' pass phrase';"
    "UPDATE dot11VAP SET vapEnabled=1, profileName='secure' WHERE vapName='ap2';"
    "INSERT INTO dot11ACL VALUES ('ap1', '00:0C:43:00:00:01');"
    "INSERT INTO dot11WDSPeers VALUES (1, '00:1A:2B:3C:99:01', 1, 'CCMP', 'wds link key');"
    "UPDATE dot11Radio SET wdsEnabled=1;";

kit::Sandbox accessPoint(const std::string& setup = "") {
    kit::Sandbox box(kit::readFile(WLANSYNC_SIM "/default.sql") + kExtra + setup);
    box.interfaces({{"vap0", "00:1a:2b:3c:4d:50"}, {"vap1", "00:1a:2b:3c:4d:51"},
                    {"vap2", "00:1a:2b:3c:4d:52"}, {"vap3", "00:1a:2b:3c:4d:53"}});
    return box;
}

void copyState(const kit::Sandbox& from, const kit::Sandbox& to) {
    kit::writeFile(to.db(), kit::readFile(from.db()));
    kit::writeFile(to.cfgPath(), kit::readFile(from.cfgPath()));
}

// The framework's report of one statement, the tool's run left out when drop.
std::string framework(const kit::Sandbox& box, const std::string& sql, bool drop = false) {
    kit::Args via = {WLANSYNC_FRAMEWORK};
    if (drop) via.insert(via.end(), {"--drop", "1"});
    return kit::Sandbox::finish(box.start({box.db(), sql}, via)).output;
}

// --check: its status, its lines and the keys they name.
struct Check {
    int status;
    Strings lines, keys;
};
Check check(const kit::Sandbox& box) {
    kit::Run run = box.tool({"--check", box.db()});
    Check out{run.status, {}, {}};
    std::istringstream in(run.output);
    for (std::string line; std::getline(in, line);) {
        out.lines.push_back(line);
        out.keys.push_back(line.substr(0, line.find(": ")));
    }
    return out;
}

std::string cfg(const kit::Sandbox& box) { return kit::readFile(box.cfgPath()); }

// --- the changes ---------------------------------------------------------------

struct Step {
    std::string sql;
    Strings events;  // "<op> <table>", "update <table>.<column>", "start"
};

struct Gen {
    std::mt19937 rng;
    const kit::Sandbox& box;
    int serial = 0x100;

    size_t pick(size_t n) { return rng() % n; }
    std::string one(const Strings& options) { return options[pick(options.size())]; }
    int count(const std::string& table) { return std::stoi(box.sql("SELECT count(*) FROM " + table)); }
    std::string row(const std::string& table) {
        return box.sql("SELECT rowid FROM " + table + " ORDER BY rowid LIMIT 1 OFFSET " +
                       std::to_string(pick(count(table))));
    }
    std::string mac() {
        char text[20];
        std::snprintf(text, sizeof text, "'00:0C:43:00:%02X:%02X'", (serial >> 8) & 0xff, serial & 0xff);
        return ++serial, text;
    }
    std::string freeSlot() {
        return box.sql("SELECT s FROM (SELECT 1 s UNION SELECT 2 UNION SELECT 3 UNION SELECT 4) "
                       "WHERE s NOT IN (SELECT wdsIndexNo FROM dot11WDSPeers) LIMIT 1");
    }
    // One row updated: one to most of the columns offered, each to a value drawn from its list.
    Step update(const std::string& table, const std::string& rowid,
                std::vector<std::pair<std::string, Strings>> columns, size_t most = 3) {
        std::shuffle(columns.begin(), columns.end(), rng);
        columns.resize(1 + pick(std::min(most, columns.size())));
        Step step{"UPDATE " + table + " SET ", {"update " + table}};
        for (const auto& [column, values] : columns) {
            step.sql += (step.events.size() > 1 ? ", " : "") + column + "=" + one(values);
            step.events.push_back("update " + table + "." + column);
        }
        step.sql += " WHERE rowid=" + rowid;
        return step;
    }
    Step insert(const std::string& table, const std::string& values) {
        return {"INSERT INTO " + table + " VALUES (" + values + ")", {"insert " + table}};
    }
    Step remove(const std::string& table) {
        return {"DELETE FROM " + table + " WHERE rowid=" + row(table), {"delete " + table}};
    }
};

const Strings kVaps = {"'ap1'", "'ap2'", "'ap3'", "'ap4'"};

// One maker per handled table: a valid change of it, drawn from the current state.
const std::pair<const char*, Step (*)(Gen&)> kMakers[] = {
    {"dot11VAP", [](Gen& g) {
         std::string vap = std::to_string(1 + g.pick(4));
         if (g.pick(2)) return g.update("dot11VAP", vap, {{"vapEnabled", {"0", "1", "1"}}});
         return g.update("dot11VAP", vap,
                         {{"profileName", {"'default'", "'secure'"}}, {"maxClients", {"16", "32", "64"}},
                          {"beaconInterval", {"100", "200"}}, {"dtimInterval", {"1", "3"}},
                          {"rtsThreshold", {"2347", "1000"}}, {"fragThreshold", {"2346", "1500"}},
                          {"preambleMode", {"'Long'", "'Short'"}}, {"rtsCtsProtect", {"0", "1"}},
                          {"apIsolation", {"0", "1"}}, {"defACLPolicy", {"'Open'", "'Allow'", "'Deny'"}}});
     }},
    {"dot11Profile", [](Gen& g) {
         std::string row = std::to_string(1 + g.pick(2));
         Strings ssids = row == "1" ? Strings{"'Guest'", "'Lobby'"} : Strings{"'Office'", "'Staff'"};
         return g.update("dot11Profile", row,
                         {{"ssid", ssids}, {"broadcastSSID", {"0", "1"}},
                          {"security", {"'OPEN'", "'WEP'", "'WPA'", "'WPA2'", "'WPA+WPA2'"}},
                          {"authMethods", {"'PSK'", "'RADIUS'"}}, {"pskPassAscii", {"'pass one'", "'pass two'"}},
                          {"pairwiseCiphers", {"'TKIP'", "'CCMP'", "'TKIP+CCMP'"}},
                          {"groupKeyUpdateInterval", {"3600", "1800"}}, {"pmksaLifetime", {"60", "30"}},
                          {"preAuthStatus", {"0", "1"}}, {"qosEnable", {"0", "1"}},
                          {"defaultCos", {"'Video'", "'Best Effort'"}}, {"wepAuth", {"'Open'", "'Shared'"}},
                          {"defWepkeyIdx", {"0", "1", "2", "3"}}});
     }},
    {"dot11Interface", [](Gen& g) {
         Strings names = kVaps;
         names.push_back("'unused'");
         return g.update("dot11Interface", std::to_string(1 + g.pick(4)), {{"vapName", names}});
     }},
    {"vlanPortMgmt", [](Gen& g) {
         return g.update("vlanPortMgmt", g.row("vlanPortMgmt"), {{"PortType", {"'BRIDGE'", "'ACCESS'"}}});
     }},
    {"dot11WPS", [](Gen& g) {
         return g.update("dot11WPS", std::to_string(1 + g.pick(4)), {{"wpsEnabled", {"0", "1", "2"}}});
     }},
    {"dot11Radio", [](Gen& g) {
         return g.update("dot11Radio", "1",
                         {{"configuredChannel", {"0", "1", "6", "11"}},
                          {"opMode", {"'ng'", "'ng40+'", "'ng40-'", "'b and g'", "'g only'", "'b only'"}},
                          {"wdsEnabled", {"0", "1"}}});
     }},
    {"dot11GlobalConfig", [](Gen& g) {
         return g.update("dot11GlobalConfig", "1", {{"country", {"'840'", "'276'", "'392'", "'8'", "'124'", "'158'"}}});
     }},
    {"dot11ACL", [](Gen& g) {
         size_t what = g.count("dot11ACL") ? g.pick(4) : 3;
         if (what == 0) return g.remove("dot11ACL");
         if (what == 1) return g.update("dot11ACL", g.row("dot11ACL"), {{"macAddress", {g.mac()}}});
         return g.insert("dot11ACL", g.one(kVaps) + ", " + g.mac());
     }},
    {"dot11Radio11n", [](Gen& g) {
         return g.update("dot11Radio11n", "1", {{"puren", {"0", "1"}}, {"chanWidth", {"'20'", "'2040'", "'40'"}}});
     }},
    {"dot11WDSPeers", [](Gen& g) {
         std::string slot = g.freeSlot();
         size_t what = !g.count("dot11WDSPeers") ? 0 : g.pick(slot.empty() ? 4 : 5);
         if (what == 0) {
             std::string cipher = g.one({"'OPEN'", "'TKIP'", "'CCMP'", "'TKIP+CCMP'"});
             return g.insert("dot11WDSPeers", "1, " + g.mac() + ", " + slot + ", " + cipher + ", " +
                                                  (cipher == "'OPEN'" ? "NULL" : "'peer key'"));
         }
         if (what == 1) return g.remove("dot11WDSPeers");
         if (what == 4) return g.update("dot11WDSPeers", g.row("dot11WDSPeers"), {{"wdsIndexNo", {slot}}});
         return g.update("dot11WDSPeers", g.row("dot11WDSPeers"),
                         {{"macAddress", {g.mac()}},
                          {"pairwiseCipher", {"'TKIP', pskPassAscii='key one'", "'CCMP', pskPassAscii='key two'",
                                              "'OPEN'", "'TKIP+CCMP'"}}});
     }},
    {"radiusClient", [](Gen& g) {
         Strings servers = {"'192.168.1.7'", "'10.0.0.9'", "'172.16.0.2'"}, ports = {"'1812'", "'1813'"},
                 secrets = {"'s3cret'", "'another secret'"};
         size_t what = g.count("radiusClient") ? g.pick(3) : 2;
         if (what == 0) return g.remove("radiusClient");
         if (what == 1)
             return g.update("radiusClient", g.row("radiusClient"),
                             {{"authserver", servers}, {"authport", ports}, {"authsecret", secrets}});
         return g.insert("radiusClient", g.one(servers) + ", " + g.one(ports) + ", " + g.one(secrets));
     }},
    {"MulToUni", [](Gen& g) { return g.update("MulToUni", "1", {{"Enabled", {"0", "1"}}}); }},
};

size_t runCount(const std::string& report) { return kit::count("\n" + report, "\n-- "); }

// --check after --resync: in step.
void expectInStep(const kit::Sandbox& box, Strings& faults) {
    Check after = check(box);
    if (after.status != 0) faults.push_back("out of step after --resync: " + joined(after.lines));
}

// One sequence: every table once in a random order, then a few more changes;
// (a) with nothing dropped, every key --check names is drift by design;
// (b) with one run dropped, both files resynced hold the same lines.
void sequence(unsigned seed) {
    std::mt19937 rng(seed);
    kit::Sandbox a = accessPoint(), b = accessPoint();
    std::string story = "ORACLE_SEED=" + std::to_string(seed) + " replays this sequence:\n";
    Strings faults;
    a.tool({"--resync", a.db()});
    expectInStep(a, faults);
    std::vector<size_t> order(std::size(kMakers));
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), rng);
    for (int extra = 0; extra < 4; ++extra) order.push_back(rng() % std::size(kMakers));
    size_t dropped = rng() % order.size();

    Gen gen{std::mt19937(rng()), a};
    std::vector<Step> steps;
    std::set<std::string> events;
    for (size_t i = 0; i < order.size(); ++i) {
        if (i == dropped) copyState(a, b);
        steps.push_back(kMakers[order[i]].second(gen));
        std::string report = framework(a, steps.back().sql);
        if (report.find("Starting VAP instance") != std::string::npos) steps.back().events.push_back("start");
        events.insert(steps.back().events.begin(), steps.back().events.end());
        story += std::to_string(i + 1) + ". " + steps.back().sql + (i == dropped ? "   <- its run dropped\n" : "\n");
        if (runCount(report) != 1) faults.push_back("step " + std::to_string(i + 1) + " ran the tool other than once");
    }
    for (size_t i = dropped; i < steps.size(); ++i) framework(b, steps[i].sql, i == dropped);

    // (a) Nothing dropped: every key named is a kind of drift by design that a change made.
    Check found = check(a);
    if (found.status > 1) faults.push_back("--check status " + std::to_string(found.status));
    for (size_t i = 0; i < found.keys.size(); ++i) {
        bool byDesign = false;
        for (const Kind& kind : drift().byDesign)
            for (const std::string& pattern : kind.keys)
                for (const std::string& by : kind.by) byDesign |= matches(pattern, found.keys[i]) && events.count(by);
        if (!byDesign) faults.push_back("nothing dropped, not drift by design: " + found.lines[i]);
    }

    // (b) One run dropped: both resynced files hold the same lines.
    a.tool({"--resync", a.db()});
    b.tool({"--resync", b.db()});
    expectInStep(a, faults);
    expectInStep(b, faults);
    for (const std::string& line : differences(cfg(a), cfg(b), leftAlone(a.db())))
        faults.push_back("resynced, nothing dropped against one run dropped: " + line);
    if (!faults.empty()) ADD_FAILURE() << story << joined(faults, "\n");
}

TEST(Oracle, RandomSequencesDriftOnlyByDesignAndResyncToOneFile) {
    ASSERT_FALSE(drift().byDesign.empty());
    ASSERT_FALSE(drift().leftAlone.empty());
    const char* given = std::getenv("ORACLE_SEED");
    unsigned first = given ? std::stoul(given) : std::random_device{}() % 1000000;
    int runs = given ? 1 : std::getenv("ORACLE_RUNS") ? std::atoi(std::getenv("ORACLE_RUNS")) : 12;
    for (int run = 0; run < runs && !HasFailure(); ++run) sequence(first + run);
}

// (c) Every table has teeth: with the change's run dropped, the keys that the
// run wrote as the replay writes them are named by --check and repaired by
// --resync. keys: those the change must alter.
struct Tooth {
    const char *setup, *change, *keys;
};
const Tooth kTeeth[] = {
    {"", "UPDATE dot11VAP SET maxClients=16, beaconInterval=200, dtimInterval=3, rtsThreshold=2000, fragThreshold=2000,"
         " preambleMode='Short', rtsCtsProtect=1, apIsolation=1, defACLPolicy='Deny' WHERE vapName='ap2'",
     "MaxStaNum BeaconPeriod DtimPeriod RTSThreshold FragThershold TxPreamble BGProtection NoForwarding AccessPolicy1"},
    {"", "UPDATE dot11VAP SET vapEnabled=1, profileName='secure' WHERE vapName='ap4'",
     "SSID4 AuthMode EncrypType WPAPSK4 DefaultKeyID WmmCapable"},
    {"", "UPDATE dot11Profile SET ssid='Staff', broadcastSSID=0, security='WPA+WPA2', pskPassAscii='new pass phrase',"
         " pairwiseCiphers='TKIP', groupKeyUpdateInterval=1800, pmksaLifetime=30, preAuthStatus=1, qosEnable=0"
         " WHERE profileName='secure'",
     "SSID2 HideSSID AuthMode EncrypType WPAPSK2 RekeyInterval PMKCachePeriod PreAuth WmmCapable"},
    {"", "UPDATE dot11Profile SET security='WEP', wepAuth='Shared', defWepkeyIdx=2 WHERE profileName='default'",
     "EncrypType AuthMode DefaultKeyID Key3Str1"},
    {"", "UPDATE dot11WPS SET wpsEnabled=2 WHERE vapName='ap4'", "WscConfMode"},
    {"UPDATE dot11Radio SET opMode='b only', configuredChannel=0, wdsEnabled=0;",
     "UPDATE dot11Radio SET opMode='ng40-', configuredChannel=11, wdsEnabled=1",
     "WirelessMode HT_BW HT_EXTCHA Channel AutoChannelSelect WdsEnable WdsList"},
    {"", "UPDATE dot11GlobalConfig SET country='276'", "CountryRegion"},
    {"", "INSERT INTO dot11ACL VALUES ('ap2', '00:0C:43:00:00:02')", "AccessControlList1"},
    {"", "DELETE FROM dot11ACL WHERE vapName='ap1'", "AccessControlList0"},
    {"", "UPDATE dot11Radio11n SET puren=1", "WirelessMode"},
    {"", "INSERT INTO dot11WDSPeers VALUES (1, '00:1A:2B:3C:99:02', 3, 'TKIP', 'second key')", "WdsList"},
    {"", "UPDATE dot11WDSPeers SET pskPassAscii='new link key' WHERE rowid=1", "WdsKey"},
    {"", "DELETE FROM dot11WDSPeers", "WdsList"},
    {"", "UPDATE radiusClient SET authserver='10.0.0.7', authport='1813', authsecret='new secret'",
     "RADIUS_Server RADIUS_Port RADIUS_Key own_ip_addr"},
    {"", "UPDATE MulToUni SET Enabled=0", "IgmpSnEnable"},
};

TEST(Oracle, EveryTableHasTeeth) {
    for (const Tooth& tooth : kTeeth) {
        SCOPED_TRACE(tooth.change);
        kit::Sandbox a = accessPoint(tooth.setup), b = accessPoint(tooth.setup);
        a.tool({"--resync", a.db()});
        copyState(a, b);
        EXPECT_EQ(runCount(framework(a, tooth.change)), 1u);
        framework(b, tooth.change, true);
        // The keys whose lines the run wrote, missing where it was dropped.
        auto ka = byKey(cfg(a)), kb = byKey(cfg(b));
        std::set<std::string> lost;
        for (const auto& [key, lines] : ka) if (lines != kb[key]) lost.insert(key);
        std::istringstream want(tooth.keys);
        for (std::string key; want >> key;) EXPECT_TRUE(lost.count(key)) << key << " not altered";
        Check named = check(b);
        EXPECT_EQ(named.status, 1);
        for (const auto& key : lost)
            EXPECT_NE(std::find(named.keys.begin(), named.keys.end(), key), named.keys.end())
                << "--check does not name " << key;
        b.tool({"--resync", b.db()});
        auto repaired = byKey(cfg(b));
        for (const auto& key : lost)
            EXPECT_EQ(joined(repaired[key]), joined(ka[key])) << "--resync does not repair " << key;
    }
}

}  // namespace
