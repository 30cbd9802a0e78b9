#include "ask/facts.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "inventory/survey.h"

namespace qvhost::ask {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kMostBytes = 2u << 20;  // of a capture that is looked through

// "/dev/sda", "/dev/nvme0", "/dev/nvme0n1": a whole drive, whose name is safe in a command line.
bool is_drive(std::string_view name) {
    const auto is_letter = [](char c) { return c >= 'a' && c <= 'z'; };
    if (name.starts_with("nvme"))
        return name.size() > 4 && std::all_of(name.begin() + 4, name.end(), [](char c) {
                   return (c >= '0' && c <= '9') || c == 'n';
               });
    return name.size() > 2 && (name.starts_with("sd") || name.starts_with("hd")) &&
           std::all_of(name.begin(), name.end(), is_letter);
}

// A drive behind a RAID controller is listed with its place there: "megaraid,8", "cciss,0".
bool is_behind_raid(const std::string& type) { return type.find(',') != std::string::npos; }

std::string text_at(const nlohmann::json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

}  // namespace

Facts::Facts(fs::path log_dir, std::set<std::string> foreign)
    : log_dir_(std::move(log_dir)), foreign_(std::move(foreign)) {}

bool Facts::has(const std::string& capture) const {
    std::error_code error;
    const auto file = log_dir_ / capture;
    return !foreign_.contains(capture) && fs::is_regular_file(fs::symlink_status(file, error)) &&
           fs::file_size(file, error) > 0;
}

std::string Facts::text_of(const std::string& capture) const {
    std::error_code error;
    if (!has(capture) || fs::file_size(log_dir_ / capture, error) > kMostBytes) return "";
    std::ifstream file(log_dir_ / capture, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Facts::has_text(const std::string& capture, std::string_view text) const {
    return text_of(capture).find(text) != std::string::npos;
}

void Facts::read(const std::string& capture) {
    captures_.erase(capture);
    whole_.erase(capture);
    if (!has(capture)) return;
    whole_[capture] = inventory::read_capture(log_dir_, capture, captures_[capture]);
}

bool Facts::was_read_whole(const std::string& capture) const {
    const auto found = whole_.find(capture);
    return found != whole_.end() && found->second;
}

std::vector<std::string> Facts::scanned_drives() const {
    // {"devices": [{"name": "/dev/sda", "type": "scsi", "protocol": "SCSI"}]}
    const auto root = nlohmann::json::parse(text_of("host_smartctl_scan.json"), nullptr, false);
    std::vector<std::string> drives;
    if (!root.is_object() || !root.contains("devices") || !root["devices"].is_array())
        return drives;
    for (const auto& device : root["devices"]) {
        const auto path = text_at(device, "name");
        const auto name = path.substr(std::min(path.size(), std::string_view("/dev/").size()));
        if (!path.starts_with("/dev/") || !is_drive(name)) continue;
        if (is_behind_raid(text_at(device, "type"))) continue;
        if (std::find(drives.begin(), drives.end(), name) == drives.end()) drives.push_back(name);
    }
    return drives;
}

}  // namespace qvhost::ask
