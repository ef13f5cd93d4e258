// The base section of a simulation set-up file.
#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "core/ProfileReader.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "platform/sim/basesim/SimBaseLibrary.h"

namespace tlx {

namespace {

long long toLong(const std::string& s) {
    const double v = ParseNumber(s);
    return std::fabs(v) < 1e15 ? static_cast<long long>(v) : 0;
}

// "300100050-300100053,300100060": device numbers, in order (malformed parts skipped; a
// range of more than 4095 numbers is not a list of devices in one room).
std::vector<std::string> parseHidList(const std::string& list) {
    std::vector<std::string> out;
    for (const auto& part : split(list, ",")) {
        const std::string p = replaceAll(trim(part), " ", "");
        if (p.empty()) continue;
        const auto [a, b] = splitOnce(p, "-");
        if (!isNumeric(a) || (contains(p, "-") && !isNumeric(b))) continue;
        const long long from = toLong(a);
        const long long to = contains(p, "-") ? toLong(b) : from;
        if (from < 1 || to < from || to - from >= 4095) continue;
        for (long long h = from; h <= to; ++h) out.push_back(numText(h));
    }
    return out;
}

// "24:0,1-10:60": percent of packets lost per channel index.
void parseChannelNoise(const std::string& list, std::map<int, int>& noise) {
    for (const auto& part : split(list, ",")) {
        const auto [channels, percent] = splitOnce(trim(part), ":");
        if (!isNumeric(percent)) continue;
        const int loss = static_cast<int>(std::clamp<long long>(toLong(percent), 0, 100));
        const auto [a, b] = splitOnce(trim(channels), "-");
        if (!isNumeric(a) || (contains(channels, "-") && !isNumeric(b))) continue;
        const long long from = toLong(a);
        const long long to = contains(channels, "-") ? toLong(b) : from;
        for (long long c = std::max(0LL, from); c <= to && c <= 255; ++c) noise[static_cast<int>(c)] = loss;
    }
}

}  // namespace

std::vector<int> parseKeypadList(const std::string& list) {
    std::vector<int> out;
    for (const auto& part : split(list, ",")) {
        const std::string p = trim(part);
        if (p.empty()) continue;
        const auto [a, b] = splitOnce(p, "-");
        if (!isNumeric(a) || (contains(p, "-") && !isNumeric(b))) continue;
        const long long from = toLong(a);
        const long long to = contains(p, "-") ? toLong(b) : from;
        if (from < 1 || to < from || to > 4095) continue;
        for (long long k = from; k <= to; ++k) out.push_back(static_cast<int>(k));
    }
    return out;
}

int loadSimBases(SimBaseLibrary& library, const std::string& file) {
    // Read once: the set-up is asked per keypad (its own firmware), up to 4,095 a base.
    const ProfileReader profile(file);
    auto get = [&](const std::string& section, const std::string& key, const std::string& def = "") {
        return trim(profile.get(section, key, def));
    };
    const std::string seed = get("bases", "seed");
    if (!seed.empty()) library.setSeed(static_cast<unsigned>(toLong(seed)));
    const long long count = toLong(get("bases", "count", "0"));
    int added = 0;
    for (long long n = 1; n <= count && n <= 64; ++n) {
        const std::string sec = "base" + numText(n);
        SimBaseSpec setup;
        setup.type = toUpper(get(sec, "type", "KELVARIN COREHUB G2"));
        const std::string connection = toLower(get(sec, "connection", "usb"));
        setup.connection = connection == "ethernet" ? SimConnection::Ethernet
                          : connection == "serial" || setup.type == "KELVARIN BASE V3" ? SimConnection::Serial
                                                                                     : SimConnection::Usb;
        setup.id = get(sec, "id", numText(100100100100LL + n - 1));
        // Network bases are served on loopback only: 127.0.0.N (the whole 127/8 network is this machine).
        setup.address = get(sec, "address", "127.0.0." + numText(n));
        setup.serialPort = static_cast<int>(toLong(get(sec, "port", numText(n))));
        setup.firmware = get(sec, "firmware", setup.type == "KELVARIN COREHUB G1" ? "1.01.00.1607.1819"
                                                                               : "2.00.01.1801.1545");
        setup.session.PrimaryChannel = static_cast<int>(toLong(get(sec, "channel", "69")));
        setup.session.SessionID = static_cast<int>(toLong(get(sec, "session", "1")));
        const int battery = static_cast<int>(toLong(get(sec, "battery", "385")));
        const int signal = static_cast<int>(toLong(get(sec, "signal", "-45")));

        const std::string registry = get(sec, "registry");
        // A base holds up to 4,095 keypads: each is made once, in place.
        if (!registry.empty()) {
            const auto items = split(registry, "|");
            setup.keypads.reserve(items.size() + 2);
            for (const auto& item : items) {
                const auto f = split(item, ";");
                if (f.size() != 2 || !isNumeric(f[1])) continue;
                SimKeypad k;
                k.hid = trim(f[0]);
                k.sid = static_cast<int>(toLong(f[1]));
                k.battery = battery;
                k.signal = signal;
                setup.keypads.push_back(std::move(k));
            }
        } else {
            const auto sids = parseKeypadList(get(sec, "keypads", "1-20"));
            long long hid = toLong(get(sec, "hidstart", numText(300100001LL + (n - 1) * 10000)));
            setup.keypads.reserve(sids.size() + 2);
            for (int sid : sids) {
                SimKeypad& k = setup.keypads.emplace_back();
                k.hid = std::to_string(hid++);
                k.sid = sid;
                k.battery = battery;
                k.signal = signal;
            }
        }
        // Keypads whose readings differ from the base's: "KEYPAD:READING" items, "," between.
        for (const auto& [key, battery] : {std::pair{"batteries", true}, std::pair{"signals", false}})
            for (const auto& item : split(get(sec, key), ",")) {
                const auto [k, r] = splitOnce(item, ":");
                if (!isNumeric(k) || !isNumeric(r)) continue;
                for (auto& kp : setup.keypads)
                    if (kp.sid == toLong(k)) (battery ? kp.battery : kp.signal) = static_cast<int>(toLong(r));
            }
        // Presenter and scanner devices ship with their own current firmware.
        for (const auto& [key, kind, firmware] :
             {std::tuple{"presenter", DeviceKind::Presenter, "2.00.01.2103.2103"},
              std::tuple{"scanner", DeviceKind::Scanner, "2.00.01.2103.2057"}}) {
            const std::string hid = get(sec, key);
            if (hid.empty()) continue;
            SimKeypad k;
            k.hid = hid;
            k.kind = kind;
            k.firmware = firmware;
            setup.keypads.push_back(std::move(k));
        }
        for (const auto& hid : parseHidList(get(sec, "spares"))) {
            SimKeypad k;
            k.hid = hid;
            k.battery = battery;
            k.signal = signal;
            setup.spares.push_back(k);
        }
        const auto absent = parseHidList(get(sec, "absent"));
        const std::string keypadFirmware = get(sec, "keypadfirmware");
        for (auto* devices : {&setup.keypads, &setup.spares})
            for (auto& k : *devices) {
                if (k.kind == DeviceKind::Keypad && !keypadFirmware.empty()) k.firmware = keypadFirmware;
                if (const std::string own = get(sec, "firmware." + k.hid); !own.empty()) k.firmware = own;
                if (std::find(absent.begin(), absent.end(), k.hid) != absent.end()) k.present = false;
            }
        if (const std::string noise = get(sec, "noise"); isNumeric(noise))
            setup.noise = static_cast<int>(std::clamp<long long>(toLong(noise), 0, 100));
        parseChannelNoise(get(sec, "channelnoise"), setup.channelNoise);
        library.addBase(std::move(setup));
        ++added;
    }
    return added;
}

}  // namespace tlx
