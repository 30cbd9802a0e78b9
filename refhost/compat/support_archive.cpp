// The archive of the distribution's support tool is packed in /tmp, where everybody can write, and then
// moved into the log directory by the plug-in's
//     mv /tmp/sosreport-OSlogs-* 'LOG'
//     mv /tmp/nts_linux* 'LOG'
// The tools name it otherwise nowadays: sosreport-HOST-OSlogs-2026-11-22-abcdefg.tar.xz, or
// scc_HOST_261122_0417.txz, with a checksum beside it. Moved in is what this collection's tool packed:
// a file of the user's own, in a /tmp that only the tool saw, or at least new in /tmp.
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <string_view>
#include <system_error>

#include "compat/script_parts.h"
#include "compat/stand_in.h"
#include "files/descriptor.h"
#include "files/new_file.h"
#include "files/script.h"

namespace qvhost::compat {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTmp = "/tmp";

// Of the plug-in's pattern, and the names that the tools give.
constexpr struct {
    std::string_view asked;     // how the names begin that the plug-in's mv has
    std::string_view names[2];  // how the tools' names begin
    std::string_view with;      // and what is in them
    const char* tools[2];       // that pack them
} kArchives[] = {
    {"/tmp/sosreport-OSlogs-", {"sosreport-", "sosreport-"}, "OSlogs", {"sosreport", "sos"}              },
    {"/tmp/nts_linux",         {"nts_", "scc_"},             "_",      {"supportconfig", "supportconfig"}},
};
using Archive = std::remove_cvref_t<decltype(kArchives[0])>;

bool is_name_of(const Archive& archive, std::string_view name) {
    return std::any_of(std::begin(archive.names), std::end(archive.names),
                       [&](auto begin) { return name.starts_with(begin); }) &&
           name.find(archive.with) != std::string_view::npos;
}

bool is_name_of_any(std::string_view name) {
    return std::any_of(std::begin(kArchives), std::end(kArchives),
                       [&](const Archive& archive) { return is_name_of(archive, name); });
}

std::vector<std::string> names_in(const fs::path& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// "2049 1310731 1790000000.123456789": device, inode, and when it last changed.
std::string identity_of(const struct stat& info) {
    return std::to_string(info.st_dev) + " " + std::to_string(info.st_ino) + " " +
           std::to_string(info.st_ctim.tv_sec) + "." + std::to_string(info.st_ctim.tv_nsec);
}

fs::path private_tmp(const fs::path& notes) { return notes / "tmp"; }
fs::path known_before(const fs::path& notes) { return notes / "archives_before"; }

// From here on this process and what it starts have a /tmp of their own. False: the system does not let it.
bool enter_private_tmp(const fs::path& directory) {
    if (::mkdir(directory.c_str(), 0700) != 0 || ::chmod(directory.c_str(), 01777) != 0)
        return false;
    const bool entered = ::unshare(CLONE_NEWNS) == 0 &&
                         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                         ::mount(directory.c_str(), kTmp, nullptr, MS_BIND, nullptr) == 0;
    if (!entered) ::rmdir(directory.c_str());
    return entered;
}

}  // namespace

void remember_archives(const fs::path& notes) {
    std::error_code ignored;
    fs::remove(known_before(notes), ignored);
    std::string known;
    for (const auto& name : names_in(kTmp)) {
        struct stat info {};
        if (is_name_of_any(name) && ::lstat((fs::path(kTmp) / name).c_str(), &info) == 0)
            known += identity_of(info) + "\n";
    }
    write_new_file(known_before(notes), known);
}

namespace {

std::string packing_script(const Place& place, const std::string& tool, const std::string& words) {
    return beginning(place) + unless_gone(tool) + start_in_program(place, "pack") + " " +
           shell_quoted(place.notes) + " \"$(command -v " + tool + ")\" " + words + "\"$@\"\n";
}

}  // namespace

std::string sosreport_script(const Place& place) {
    if (!found_in(place.search_path, "sosreport").empty())
        return packing_script(place, "sosreport", "");
    if (!found_in(place.search_path, "sos").empty()) return packing_script(place, "sos", "report ");
    return "";
}

std::string supportconfig_script(const Place& place) {
    if (found_in(place.search_path, "supportconfig").empty()) return "";
    return packing_script(place, "supportconfig", "");
}

std::string mv_script(const Place& place) {
    if (found_in(place.search_path, "mv").empty()) return "";
    return beginning(place) + "case \"$1\" in\n/tmp/sosreport-OSlogs-*|/tmp/nts_linux*)\n    " +
           start_in_program(place, "mv") + " " + shell_quoted(place.notes) + " " +
           shell_quoted(place.log_dir) + " \"$@\" ;;\nesac\n" + start("mv");
}

// NOTES TOOL [ARGUMENT]...
int pack_stand_in(const StandInArguments& given) {
    const fs::path notes = given.arguments.at(0);
    const std::vector<std::string> command(given.arguments.begin() + 1, given.arguments.end());
    // A tool that lies in /tmp would not be seen from a /tmp of its own.
    const bool lies_there = command.at(0).starts_with(std::string(kTmp) + "/");
    if (lies_there || !enter_private_tmp(private_tmp(notes))) remember_archives(notes);
    return start_instead(command);
}

namespace {

// Whether this collection can have packed one: the stand-ins' search path has a tool for it.
bool has_packer(const Archive& archive) {
    const char* const path = std::getenv("PATH");
    return path && std::any_of(std::begin(archive.tools), std::end(archive.tools),
                               [&](const char* tool) { return !found_in(path, tool).empty(); });
}

// Why a file is not moved; empty: it is this collection's.
std::string why_not_ours(const struct stat& info, const std::set<std::string>& known,
                         bool has_tool) {
    if (!has_tool) return "no tool that packs such archives is installed";
    if (!S_ISREG(info.st_mode)) return "it is no file";
    if (info.st_uid != ::geteuid()) return "it belongs to user " + std::to_string(info.st_uid);
    if (info.st_nlink != 1) return "it has other names";
    if (known.contains(identity_of(info))) return "it was there before";
    return "";
}

// Moves the open file, which has this name, and makes it private.
void move_file(const Descriptor& from, const Descriptor& file, const std::string& name,
               const fs::path& log_dir) {
    const auto target = log_dir / name;
    ::fchmod(file.get(), 0600);
    if (::renameat2(from.get(), name.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
        return;
    if (errno != EXDEV) throw std::system_error(errno, std::generic_category(), target.string());
    const auto copy = create_private(target);
    for (;;) {
        const auto block = read_bytes(file.get(), 1 << 20);
        if (block.empty()) break;
        if (!write_bytes(copy.get(), block))
            throw std::system_error(errno, std::generic_category(), target.string());
    }
    ::unlinkat(from.get(), name.c_str(), 0);
}

}  // namespace

// NOTES LOG_DIR FROM... TO
int mv_stand_in(const StandInArguments& given) {
    const fs::path notes = given.arguments.at(0);
    const fs::path log_dir = given.arguments.at(1);
    const auto& asked = given.arguments.at(2);
    const auto archive =
        std::find_if(std::begin(kArchives), std::end(kArchives),
                     [&](const Archive& one) { return asked.starts_with(one.asked); });
    if (archive == std::end(kArchives)) return 1;

    std::set<std::string> known;
    const bool was_private = fs::exists(private_tmp(notes));
    const fs::path directory = was_private ? private_tmp(notes) : kTmp;
    std::ifstream before(known_before(notes));
    for (std::string line; std::getline(before, line);) known.insert(line);

    const bool has_tool = was_private || has_packer(*archive);
    const Descriptor from(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    bool moved = false;
    for (const auto& name : names_in(directory)) {
        if (!from || !is_name_of(*archive, name)) continue;
        struct stat info {};
        if (::fstatat(from.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
        auto why_not = why_not_ours(info, known, has_tool);
        Descriptor file;
        if (why_not.empty()) {
            file = Descriptor(
                ::openat(from.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
            struct stat opened {};
            if (!file) {
                why_not = std::strerror(errno);
            } else if (::fstat(file.get(), &opened) != 0 ||
                       identity_of(opened) != identity_of(info)) {
                why_not = "it changes";
            }
        }
        if (!why_not.empty()) {
            note(given, name + " in /tmp is left there: " + why_not);
            continue;
        }
        move_file(from, file, name, log_dir);
        note(given, name + " is the support archive of this collection");
        moved = true;
    }
    if (moved) return 0;
    // As mv says it.
    std::fprintf(stderr, "mv: cannot stat '%s*': No such file or directory\n",
                 std::string(archive->asked).c_str());
    return 1;
}

}  // namespace qvhost::compat
