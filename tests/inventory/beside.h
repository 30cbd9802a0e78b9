// Folders of captures that lie beside the repository on some machines.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace qvhost::inventory::test {

// "captures/ipmitool", "ipmi_sim/samples"; empty where it is not there.
inline std::string folder_beside(const std::string& name) {
    for (const std::string captures : {QV_CAPTURES, QV_CAPTURES_BESIDE}) {
        const auto folder = std::filesystem::path(captures).parent_path() / name;
        if (std::filesystem::is_directory(folder)) return folder.string();
    }
    return {};
}

// The files of a folder whose names begin so, in order.
inline std::vector<std::string> files_in(const std::string& folder, const std::string& beginning) {
    std::vector<std::string> found;
    if (folder.empty()) return found;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().filename().string().starts_with(beginning))
            found.push_back(entry.path().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace qvhost::inventory::test
