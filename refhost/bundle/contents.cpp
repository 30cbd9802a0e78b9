#include "bundle/contents.h"

#include <algorithm>

#include "bundle/archive_reader.h"
#include "bundle/summary_text.h"

namespace qvhost::bundle {

namespace fs = std::filesystem;

namespace {

const std::string kReport = "report/";

void add(const fs::path& directory, const fs::directory_entry& entry, Contents& contents) {
    const auto name = entry.path().lexically_relative(directory).string();
    const auto type = entry.symlink_status().type();
    if (type == fs::file_type::directory) return;
    if (type != fs::file_type::regular) {
        contents.left_out.push_back({name, "it is no file", 0});
        return;
    }
    for (const auto* made : {kManifestName, kManifestDigestName, kSummaryName}) {
        if (name == kReport + std::string(made)) return;  // of the bundle that the report came in
    }
    const auto bytes = entry.file_size();
    if (!is_plain_path(name)) {
        contents.left_out.push_back({name, "not every system takes its name", bytes});
        return;
    }
    contents.files.push_back(
        {name, bytes, !name.starts_with(kReport) && name != "qvhost.log" && name != "console.txt"});
}

}  // namespace

Contents contents_of(const fs::path& directory, const std::vector<std::string>& names) {
    Contents contents;
    for (const auto& name : names) {
        const fs::directory_entry entry(directory / name);
        if (!fs::exists(entry.symlink_status())) continue;
        add(directory, entry, contents);
        if (entry.symlink_status().type() != fs::file_type::directory) continue;
        for (const auto& below : fs::recursive_directory_iterator(entry.path()))
            add(directory, below, contents);
    }
    const auto by_name = [](const auto& a, const auto& b) { return a.name < b.name; };
    std::sort(contents.files.begin(), contents.files.end(), by_name);
    std::sort(contents.left_out.begin(), contents.left_out.end(), by_name);
    return contents;
}

}  // namespace qvhost::bundle
