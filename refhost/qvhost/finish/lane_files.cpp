#include "qvhost/finish/lane_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <system_error>

#include "files/descriptor.h"
#include "files/sync.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 1 << 20;

// A longer log stays where it is: a file with holes costs who sends it nothing.
constexpr off_t kMostBytes = 64 << 20;

struct stat info_of(const Descriptor& file) {
    struct stat info {};
    ::fstat(file.get(), &info);
    return info;
}

// A program that is killed in between leaves lines twice, and none out.
void move_behind(const fs::path& from, const fs::path& to) {
    const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!source || info_of(source).st_size > kMostBytes) return;
    const Descriptor target(::open(
        to.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    // What is written to a file with another name stands there as well: in a copy of the directory made of links.
    if (!target || info_of(target).st_nlink > 1) return;
    for (auto block = read_bytes(source.get(), kBlock); !block.empty();
         block = read_bytes(source.get(), kBlock)) {
        if (!write_bytes(target.get(), block)) return;
    }
    std::error_code ignored;
    fs::remove(from, ignored);
}

}  // namespace

std::vector<unsigned> lanes_in(const LogDir& dir) {
    std::vector<unsigned> lanes{1};
    for (unsigned lane = 2; lane <= kMostLanes; ++lane) {
        if (fs::exists(dir.journal(lane)) || fs::exists(dir.commands(lane))) lanes.push_back(lane);
    }
    return lanes;
}

void join_lane_logs(const LogDir& dir) {
    for (unsigned lane = 2; lane <= kMostLanes; ++lane) {
        move_behind(dir.log(lane), dir.log());
        move_behind(dir.console(lane), dir.console());
    }
}

void remove_lane_files(const LogDir& dir, const std::vector<unsigned>& damaged) {
    for (unsigned lane = 1; lane <= kMostLanes; ++lane) {
        const auto journal = dir.journal(lane);
        if (std::find(damaged.begin(), damaged.end(), lane) != damaged.end())
            fs::rename(journal, journal.string() + ".damaged");
        else
            fs::remove(journal);
        if (lane == 1) sync_names(dir.report());
        fs::remove(dir.commands(lane));
    }
}

}  // namespace qvhost
