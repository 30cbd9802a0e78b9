#include "qvhost/present/open_report.h"

#include <iostream>
#include <stdexcept>
#include <string>

#include "qvhost/base/log_dir.h"
#include "qvhost/finish/recover.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

fs::path store_of(const fs::path& report) {
    if (!fs::is_directory(report)) return report;
    const LogDir dir(report);
    if (fs::exists(dir.journal()) && !DirLock::is_held(report)) {
        const auto place = judge_log_dir(report);
        if (!place.refusal.empty())
            throw std::runtime_error(report.string() +
                                     ": a collection was broken off here, and its report cannot be "
                                     "completed: " +
                                     place.refusal);
        const DirLock lock(place.path);
        if (const auto found = recover(LogDir(place.path)); !found.empty())
            std::cerr << "qvhost: found " << one_line(found) << '\n';
    }
    return dir.store();
}

}  // namespace

Report open_report(const fs::path& report) {
    const auto file = store_of(report);
    Report opened{file, Store(file, Store::Mode::read)};
    const auto status = opened.store.status_text();
    if (status.starts_with("incomplete"))
        std::cerr << "qvhost: this collection is " << one_line(status) << '\n';
    return opened;
}

Report open_with_captures(const fs::path& log_dir, const std::string& use) {
    if (!fs::is_directory(log_dir))
        throw std::runtime_error(log_dir.string() + ": " + use +
                                 " a log directory, with its captures");
    auto opened = open_report(log_dir);
    if (fs::exists(LogDir(log_dir).journal()))
        throw std::runtime_error(log_dir.string() + ": a collection is running here");
    return opened;
}

}  // namespace qvhost
