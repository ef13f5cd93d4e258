#pragma once
// The driver's copy of one base's registry: the keypads registered to it, keyed "K:" + the
// HID read as a number, in the order the base listed them.
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tlx {

struct RegistryEntry {
    std::string HID;
    int SID = 0;  // the keypad number
    int kind = 0; // device kind when a registration told us (presenter, scanner)
    int battery = 0;
    int signal = 0;
};

// "K:" followed by the HID read as a number.
std::string registryKey(std::string_view hid);

class LocalRegistry {
public:
    void clear();
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    // Adds or replaces the entry under its key.
    void put(const RegistryEntry& entry);
    bool remove(const std::string& key);
    const RegistryEntry* find(const std::string& key) const;
    RegistryEntry* find(const std::string& key);
    const RegistryEntry* findSID(int sid) const;
    const std::vector<RegistryEntry>& entries() const { return entries_; }
    const std::string& keyAt(std::size_t i) const { return keys_[i]; }

private:
    std::vector<RegistryEntry> entries_;
    std::vector<std::string> keys_;
    std::unordered_map<std::string, std::size_t> index_;
};

// Reads a registry text: entries separated by "|", each HID + ";" + keypad number. An entry
// that does not split into exactly two fields is skipped.
LocalRegistry parseRegistryText(std::string_view text);

}  // namespace tlx
