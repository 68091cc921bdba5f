// The replay's steps, in order, each one actor: the radio-wide handlers,
// every enabled VAP started on each of its interfaces, the WDS state,
// multicast to unicast, the country, WPS, RADIUS and EAPifname, and each
// access list written whole.  The handlers run as the change-by-change path
// runs them; the platform only records.  What each step changed in the copy
// says which actor owns a line, and so which one brings the driver in step.
#include <dirent.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "auth/auth.h"
#include "auth/authtext.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "main/resync.h"
#include "main/resynctext.h"
#include "platform/replay.h"
#include "platform/sandbox.h"
#include "platform/sql.h"
#include "radio/radio.h"
#include "radio/radiotext.h"
#include "security/security.h"
#include "vap/vap.h"
#include "vap/vaptext.h"

namespace wlan::resync {

namespace {

using cfg::Lines;

std::string_view keyOf(std::string_view line) {
    std::string_view key = cfg::keyPart(line);
    if (!key.empty() && key.back() == '=') key.remove_suffix(1);
    return key;
}

// Entry i of a line's value split at ';' (a line without '=' is one entry);
// false past the last.
bool entryAt(std::string_view line, int i, std::string_view& entry) {
    size_t eq = line.find('=');
    std::string_view value = eq == std::string_view::npos ? line : line.substr(eq + 1);
    for (;; --i) {
        size_t semi = value.find(';');
        if (i == 0) {
            entry = value.substr(0, semi);
            return true;
        }
        if (semi == std::string_view::npos) return false;
        value.remove_prefix(semi + 1);
    }
}

// The entries of d that differ, as writes of actor: each entry when the key
// has one line on each side, else the key's lines as a whole (entry -1).
void noteChanges(const KeyLines& d, int actor, std::vector<Replay::Write>& out) {
    if (d.before.size() != 1 || d.after.size() != 1) {
        out.push_back({d.key, -1, actor});
        return;
    }
    std::string_view a, b;
    for (int i = 0;; ++i) {
        bool inA = entryAt(d.before[0], i, a), inB = entryAt(d.after[0], i, b);
        if (!inA && !inB) return;
        if (inA != inB || a != b) out.push_back({d.key, i, actor});
    }
}

// Runs a handler that reads no prior row on one row of table, as the
// dispatcher hands it over.
int onRow(const char* dbFile, TableHandler handler, const char* table, int rowId) {
    Rows row = Rows::query(wlanDbHandle, nullptr, sqlFormat(kRow, table, rowId).get());
    return row.empty() ? -1 : handler(dbFile, OP_UPDATE, rowId, row.table(), row.cols(), row.rows(), nullptr);
}

bool validVap(const std::string& ifname) {
    return ifname.size() == 4 && ifname.compare(0, 3, "vap") == 0 && ifname[3] >= '0' && ifname[3] <= '3';
}

// What an actor's handlers do, in the replay and (but for an instance's
// restart and an access list's entries) when bringing the driver in step.
int act(const char* dbFile, const Actor& a) {
    Rows rows;
    switch (a.kind) {
    case Actor::Radio: {  // as the start of the radio's first enabled VAP calls them
        rows = Rows::query(wlanDbHandle, nullptr, sqlFormat(vap::kRadioRow, a.number).get());
        int rc = dot11RadioTblHandler(dbFile, OP_UPDATE, 0, rows.table(), rows.cols(), 1, nullptr);
        rows = Rows::query(wlanDbHandle, nullptr, sqlFormat(vap::kRadio11nRow, a.number).get());
        if (!rows.failed()) dot11Radio11nTblHandler(dbFile, OP_UPDATE, 0, rows.table(), rows.cols(), 1, nullptr);
        return rc;
    }
    case Actor::Instance:
        return startStopVAPInstance(dbFile, a.vap.c_str(), a.ifname.c_str(), a.number, 1);
    case Actor::Wds:
        // WdsList whole: every slot freed as a peer's delete frees it, then
        // each radio's peers set or cleared by its WDS switch.
        for (int slot = 1; slot <= 4; ++slot) dot11WdsDelMac(slot);
        rows = Rows::query(wlanDbHandle, nullptr, kRadios);
        for (int r = 0; r < rows.rows(); ++r) {
            const char* no = rows.value(r, "radioNo");
            const char* wds = rows.value(r, "wdsEnabled");
            Rows ifRows;
            const char* ifname = nullptr;
            if (!no || !wds) continue;
            if (radio::radioInterface(dbFile, dbNumber(no), ifRows, ifname) <= 0)
                ifname = radio::kWdsKeyIf;  // as a peer's change names the one-line keys
            dot11MgmtConfigWDS(ifname, dbNumber(no), dbNumber(wds));
        }
        return 0;
    case Actor::Multicast:
        return multicastEnableDisable(dbFile, OP_UPDATE, 0, nullptr, 0, 0, nullptr);
    case Actor::Country:
        return onRow(dbFile, dot11GlobalConfigTblHandler, "dot11GlobalConfig", a.number);
    case Actor::Wps:
        return onRow(dbFile, dot11WPSTblHandler, "dot11WPS", a.number);
    case Actor::Radius:
        return radiusClientHandler(dbFile, OP_UPDATE, 0, nullptr, 0, 0, nullptr);
    case Actor::Acl: {
        // Written whole: each line the handler edits keeps its key part,
        // then gets the addresses, in rowid order, by the edit an inserted
        // row makes on the interface the handler finds (the VAP's first):
        // all at once, as an address already there or empty adds nothing.
        if (!validVap(a.ifname)) return 0;
        Lines taken;
        cfg::takeLines({(kAclKey + a.ifname.substr(3)).c_str()}, &taken);
        for (const std::string& line : taken) {
            size_t eq = line.find('=');
            cfg::appendLine(eq == std::string::npos ? line : line.substr(0, eq + 1));
        }
        rows = Rows::query(wlanDbHandle, nullptr, sqlFormat(kVapAcl, a.vap.c_str()).get());
        std::string list = "=";
        for (int r = 0; r < rows.rows(); ++r) {
            const char* mac = rows.value(r, "macAddress");
            if (mac && *mac && !cfg::findEntry(list, mac).found) list += (list.size() > 1 ? ";" : "") + std::string(mac);
        }
        if (list.size() > 1) update_cfg_file(a.ifname.c_str(), kAclKey, -1, list.c_str() + 1);
        return 0;
    }
    }
    return 0;
}

// Runs one actor into the copy and notes the entries it changed.  An edit
// keeps the lines it does not take in their order and appends the new ones,
// so the lines a step took and wrote are found in one walk.
int step(const char* dbFile, Replay& r, Actor::Kind kind, const char* vap, const char* ifname, int number) {
    r.actors.push_back({kind, vap, ifname, number});
    const Actor& a = r.actors.back();
    Lines before = *cfg::held();
    int rc = act(dbFile, a);
    const Lines& after = *cfg::held();
    Lines taken;
    size_t j = 0;
    for (std::string& line : before) {
        if (j < after.size() && line == after[j]) ++j;
        else taken.push_back(std::move(line));
    }
    for (const KeyLines& d : differences(taken, Lines(after.begin() + static_cast<std::ptrdiff_t>(j), after.end())))
        noteChanges(d, static_cast<int>(r.actors.size()) - 1, r.writes);
    return rc;
}

bool isUp(const std::string& ifname) {
    int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq req{};
    ifname.copy(req.ifr_name, IFNAMSIZ - 1);
    bool up = fd >= 0 && ioctl(fd, SIOCGIFFLAGS, &req) == 0 && (req.ifr_flags & IFF_UP);
    if (fd >= 0) close(fd);
    return up;
}

// The first size bytes of a file under /proc.
std::string procText(const char* pid, const char* name) {
    char text[512];
    size_t n = 0;
    if (FILE* file = std::fopen(("/proc/" + std::string(pid) + name).c_str(), "r")) {
        n = std::fread(text, 1, sizeof text, file);
        std::fclose(file);
    }
    return std::string(text, n);
}

// The daemon runs when a process has its name, as killall finds it; in a
// sandbox, one started from the sandbox's own path.
bool daemonRunning() {
    DIR* proc = opendir("/proc");
    bool found = false;
    while (dirent* entry = proc ? readdir(proc) : nullptr) {
        const char* pid = entry->d_name;
        found = *pid >= '1' && *pid <= '9' && procText(pid, "/comm") == std::string(auth::kDaemonName) + "\n" &&
                (!*sandboxRoot() || procText(pid, "/cmdline").find(rootPath(auth::kDaemon)) != std::string::npos);
        if (found) break;
    }
    if (proc) closedir(proc);
    return found;
}

// ifconfig down, the instance's start without the radio handlers' commands
// (the file already holds what it writes), then as after a start by name.
int restart(const char* dbFile, const Replay& r, const Actor& a) {
    const char* ifname = a.ifname.c_str();
    dot11IfUpDown(ifname, 0);
    replay::mute(r.radioCommands);
    int rc = act(dbFile, a);
    replay::mute({});
    int reset = drvSet(ifname, vap::kResetCounter, 0);
    if (rc == 0) rc = reset;
    if (dot11MacAddrUpdate(wlanDbHandle, "dot11Interface", ifname) != 0) {
        logMsg(vap::kMacStoreFailed, ifname);
        if (rc == 0) rc = -1;
    }
    return rc;
}

// The addresses that left the interface's list are removed from the
// driver's, the new ones added, as the ACL handler does for a deleted and an
// inserted row.
int aclInStep(const Actor& a, const std::vector<KeyLines>& changed) {
    int status = 0;
    for (const KeyLines& d : changed) {
        if (!validVap(a.ifname) || d.key != kAclKey + a.ifname.substr(3)) continue;
        for (int add = 0; add < 2; ++add) {
            std::string_view entry;
            for (const std::string& line : add ? d.after : d.before) {
                for (int i = 0; entryAt(line, i, entry); ++i) {
                    std::string mac(entry);
                    bool kept = mac.empty();
                    for (const std::string& other : add ? d.before : d.after)
                        kept = kept || cfg::findEntry(other, mac).found;
                    if (kept) continue;
                    int rc = add ? dot11AclAddMac(a.ifname.c_str(), mac.c_str())
                                 : dot11AclDelMac(a.ifname.c_str(), mac.c_str());
                    if (status == 0) status = rc;
                }
            }
        }
    }
    return status;
}

constexpr const char* kActorNames[] = {"the radio of ", "VAP instance ", "WDS", "multicast to unicast",
                                       "the country", "WPS", "RADIUS", "the access list of "};

}  // namespace

std::vector<KeyLines> differences(const Lines& before, const Lines& after) {
    std::vector<KeyLines> out;
    auto add = [&](std::string_view key) {
        for (const KeyLines& d : out)
            if (d.key == key) return;
        KeyLines d{std::string(key), {}, {}};
        for (const std::string& line : before)
            if (keyOf(line) == key) d.before.push_back(line);
        for (const std::string& line : after)
            if (keyOf(line) == key) d.after.push_back(line);
        out.push_back(std::move(d));
    };
    // Each line of before matched against one equal line of after.
    std::string matched(after.size(), '\0');
    for (const std::string& line : before) {
        size_t i = 0;
        while (i < after.size() && (matched[i] || after[i] != line)) ++i;
        if (i < after.size()) matched[i] = 1;
        else add(keyOf(line));
    }
    for (size_t i = 0; i < after.size(); ++i)
        if (!matched[i]) add(keyOf(after[i]));
    return out;
}

bool replay(const char* dbFile, Replay& r) {
    if (!cfg::held()) return false;
    r.file = *cfg::held();  // the file's lines, as the copy reads them
    Rows rows = Rows::query(wlanDbHandle, nullptr, kRadios);
    replay::take();
    for (int row = 0; row < rows.rows(); ++row) {
        const char* no = rows.value(row, "radioNo");
        Rows ifRows;
        const char* ifname = nullptr;
        if (!no) continue;
        radio::radioInterface(dbFile, dbNumber(no), ifRows, ifname);
        step(dbFile, r, Actor::Radio, "", ifname ? ifname : "", dbNumber(no));
    }
    r.radioCommands = replay::take();

    // Every enabled VAP, as its handler starts it: on each of its interfaces
    // in row order, the walk ending at a failed instance.
    rows = Rows::query(wlanDbHandle, nullptr, kVaps);
    for (int v = 0; v < rows.rows(); ++v) {
        const char* name = rows.value(v, "vapName");
        const char* enabled = rows.value(v, "vapEnabled");
        if (!name || !enabled || dbNumber(enabled) == 0) continue;
        Rows ifs = Rows::query(wlanDbHandle, nullptr, sqlFormat(vap::kVapInterfaces, name).get());
        for (int i = 0; i < ifs.rows(); ++i) {
            const char* ifname = ifs.value(i, "interfaceName");
            const char* radioNo = ifs.value(i, "radioNo");
            if (!ifname || !radioNo || step(dbFile, r, Actor::Instance, name, ifname, dbNumber(radioNo)) != 0)
                break;
        }
    }
    step(dbFile, r, Actor::Wds, "", "", 0);
    step(dbFile, r, Actor::Multicast, "", "", 0);
    for (Actor::Kind kind : {Actor::Country, Actor::Wps}) {
        rows = Rows::query(wlanDbHandle, nullptr, kind == Actor::Country ? kCountryRows : kWpsRows);
        for (int i = 0; i < rows.rows(); ++i) step(dbFile, r, kind, "", "", dbNumber(rows.value(i, "rowid")));
    }
    step(dbFile, r, Actor::Radius, "", "", 0);

    // Each VAP's access list, on its first interface.
    rows = Rows::query(wlanDbHandle, nullptr, kInterfaces);
    for (int i = 0; i < rows.rows(); ++i) {
        const char* ifname = rows.value(i, "interfaceName");
        const char* name = rows.value(i, "vapName");
        bool first = ifname && name && std::string(name) != "unused";
        for (const Actor& a : r.actors) first = first && !(a.kind == Actor::Acl && a.vap == name);
        if (first) step(dbFile, r, Actor::Acl, name, ifname, 0);
    }
    return true;
}

int bringInStep(const char* dbFile, const Replay& r, const std::vector<KeyLines>& changed) {
    // Each changed entry's owner: the actor that changed it last.
    std::string owns(r.actors.size(), '\0');
    std::vector<Replay::Write> entries;
    for (const KeyLines& d : changed) noteChanges(d, -1, entries);
    for (const Replay::Write& e : entries)
        for (auto w = r.writes.rbegin(); w != r.writes.rend(); ++w)
            if (w->key == e.key && (e.entry == -1 || w->entry == -1 || w->entry == e.entry)) {
                owns[static_cast<size_t>(w->actor)] = 1;
                break;
            }
    bool daemon = daemonRunning(), anyUp = false;
    for (const Actor& a : r.actors) anyUp = anyUp || (a.kind == Actor::Instance && isUp(a.ifname));

    int status = 0;
    for (size_t i = 0; i < r.actors.size(); ++i) {
        const Actor& a = r.actors[i];
        if (!owns[i]) continue;
        int rc = 0;
        if (a.kind == Actor::Instance || a.kind == Actor::Acl || a.kind == Actor::Radio) {
            if (!isUp(a.ifname)) continue;
            rc = a.kind == Actor::Instance ? restart(dbFile, r, a) : a.kind == Actor::Acl ? aclInStep(a, changed) : act(dbFile, a);
        } else if (a.kind == Actor::Radius || a.kind == Actor::Wds ? daemon && (anyUp || a.kind == Actor::Radius) : anyUp) {
            rc = act(dbFile, a);  // the daemon's keys only while it runs
        }
        if (rc != 0) {
            logMsg(kStepFailed, kActorNames[a.kind], a.ifname.c_str(), rc);
            status = 1;
        }
    }
    return status;
}

}  // namespace wlan::resync
