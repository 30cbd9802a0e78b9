// A whole report directory of a stranger's: files that the program would take for its own, links, pipes, hard links,
// directories. Whatever lies there, reading it changes nothing, there and elsewhere, and ends with an answer or by name.
// Only a collection that was broken off in a directory of the user's own is completed, in its report and its logs.
//     input: the directory's mode, the command that reads, entries (kind, place, content)
#include <sys/stat.h>
#include <unistd.h>

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>
#include <functional>
#include <iterator>
#include <map>
#include <set>

#include "check.h"
#include "declared.h"
#include "hot_journal.h"
#include "journal/journal.h"
#include "outcome.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/finish/runs.h"
#include "qvhost/present/check.h"
#include "qvhost/present/diff.h"
#include "qvhost/present/explain.h"
#include "qvhost/present/export.h"
#include "qvhost/present/list_runs.h"
#include "qvhost/present/open_page.h"
#include "qvhost/present/query.h"
#include "qvhost/present/show.h"
#include "scratch.h"
#include "sound_store.h"
#include "store/declared_table.h"
#include "store/store.h"

using namespace qvhost;
namespace fs = std::filesystem;

namespace {

const fuzz::Scratch& scratch() {
    static const fuzz::Scratch made;
    return made;
}
fs::path log_dir() { return scratch() / "log"; }
fs::path outside() { return scratch() / "outside"; }

// Names that the program knows. The last one is the input's own.
constexpr const char* kPlaces[] = {
    "report",
    "report/report.sqlite",
    "report/report.sqlite-journal",
    "report/report.sqlite-wal",
    "report/report.sqlite-shm",
    "report/collection.journal",
    "report/collection-2.journal",
    "report/commands.log",
    "report/commands-2.log",
    "report/qvhost-2.log",
    "report/console-2.txt",
    "report/unfinished",
    "report/unfinished/report.sqlite",
    "report/report.json",
    "report/report.json.new",
    "report/index.html",
    "report/data",
    "report/data/overview.js",
    "report/assets/page.js",
    "qvhost.log",
    "console.txt",
    "selfinfo.txt",
    "runs",
    "runs/20261121T012040Z",
    "runs/20261121T012040Z/report",
    "runs/20261121T012040Z/report/report.sqlite",
    "runs/20261121T012040Z/report/collection.journal",
    "runs/20261121T012040Z-2/report/report.sqlite",
    "runs/unfinished/report/report.sqlite",
    "report-old",
    "",
};

// Bytes as a collection leaves them.
struct Contents {
    std::string store;
    std::string logged_store;  // with part of it in its log
    std::string write_ahead_log;
    std::string journal;
    std::string rollback;
};

Contents contents() {
    Contents made;
    const auto store = scratch() / "store.sqlite";
    fuzz::sound_store(store);
    {
        Store one(store, Store::Mode::update);
        write_declared_tables(one, fuzz::declared_tables());
        one.set_meta("started", "2026-11-21T01:20:40Z");
        one.commit();
    }
    made.store = fuzz::content(store);
    made.rollback = test::hot_journal(made.store, outside() / "file");
    {
        const SQLite::Database db(store, SQLite::OPEN_READWRITE);
        sqlite3_exec(db.getHandle(),
                     "PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;"
                     "UPDATE qv_meta SET value='logged' WHERE key='started'",
                     nullptr, nullptr, nullptr);
        made.logged_store = fuzz::content(store);
        made.write_ahead_log = fuzz::content(store.string() + "-wal");
    }
    const auto journal = scratch() / "collection.journal";
    {
        JournalWriter writer(journal);
        writer.append(ModuleEntry{
            "M", "Module", {"SELFINFO", "FRUINFO", "T"}
        });
        writer.append(TableStartEntry{"M", "T"});
        writer.append(Record{"T", "name", -1, {{"a", "A", "value"}}});
        writer.append(TableEndEntry{"M", "T", {}, ""});
        writer.append(TableStartEntry{"M", "SELFINFO"});
    }
    made.journal = fuzz::content(journal);
    for (const auto* bytes :
         {&made.store, &made.logged_store, &made.write_ahead_log, &made.journal, &made.rollback})
        fuzz::expect(!bytes->empty(), "there is something to change");
    return made;
}

// Sound bytes with some of them changed, or the input's own.
std::string content(fuzz::Pieces& input) {
    static const Contents sound = contents();
    const std::string* const kinds[] = {&sound.store, &sound.logged_store, &sound.write_ahead_log,
                                        &sound.journal, &sound.rollback};
    const auto kind = input.byte() % (std::size(kinds) + 1);
    if (kind == std::size(kinds)) return std::string(input.take(input.byte() * 4));
    auto bytes = *kinds[kind];
    for (auto changes = input.byte() % 8; changes > 0; --changes) {
        const auto at = input.number() % bytes.size();
        bytes[at] = static_cast<char>(input.byte());
    }
    return bytes;
}

// Nothing: it would lie elsewhere.
fs::path place(fuzz::Pieces& input) {
    const std::string known = kPlaces[input.byte() % std::size(kPlaces)];
    const fs::path name = known.empty() ? fs::path(input.until('\0')) : fs::path(known);
    if (name.empty() || name.is_absolute() || name.native().size() > 200) return {};
    for (const auto& part : name) {
        if (part == ".." || part == "." || part.empty()) return {};
    }
    return log_dir() / name;
}

void lay(fuzz::Pieces& input) {
    const auto kind = input.byte() % 10;
    const auto path = place(input);
    std::error_code taken;
    if (path.empty()) return;
    // Through no link that was laid before: the entry would lie elsewhere.
    for (auto way = path.parent_path(); way != log_dir(); way = way.parent_path()) {
        if (fs::is_symlink(fs::symlink_status(way))) return;
    }
    fs::create_directories(path.parent_path(), taken);
    if (taken || fs::exists(fs::symlink_status(path, taken))) return;
    switch (kind) {
        case 0: fs::create_directory(path); break;
        case 1: fs::create_symlink(outside() / "file", path); break;
        case 2: fs::create_symlink(outside(), path); break;
        case 3: fs::create_symlink(log_dir(), path); break;
        case 4: ::mkfifo(path.c_str(), 0600); break;
        case 5: fs::create_hard_link(outside() / "file", path); break;
        case 6:
            fuzz::write_file(path, content(input));
            fs::resize_file(path, std::uintmax_t{1} << 40, taken);  // with a hole behind it
            break;
        default: fuzz::write_file(path, content(input));
    }
}

// What is below the directory, and all that a write or a removal would change. Times tell too little: two changes may
// have the same.
std::map<std::string, std::string> everything_in(const fs::path& directory) {
    constexpr off_t kMostBytes = 1 << 20;
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        struct stat info {};
        ::lstat(entry.path().c_str(), &info);
        const auto bytes = S_ISREG(info.st_mode) && info.st_size < kMostBytes
                               ? fuzz::content(entry.path())
                               : std::string();
        found[entry.path()] = std::to_string(info.st_ino) + " " + std::to_string(info.st_mode) +
                              " " + std::to_string(S_ISDIR(info.st_mode) ? 0 : info.st_size) + " " +
                              bytes;
    }
    return found;
}

// Where a collection was broken off, in a directory of the user's own: the only place where reading writes.
std::set<fs::path> to_complete() {
    auto places = earlier_runs(log_dir());
    places.push_back(log_dir());
    std::set<fs::path> found;
    for (const auto& place : places) {
        std::error_code error;
        if (fs::exists(LogDir(place).journal(), error) && judge_log_dir(place).refusal.empty())
            found.insert(place);
    }
    return found;
}

bool may_change(const fs::path& path, const std::set<fs::path>& completed) {
    for (const auto& place : completed) {
        const auto name = path.lexically_relative(place);
        const LogDir dir(place);
        if (*name.begin() == dir.report().filename() || place / name == dir.log() ||
            place / name == dir.console())
            return true;
    }
    return false;
}

void expect_same_but_completed(const std::map<std::string, std::string>& before,
                               const std::set<fs::path>& completed) {
    const auto after = everything_in(log_dir());
    const auto expect_kept = [&](const auto& some, const auto& others) {
        for (const auto& [path, state] : some) {
            const auto other = others.find(path);
            if (other != others.end() && other->second == state) continue;
            if (may_change(path, completed)) continue;
            std::fprintf(stderr, "%s\n", path.c_str());
            fuzz::expect(false, "nothing in the directory is written, made or removed");
        }
    };
    expect_kept(before, after);
    expect_kept(after, before);
}

// Commands that read.
const std::function<void()> kReaders[] = {
    [] { show_report({.report = log_dir(), .tables = {}}); },
    [] { show_report({.report = log_dir(), .tables = {}, .all = true}); },
    [] { list_runs(log_dir()); },
    [] {
        check_report({.report = log_dir(), .subsystems = {}, .max_age_seconds = {}, .rules = {}});
    },
    [] { explain_finding({.report = log_dir(), .finding = ""}); },
    [] { export_report({.report = log_dir(), .format = "json", .output = {}, .tables = {}}); },
    [] { query_report({.report = log_dir(), .sql = "SELECT * FROM qv_meta"}); },
    [] { open_page({.report = log_dir(), .output = scratch() / "page"}); },
    [] { diff_reports({.from = log_dir(), .to = {}}); },
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const auto& directory : {log_dir(), outside(), scratch() / "page"})
        fs::remove_all(directory);
    ::unsetenv("BROWSER");
    fs::create_directory(log_dir());
    fs::create_directory(outside());
    fuzz::write_file(outside() / "file", "what lies elsewhere");

    fuzz::Pieces input(fuzz::text_of(data, size));
    constexpr ::mode_t kModes[] = {0700, 0755, 0777, 01777};
    const auto mode = kModes[input.byte() % std::size(kModes)];
    const auto& read = kReaders[input.byte() % std::size(kReaders)];
    for (int i = 0; i < 12 && !input.at_end(); ++i) lay(input);
    ::chmod(log_dir().c_str(), mode);

    const auto elsewhere = everything_in(outside());
    const auto here = everything_in(log_dir());
    const auto completed = to_complete();
    const fuzz::Printed printed;
    const auto failure = fuzz::told(read);
    fuzz::expect(failure.empty() || failure.find(scratch().path()) != std::string::npos,
                 "a failure names the file or the directory");
    fuzz::expect(everything_in(outside()) == elsewhere, "nothing lands or goes elsewhere");
    expect_same_but_completed(here, completed);
    fuzz::expect_harmless(printed.text());
    return 0;
}
