// The replay's steps, in order, each one actor: the radio-wide handlers,
// every enabled VAP started on each of its interfaces, the WDS state,
// multicast to unicast, the country, WPS, RADIUS and EAPifname, and each
// access list written whole.  The handlers run as the change-by-change path
// runs them; the platform only records.  What each step changed in the copy
// says which actor owns a line, and so which one brings the driver in step.
#include <algorithm>
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

// A line's entries: its value split at ';' (a line without '=' is one).
std::vector<std::string_view> entries(std::string_view line) {
    size_t eq = line.find('=');
    if (eq == std::string_view::npos) return {line};
    std::vector<std::string_view> out;
    for (std::string_view value = line.substr(eq + 1);;) {
        size_t semi = value.find(';');
        out.push_back(value.substr(0, semi));
        if (semi == std::string_view::npos) return out;
        value.remove_prefix(semi + 1);
    }
}

// The entries that differ: each index when the key has one line on each
// side, else -1 (the lines as a whole).
std::vector<int> changedEntries(const KeyLines& d) {
    if (d.before.size() != 1 || d.after.size() != 1) return {-1};
    std::vector<std::string_view> a = entries(d.before[0]), b = entries(d.after[0]);
    std::vector<int> out;
    for (size_t i = 0; i < std::max(a.size(), b.size()); ++i)
        if (i >= a.size() || i >= b.size() || a[i] != b[i]) out.push_back(static_cast<int>(i));
    return out;
}

const Lines* copyLines() {
    const std::string* disk;
    return cfg::held(&disk);
}

// Runs a handler on one row of table, as the dispatcher hands it over.
int onRow(const char* dbFile, TableHandler handler, const char* table, int opType, int rowId) {
    Rows row = Rows::query(wlanDbHandle, nullptr, sqlFormat(kRow, table, rowId).get());
    if (row.empty()) return -1;
    std::vector<char*> noPrior(2 * static_cast<size_t>(row.cols()) + 1, nullptr);
    return handler(dbFile, opType, rowId, row.table(), row.cols(), row.rows(), noPrior.data());
}

std::vector<int> rowIds(const char* statement) {
    Rows rows = Rows::query(wlanDbHandle, nullptr, statement);
    std::vector<int> ids;
    for (int r = 0; r < rows.rows(); ++r) ids.push_back(dbNumber(rows.value(r, "rowid")));
    return ids;
}

// An access list the ACL handler will fill: each line it edits keeps only
// its key part.  Names the handler refuses are left alone.
void emptyAccessList(const std::string& ifname) {
    if (ifname.size() != 4 || ifname.compare(0, 3, "vap") != 0 || ifname[3] < '0' || ifname[3] > '3')
        return;
    Lines taken;
    if (!cfg::takeLines({(kAclKey + ifname.substr(3)).c_str()}, &taken)) return;
    for (const std::string& line : taken) {
        size_t eq = line.find('=');
        cfg::appendLine(eq == std::string::npos ? line : line.substr(0, eq + 1));
    }
}

// What an actor's handlers do, in the replay and (but for an instance's
// restart and an access list's entries) when bringing the driver in step.
int act(const char* dbFile, const Actor& a) {
    switch (a.kind) {
    case Actor::Radio: {  // as the start of the radio's first enabled VAP calls them
        Rows radio = Rows::query(wlanDbHandle, nullptr, sqlFormat(vap::kRadioRow, a.number).get());
        int rc = dot11RadioTblHandler(dbFile, OP_UPDATE, 0, radio.table(), radio.cols(), 1, nullptr);
        Rows ht = Rows::query(wlanDbHandle, nullptr, sqlFormat(vap::kRadio11nRow, a.number).get());
        if (!ht.failed()) dot11Radio11nTblHandler(dbFile, OP_UPDATE, 0, ht.table(), ht.cols(), 1, nullptr);
        return rc;
    }
    case Actor::Instance:
        return startStopVAPInstance(dbFile, a.vap.c_str(), a.ifname.c_str(), a.number, 1);
    case Actor::Wds: {
        // WdsList whole: every slot freed as a peer's delete frees it, then
        // each radio's peers set or cleared by its WDS switch.
        for (int slot = 1; slot <= 4; ++slot) dot11WdsDelMac(slot);
        Rows radios = Rows::query(wlanDbHandle, nullptr, kRadios);
        for (int r = 0; r < radios.rows(); ++r) {
            const char* no = radios.value(r, "radioNo");
            const char* wds = radios.value(r, "wdsEnabled");
            if (!no || !wds) continue;
            Rows ifRows;
            const char* ifname = nullptr;
            if (radio::radioInterface(dbFile, dbNumber(no), ifRows, ifname) <= 0)
                ifname = radio::kWdsKeyIf;  // as a peer's change names the one-line keys
            dot11MgmtConfigWDS(ifname, dbNumber(no), dbNumber(wds));
        }
        return 0;
    }
    case Actor::Multicast:
        return multicastEnableDisable(dbFile, OP_UPDATE, 0, nullptr, 0, 0, nullptr);
    case Actor::Country:
        return onRow(dbFile, dot11GlobalConfigTblHandler, "dot11GlobalConfig", OP_UPDATE, a.number);
    case Actor::Wps:
        return onRow(dbFile, dot11WPSTblHandler, "dot11WPS", OP_UPDATE, a.number);
    case Actor::Radius:
        return radiusClientHandler(dbFile, OP_UPDATE, 0, nullptr, 0, 0, nullptr);
    case Actor::Acl:
        emptyAccessList(a.ifname);
        for (int id : rowIds(sqlFormat(kVapAcl, a.vap.c_str()).get()))
            onRow(dbFile, dot11ACLTblHandler, "dot11ACL", OP_INSERT, id);
        return 0;
    }
    return 0;
}

// Runs one actor into the copy and notes the entries it changed.
int step(const char* dbFile, Replay& r, Actor a) {
    Lines before = *copyLines();
    int rc = act(dbFile, a);
    int actor = static_cast<int>(r.actors.size());
    for (const KeyLines& d : differences(std::move(before), *copyLines()))
        for (int entry : changedEntries(d)) r.writes.push_back({d.key, entry, actor});
    r.actors.push_back(std::move(a));
    return rc;
}

// The actors whose writes stand last for the changed entries of d.
std::vector<int> owners(const Replay& r, const KeyLines& d) {
    std::vector<int> entries = changedEntries(d), out, seen;
    for (auto w = r.writes.rbegin(); w != r.writes.rend(); ++w) {
        if (w->key != d.key) continue;
        bool wanted = entries[0] == -1 || w->entry == -1 ||
                      std::find(entries.begin(), entries.end(), w->entry) != entries.end();
        bool shadowed = w->entry != -1 && std::find(seen.begin(), seen.end(), w->entry) != seen.end();
        if (wanted && !shadowed && std::find(out.begin(), out.end(), w->actor) == out.end())
            out.push_back(w->actor);
        if (w->entry == -1) break;  // it wrote the key whole: earlier writes are gone
        seen.push_back(w->entry);
    }
    return out;
}

bool isUp(const std::string& ifname) {
    int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    ifreq req{};
    ifname.copy(req.ifr_name, IFNAMSIZ - 1);
    bool up = ioctl(fd, SIOCGIFFLAGS, &req) == 0 && (req.ifr_flags & IFF_UP);
    close(fd);
    return up;
}

// The daemon runs when a process has its name, as killall finds it.
bool daemonRunning() {
    DIR* proc = opendir("/proc");
    if (!proc) return false;
    bool found = false;
    while (dirent* entry = readdir(proc)) {
        if (entry->d_name[0] < '1' || entry->d_name[0] > '9') continue;
        FILE* comm = std::fopen(("/proc/" + std::string(entry->d_name) + "/comm").c_str(), "r");
        char name[32] = {};
        if (!comm) continue;
        found = std::fgets(name, sizeof name, comm) && std::string(name) == std::string(auth::kDaemonName) + "\n";
        std::fclose(comm);
        if (found) break;
    }
    closedir(proc);
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

// The entries that left the list are removed from the driver's, the new
// ones added, as the ACL handler does for a deleted and an inserted row.
int aclInStep(const Actor& a, const std::vector<const KeyLines*>& owned) {
    int status = 0;
    for (const KeyLines* d : owned) {
        std::vector<std::string_view> before, after;
        for (const std::string& line : d->before) for (auto e : entries(line)) before.push_back(e);
        for (const std::string& line : d->after) for (auto e : entries(line)) after.push_back(e);
        for (int add = 0; add < 2; ++add) {
            for (std::string_view e : add ? after : before) {
                const auto& other = add ? before : after;
                if (e.empty() || std::find(other.begin(), other.end(), e) != other.end()) continue;
                std::string mac(e);
                int rc = add ? dot11AclAddMac(a.ifname.c_str(), mac.c_str())
                             : dot11AclDelMac(a.ifname.c_str(), mac.c_str());
                if (status == 0) status = rc;
            }
        }
    }
    return status;
}

constexpr const char* kActorNames[] = {"radio of ",   "VAP instance ", "WDS",      "multicast to unicast",
                                       "country",     "WPS row ",      "RADIUS",   "access list of "};

}  // namespace

std::vector<KeyLines> differences(Lines before, Lines after) {
    auto byKey = [](const std::string& x, const std::string& y) {
        std::string_view kx = keyOf(x), ky = keyOf(y);
        return kx != ky ? kx < ky : x < y;
    };
    std::sort(before.begin(), before.end(), byKey);
    std::sort(after.begin(), after.end(), byKey);
    std::vector<KeyLines> out;
    for (size_t i = 0, j = 0; i < before.size() || j < after.size();) {
        bool fromBefore = i < before.size() && (j >= after.size() || keyOf(before[i]) <= keyOf(after[j]));
        KeyLines d{std::string(keyOf(fromBefore ? before[i] : after[j])), {}, {}};
        for (; i < before.size() && keyOf(before[i]) == d.key; ++i) d.before.push_back(std::move(before[i]));
        for (; j < after.size() && keyOf(after[j]) == d.key; ++j) d.after.push_back(std::move(after[j]));
        if (d.before != d.after) out.push_back(std::move(d));
    }
    return out;
}

bool replay(const char* dbFile, Replay& r) {
    if (!copyLines()) return false;
    Rows radios = Rows::query(wlanDbHandle, nullptr, kRadios);
    replay::take();
    for (int row = 0; row < radios.rows(); ++row) {
        const char* no = radios.value(row, "radioNo");
        if (!no) continue;
        Rows ifRows;
        const char* ifname = nullptr;
        radio::radioInterface(dbFile, dbNumber(no), ifRows, ifname);
        step(dbFile, r, {Actor::Radio, "", ifname ? ifname : "", dbNumber(no)});
    }
    r.radioCommands = replay::take();

    // Every enabled VAP, as its handler starts it: on each of its interfaces
    // in row order, the walk ending at a failed instance.
    Rows vaps = Rows::query(wlanDbHandle, nullptr, kVaps);
    for (int v = 0; v < vaps.rows(); ++v) {
        const char* name = vaps.value(v, "vapName");
        const char* enabled = vaps.value(v, "vapEnabled");
        if (!name || !enabled || dbNumber(enabled) == 0) continue;
        Rows ifs = Rows::query(wlanDbHandle, nullptr, sqlFormat(vap::kVapInterfaces, name).get());
        for (int i = 0; i < ifs.rows(); ++i) {
            const char* ifname = ifs.value(i, "interfaceName");
            const char* radioNo = ifs.value(i, "radioNo");
            if (!ifname || !radioNo || step(dbFile, r, {Actor::Instance, name, ifname, dbNumber(radioNo)}) != 0)
                break;
        }
    }
    step(dbFile, r, {Actor::Wds, "", "", 0});
    step(dbFile, r, {Actor::Multicast, "", "", 0});
    for (int id : rowIds(sqlFormat(kRowIds, "dot11GlobalConfig").get())) step(dbFile, r, {Actor::Country, "", "", id});
    for (int id : rowIds(sqlFormat(kRowIds, "dot11WPS").get())) step(dbFile, r, {Actor::Wps, "", "", id});
    step(dbFile, r, {Actor::Radius, "", "", 0});

    // Each VAP's access list on its first interface, the line its handler edits.
    Rows ifs = Rows::query(wlanDbHandle, nullptr, kInterfaces);
    std::vector<std::string> done;
    for (int i = 0; i < ifs.rows(); ++i) {
        const char* ifname = ifs.value(i, "interfaceName");
        const char* name = ifs.value(i, "vapName");
        if (!ifname || !name || std::string(name) == "unused" ||
            std::find(done.begin(), done.end(), name) != done.end())
            continue;
        done.emplace_back(name);
        step(dbFile, r, {Actor::Acl, name, ifname, 0});
    }
    return true;
}

int bringInStep(const char* dbFile, const Replay& r, const std::vector<KeyLines>& changed) {
    std::vector<std::vector<const KeyLines*>> owned(r.actors.size());
    for (const KeyLines& d : changed)
        for (int actor : owners(r, d)) owned[static_cast<size_t>(actor)].push_back(&d);
    bool daemon = daemonRunning();
    bool anyUp = false;
    for (const Actor& a : r.actors)
        if (a.kind == Actor::Instance && isUp(a.ifname)) anyUp = true;

    int status = 0;
    for (size_t i = 0; i < r.actors.size(); ++i) {
        const Actor& a = r.actors[i];
        if (owned[i].empty()) continue;
        int rc = 0;
        switch (a.kind) {
        case Actor::Instance:
            if (isUp(a.ifname)) rc = restart(dbFile, r, a);
            break;
        case Actor::Acl:
            if (isUp(a.ifname)) rc = aclInStep(a, owned[i]);
            break;
        case Actor::Radio:
            if (isUp(a.ifname)) rc = act(dbFile, a);
            break;
        case Actor::Wds:  // its peers' links go through the daemon
        case Actor::Radius:
            if (daemon && (anyUp || a.kind == Actor::Radius)) rc = act(dbFile, a);
            break;
        default:
            if (anyUp) rc = act(dbFile, a);
            break;
        }
        if (rc != 0) {
            std::string detail = a.ifname.empty() && a.number ? std::to_string(a.number) : a.ifname;
            logMsg(kStepFailed, kActorNames[a.kind], detail.c_str(), rc);
            status = 1;
        }
    }
    return status;
}

}  // namespace wlan::resync
