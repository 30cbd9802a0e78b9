#include "power_cut.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

#include "program.h"

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPage = 4096;

std::string key_of(const fs::path& path) {
    struct statx info {};
    ::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_INO | STATX_BTIME, &info);
    return std::to_string(info.stx_ino) + "-" + std::to_string(info.stx_btime.tv_sec) + "-" +
           std::to_string(info.stx_btime.tv_nsec);
}

template <class Value>
const Value& any_of(const std::vector<Value>& values, std::mt19937& random) {
    return values[random() % values.size()];
}

// Each page as it was synced or as it was left.
std::string mixed(const std::string& synced, const std::string& left, std::mt19937& random) {
    // It may have grown by whole pages first.
    const auto grown = std::max(std::min(synced.size(), left.size()), left.size() / kPage * kPage);
    const std::vector<std::size_t> sizes{synced.size(), left.size(), grown};
    std::string content = synced;
    content.resize(any_of(sizes, random));
    const auto kept = random() % 5;  // of four
    for (std::size_t at = 0; at < std::min(content.size(), left.size()); at += kPage) {
        if (random() % 4 < kept) continue;
        const auto size = std::min({kPage, content.size() - at, left.size() - at});
        content.replace(at, size, left, at, size);
    }
    return content;
}

}  // namespace

PowerCut::PowerCut(fs::path directory, fs::path notes)
    : directory_(std::move(directory)), notes_(std::move(notes)) {
    left_[key_of(directory_)] = directory_;
    for (const auto& entry : fs::recursive_directory_iterator(directory_))
        left_[key_of(entry.path())] = entry.path();
}

// Its names at each moment since it was synced, the last as it was left.
std::vector<PowerCut::Names> PowerCut::lists_of(const std::string& key) const {
    std::vector<Names> lists;
    std::ifstream file(notes_ / ("names-" + key));
    Names names;
    bool is_synced = false;
    for (std::string line; std::getline(file, line);) {
        if (line == "!") {
            is_synced = true;
        } else if (line == "=") {
            lists.push_back(std::exchange(names, {}));
        } else {
            const auto blank = line.find(' ');
            names[line.substr(blank + 1)] = line.substr(0, blank);
        }
    }
    if (!is_synced) lists.insert(lists.begin(), Names());
    if (const auto left = left_.find(key); left != left_.end()) {
        lists.emplace_back();
        for (const auto& entry : fs::directory_iterator(left->second))
            lists.back()[entry.path().filename()] = key_of(entry.path());
    }
    return lists;
}

std::string PowerCut::content_of(const std::string& key, Rest rest, std::mt19937& random) const {
    const auto synced = read_file(notes_ / ("file-" + key));
    const auto found = left_.find(key);
    if (rest == Rest::lost || found == left_.end()) return synced;
    const auto left = read_file(found->second);
    return rest == Rest::kept ? left : mixed(synced, left, random);
}

void PowerCut::build_directory(const std::string& key, const fs::path& place, Rest rest,
                               std::mt19937& random) const {
    fs::create_directory(place);
    fs::permissions(place, fs::perms::owner_all);
    const auto lists = lists_of(key);
    const auto& names = rest == Rest::lost   ? lists.front()
                        : rest == Rest::kept ? lists.back()
                                             : any_of(lists, random);
    for (const auto& [name, file] : names) {
        const auto left = left_.find(file);
        const bool is_directory = fs::exists(notes_ / ("names-" + file)) ||
                                  (left != left_.end() && fs::is_directory(left->second));
        if (is_directory) {
            build_directory(file, place / name, rest, random);
            continue;
        }
        write_file(place / name, content_of(file, rest, random));
        fs::permissions(place / name, fs::perms::owner_read | fs::perms::owner_write);
    }
}

void PowerCut::build(const fs::path& place, Rest rest, std::mt19937& random) const {
    build_directory(key_of(directory_), place, rest, random);
}

}  // namespace test
