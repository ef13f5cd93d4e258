#include "drivers/LocalRegistry.h"

#include <cmath>

#include "core/Text.h"
#include "drivers/BaseStatus.h"

namespace tlx {

std::string registryKey(std::string_view hid) { return "K:" + idText(hid); }

void LocalRegistry::clear() {
    entries_.clear();
    keys_.clear();
    index_.clear();
}

void LocalRegistry::put(const RegistryEntry& entry) {
    const std::string key = registryKey(entry.HID);
    if (auto it = index_.find(key); it != index_.end()) {
        entries_[it->second] = entry;
        return;
    }
    index_.emplace(key, entries_.size());
    entries_.push_back(entry);
    keys_.push_back(key);
}

bool LocalRegistry::remove(const std::string& key) {
    auto it = index_.find(key);
    if (it == index_.end()) return false;
    const std::size_t at = it->second;
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
    keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(at));
    index_.clear();
    for (std::size_t i = 0; i < keys_.size(); ++i) index_.emplace(keys_[i], i);
    return true;
}

const RegistryEntry* LocalRegistry::find(const std::string& key) const {
    auto it = index_.find(key);
    return it == index_.end() ? nullptr : &entries_[it->second];
}

RegistryEntry* LocalRegistry::find(const std::string& key) {
    auto it = index_.find(key);
    return it == index_.end() ? nullptr : &entries_[it->second];
}

const RegistryEntry* LocalRegistry::findSID(int sid) const {
    for (const auto& e : entries_)
        if (e.SID == sid) return &e;
    return nullptr;
}

LocalRegistry parseRegistryText(std::string_view text) {
    LocalRegistry reg;
    for (const auto& item : split(text, "|")) {
        const auto f = split(item, ";");
        if (f.size() != 2) continue;
        const std::string hid = trim(f[0]);
        if (hid.empty()) continue;
        const double sid = ParseNumber(f[1]);
        RegistryEntry e;
        e.HID = hid;
        e.SID = std::fabs(sid) < 2e9 ? static_cast<int>(sid) : 0;
        reg.put(e);
    }
    return reg;
}

}  // namespace tlx
