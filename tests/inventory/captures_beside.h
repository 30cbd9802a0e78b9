// Captures of many servers, which lie beside the repository on some machines and are no part of it.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace qvhost::inventory {

inline std::string text_of_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The name and text of each capture in the folder; none if there is no such folder.
inline std::vector<std::pair<std::string, std::string>> captures_of(const std::string& tool) {
    namespace fs = std::filesystem;
    std::vector<std::pair<std::string, std::string>> captures;
    for (const char* const root : {QV_CAPTURES, QV_CAPTURES_BESIDE}) {
        const auto folder = fs::path(root) / tool;
        if (!fs::is_directory(folder) || !captures.empty()) continue;
        for (const auto& entry : fs::directory_iterator(folder))
            captures.emplace_back(entry.path().filename(), text_of_file(entry.path()));
    }
    std::sort(captures.begin(), captures.end());
    return captures;
}

}  // namespace qvhost::inventory
