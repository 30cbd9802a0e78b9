#include "qvhost/finish/earlier_report.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "qvhost/base/options.h"
#include "qvhost/finish/recover.h"
#include "store/store.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

std::string when_it_started(const LogDir& dir) {
    try {
        return Store(dir.store(), Store::Mode::read).meta("started");
    } catch (const std::runtime_error&) {
        return "";
    }
}

bool is_quick_report(const LogDir& dir) {
    try {
        return Store(dir.store(), Store::Mode::read).meta("profile") == kHealthProfile;
    } catch (const std::exception&) {
        return false;
    }
}

fs::path free_name(const LogDir& dir, const std::string& started) {
    // What stands in a store is anybody's text; of this only what a time has gets into a name.
    std::string stamp;
    for (const char c : started) {
        if ((c >= '0' && c <= '9') || c == 'T' || c == 'Z') stamp += c;
    }
    constexpr std::size_t kLongest = 16;  // 20261121T012040Z
    stamp.resize(std::min(stamp.size(), kLongest));
    const auto base = dir.path() / ("report-" + (stamp.empty() ? "unfinished" : stamp));
    auto name = base;
    for (int i = 2; fs::exists(fs::symlink_status(name)); ++i)
        name = base.string() + "-" + std::to_string(i);
    return name;
}

}  // namespace

std::string make_room_for_report(const LogDir& dir, bool is_quick) {
    std::string found;
    if (is_quick && is_quick_report(dir)) {
        fs::remove_all(dir.report());
        fs::remove(dir.log());
    }
    if (fs::exists(fs::symlink_status(dir.report()))) {
        const auto recovered = recover(dir);
        const auto started = when_it_started(dir);
        const auto aside = free_name(dir, started);
        std::error_code ignored;
        fs::rename(dir.log(), dir.report() / dir.log().filename(), ignored);
        fs::rename(dir.report(), aside);
        found = (recovered.empty() ? "an earlier report" + (started.empty() ? "" : " of " + started)
                                   : recovered) +
                "; it is now in " + aside.string();
    }
    make_private_directory(dir.report());
    return found;
}

}  // namespace qvhost
