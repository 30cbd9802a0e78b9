// What the captures of this collection tell so far, for deciding what to ask next.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "inventory/inventory.h"

namespace qvhost::ask {

class Facts {
public:
    // `foreign`: files in the directory that this collection has not written, by name.
    Facts(std::filesystem::path log_dir, std::set<std::string> foreign);

    // Whether a command of this collection has printed something into the capture.
    bool has(const std::string& capture) const;
    bool has_text(const std::string& capture, std::string_view text) const;

    // The collection writes the capture now.
    void note_written(const std::string& capture) { foreign_.erase(capture); }

    // Takes what the capture tells; once more if it was written once more.
    void read(const std::string& capture);
    bool was_read_whole(const std::string& capture) const;

    // What was read, by capture.
    const std::map<std::string, inventory::Inventory>& captures() const { return captures_; }

    // The drives that `smartctl --scan -j` has found: "sda", "nvme0".
    std::vector<std::string> scanned_drives() const;

private:
    std::string text_of(const std::string& capture) const;

    std::filesystem::path log_dir_;
    std::set<std::string> foreign_;
    std::map<std::string, inventory::Inventory> captures_;
    std::map<std::string, bool> whole_;
};

}  // namespace qvhost::ask
