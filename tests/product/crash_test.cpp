// Collections that end early. What was filed is in the report, the store is whole, no process is
// left, and the exit status is 1.
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <set>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class Crash : public ProductTest {
protected:
    Invocation with_fault(const std::string& fault,
                          const std::vector<std::string>& more = {}) const {
        return Invocation{.arguments = collect("faults", more),
                          .environment = {{"QV_TEST_FAULT", fault}}};
    }

    // Starts a collection that gets as far as the fault and stays there.
    pid_t start_hanging() {
        const pid_t pid = start(with_fault("hang"));
        wait_until("the tools hang", [&] {
            return read_file(log_dir() / "qvhost.log").find("enumerate M_FAULT") !=
                       std::string::npos &&
                   family().size() >= 6;  // the program, its child, two shells, two sleeps
        });
        return pid;
    }

    void expect_all_filed(const fs::path& store) const {
        EXPECT_EQ(counts(store),
                  (std::map<std::string, int>{{"A_BEFORE", 1000}, {"M_FAULT", 2}, {"Z_AFTER", 0}}));
        std::vector<std::string> expected;
        for (int i = 0; i < 1000; ++i) expected.push_back(std::to_string(i));
        EXPECT_EQ(values(store, "A_BEFORE"), expected);
    }

    void expect_nothing_left() const {
        wait_until("no process is left", [&] { return family().empty(); });
    }
};

struct Fault {
    const char* name;
    const char* told;  // what the message says of it
};

TEST_F(Crash, AModuleThatTakesTheProcessAlongLosesNothing) {
    for (const auto& [name, told] :
         {Fault{"crash", "Segmentation fault"}, Fault{"kill", "Killed"}, Fault{"exit", "code 0"}}) {
        SCOPED_TRACE(name);
        fs::remove_all(log_dir());
        const auto outcome = run(with_fault(name));
        EXPECT_EQ(outcome.exit, 3);
        EXPECT_NE(outcome.err.find(told), std::string::npos) << outcome.err;
        EXPECT_NE(outcome.err.find("M_FAULT"), std::string::npos) << outcome.err;
        expect_all_filed(store_in(log_dir()));
        EXPECT_EQ(report_json(log_dir())["records"].size(), 1002u);
        EXPECT_EQ(meta(store_in(log_dir()), "status"), "incomplete");
        EXPECT_NE(meta(store_in(log_dir()), "incomplete_because").find(told), std::string::npos);
        EXPECT_EQ(report_json(log_dir())["collection"]["status"], "incomplete");
        EXPECT_EQ(reasons(store_in(log_dir())).at("Z_AFTER"), "the collection ended before");
        EXPECT_FALSE(fs::exists(log_dir() / "report" / "collection.journal"));
        expect_nothing_left();
    }
}

TEST_F(Crash, TheSummaryTellsThatItIsIncomplete) {
    const auto outcome = run(with_fault("crash"));
    EXPECT_NE(outcome.out.find("incomplete"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("report/index.html"), std::string::npos) << outcome.out;
}

TEST_F(Crash, APluginThatCrashesWhenItIsLoadedEndsWith1) {
    const auto outcome = run(with_fault("load"));
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.err.find("Segmentation fault"), std::string::npos) << outcome.err;
    EXPECT_FALSE(fs::exists(log_dir())) << "nothing was begun";
}

TEST_F(Crash, AnExceptionEndsItsTableOnly) {
    for (const auto& [name, told] :
         {Fault{"throw", "no\nluck"}, Fault{"throw_int", "unknown kind"}}) {
        SCOPED_TRACE(name);
        fs::remove_all(log_dir());
        const auto outcome = run(with_fault(name));
        EXPECT_EQ(outcome.exit, 3);
        EXPECT_NE(outcome.err.find("M_FAULT"), std::string::npos) << outcome.err;
        EXPECT_EQ(counts(store_in(log_dir())),
                  (std::map<std::string, int>{{"A_BEFORE", 1000}, {"M_FAULT", 2}, {"Z_AFTER", 3}}));
        EXPECT_NE(meta(store_in(log_dir()), "incomplete_because").find(told), std::string::npos);
    }
}

TEST_F(Crash, ASignalToEndStopsEverythingAndKeepsWhatThereIs) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        fs::remove_all(log_dir());
        const pid_t pid = start_hanging();
        ::kill(pid, signal);
        const auto outcome = finish(pid);
        EXPECT_EQ(outcome.exit, 3);
        EXPECT_NE(outcome.err.find("incomplete"), std::string::npos) << outcome.err;
        EXPECT_EQ(family(), std::vector<pid_t>()) << "left when the program has ended";
        expect_all_filed(store_in(log_dir()));
        EXPECT_EQ(report_json(log_dir())["records"].size(), 1002u);
    }
}

void make_old(const fs::path& directory) {
    fs::last_write_time(directory, fs::file_time_type::clock::now() - std::chrono::hours(1));
}

TEST_F(Crash, ThrowAwayDirectoriesThatNobodyUsesAreRemovedByTheNextRun) {
    const auto temporary = dir() / "tmp";
    fs::create_directory(temporary);
    const auto with_place = [&](const fs::path& log, const char* fault) {
        return Invocation{
            .arguments = {"collect", "--log-dir", log, "--plugin", plugin("faults"),
                          "--plug-in-only"},
            .environment = {{"QV_TEST_FAULT", fault}, {"TMPDIR", temporary.string()}}};
    };
    const auto places = [&] {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(temporary))
            names.insert(entry.path().filename());
        return names;
    };
    // One was left.
    const pid_t killed = start(with_place(dir() / "killed", "hang"));
    wait_until("the tools hang", [&] { return family().size() >= 6; });
    for (const pid_t pid : {child_of(killed), killed}) ::kill(pid, SIGKILL);
    finish(killed);
    for (const pid_t pid : family()) ::kill(pid, SIGKILL);
    wait_until("its tools are gone", [&] { return family().empty(); });
    const auto left = places();
    ASSERT_EQ(left.size(), 1u);

    // One is in use.
    const pid_t running = start(with_place(dir() / "running", "hang"));
    wait_until("the tools hang", [&] { return family().size() >= 6; });
    auto used = places();
    ASSERT_EQ(used.size(), 2u);
    for (const auto& name : used) make_old(temporary / name);
    used.erase(*left.begin());

    // These are not certainly ours, or not certainly left.
    std::set<std::string> kept = used;
    const auto make = [&](const std::string& name, const char* inside) {
        fs::create_directories(temporary / name / inside);
        fs::permissions(temporary / name, fs::perms{0700});
        make_old(temporary / name);
        kept.insert(name);
    };
    make("qvhost-run-notes1", "notes.txt");
    make("qvhost-run-long-name", "bin");
    make("qvhost-check-abcdef", "bin");
    make("qvhost-run-open12", "bin");
    fs::permissions(temporary / "qvhost-run-open12", fs::perms{0755});
    make("qvhost-run-young1", "bin");
    fs::last_write_time(temporary / "qvhost-run-young1", fs::file_time_type::clock::now());
    fs::create_directories(dir() / "elsewhere" / "bin");
    fs::permissions(dir() / "elsewhere", fs::perms{0700});
    make_old(dir() / "elsewhere");
    fs::create_directory_symlink(dir() / "elsewhere", temporary / "qvhost-run-link12");
    kept.insert("qvhost-run-link12");
    if (::geteuid() == 0) {
        make("qvhost-run-other1", "bin");
        ASSERT_EQ(::chown((temporary / "qvhost-run-other1").c_str(), 65534, 65534), 0);
    }

    EXPECT_EQ(run(with_place(log_dir(), "throw")).exit, 3);
    EXPECT_EQ(places(), kept);
    EXPECT_TRUE(fs::exists(dir() / "elsewhere" / "bin"));
    ::kill(running, SIGTERM);
    EXPECT_EQ(finish(running).exit, 3);
    kept.erase(*used.begin());
    EXPECT_EQ(places(), kept);
}

TEST_F(Crash, AModuleThatNeverStopsFilingCanBeStopped) {
    const pid_t pid = start(with_fault("flood"));
    wait_until("records come", [&] {
        std::error_code error;
        return fs::file_size(log_dir() / "report" / "collection.journal", error) > 1'000'000 &&
               !error;
    });
    ::kill(pid, SIGINT);
    EXPECT_EQ(finish(pid).exit, 3);
    EXPECT_EQ(family(), std::vector<pid_t>());
    const auto filed = values(store_in(log_dir()), "M_FAULT");
    ASSERT_GT(filed.size(), 1000u);
    for (std::size_t i = 0; i < filed.size(); ++i) ASSERT_EQ(filed[i], std::to_string(i));
}

TEST_F(Crash, AKilledChildIsTold) {
    const pid_t pid = start_hanging();
    ::kill(child_of(pid), SIGKILL);
    const auto outcome = finish(pid);
    EXPECT_EQ(outcome.exit, 3);
    EXPECT_NE(outcome.err.find("Killed"), std::string::npos) << outcome.err;
    EXPECT_EQ(family(), std::vector<pid_t>());
    expect_all_filed(store_in(log_dir()));
}

TEST_F(Crash, AKilledProgramLeavesNoProcessAndTheNextRunFindsItsRecords) {
    const pid_t pid = start_hanging();
    ::kill(pid, SIGKILL);
    EXPECT_EQ(finish(pid).signal, SIGKILL);
    expect_nothing_left();
    ASSERT_TRUE(fs::exists(log_dir() / "report" / "collection.journal"));

    const auto next = run(collect("calm", {"--table", "VALUES"}));
    EXPECT_EQ(next.exit, 0) << next.err;
    EXPECT_NE(next.err.find("M_FAULT"), std::string::npos) << "what was found: " << next.err;
    int earlier = 0;
    for (const auto& entry : fs::directory_iterator(log_dir() / "runs")) {
        ++earlier;
        const auto report = entry.path() / "report";
        expect_all_filed(report / "report.sqlite");
        EXPECT_TRUE(fs::exists(report / "report.json"));
        EXPECT_TRUE(fs::exists(report / "index.html"));
        EXPECT_FALSE(fs::exists(report / "collection.journal"));
    }
    EXPECT_EQ(earlier, 1);
    EXPECT_EQ(counts(store_in(log_dir())), (std::map<std::string, int>{{"VALUES", 3}}));
}

TEST_F(Crash, BothKilledAtOnceAndShowFinishesTheReport) {
    const pid_t pid = start_hanging();
    const pid_t child = child_of(pid);
    ::kill(child, SIGSTOP);  // so that neither sees the other go
    ::kill(pid, SIGKILL);
    ::kill(child, SIGKILL);
    EXPECT_EQ(finish(pid).signal, SIGKILL);
    for (const pid_t left : family()) ::kill(left, SIGKILL);

    const auto shown = run({"show", log_dir(), "M_FAULT"});
    EXPECT_EQ(shown.exit, 0) << shown.err;
    EXPECT_NE(shown.err.find("M_FAULT"), std::string::npos) << shown.err;
    expect_all_filed(store_in(log_dir()));
    EXPECT_EQ(reasons(store_in(log_dir())).at("Z_AFTER"), "the collection ended before");
    EXPECT_EQ(report_json(log_dir())["records"].size(), 1002u);
    EXPECT_TRUE(fs::exists(log_dir() / "report" / "index.html"));
    EXPECT_FALSE(fs::exists(log_dir() / "report" / "collection.journal"));
}

// Power that fails can leave anything; what can be read is kept.
TEST_F(Crash, ADamagedStoreIsMadeAnewFromTheJournal) {
    const pid_t pid = start_hanging();
    ::kill(pid, SIGKILL);
    finish(pid);
    expect_nothing_left();
    write_file(store_in(log_dir()), std::string(5000, 'x'));
    EXPECT_EQ(run({"show", log_dir()}).exit, 0);
    expect_all_filed(store_in(log_dir()));
    EXPECT_EQ(run(collect("calm")).exit, 0);
}

// A journal with more behind its last entry. Its first eight bytes say where that ends.
std::string continued(std::string journal, const std::string& bytes) {
    std::uint64_t end = 0;
    std::memcpy(&end, journal.data(), sizeof end);
    journal.resize(end);
    journal += bytes;
    end = journal.size();
    std::memcpy(journal.data(), &end, sizeof end);
    return journal;
}

TEST_F(Crash, ADamagedJournalIsKeptBesideWhatCouldBeRead) {
    const pid_t pid = start_hanging();
    ::kill(pid, SIGKILL);
    finish(pid);
    expect_nothing_left();
    const auto journal = log_dir() / "report" / "collection.journal";
    const auto damaged = continued(read_file(journal), {1, 0, 0, 0, 99});
    write_file(journal, damaged);
    const auto shown = run({"show", log_dir()});
    EXPECT_EQ(shown.exit, 0) << shown.err;
    EXPECT_NE(shown.err.find("damaged"), std::string::npos) << shown.err;
    expect_all_filed(store_in(log_dir()));
    EXPECT_FALSE(fs::exists(journal));
    EXPECT_EQ(read_file(journal.string() + ".damaged"), damaged);
    EXPECT_EQ(run(collect("calm")).exit, 0);
}

// The last entry was being written: it is not there, all before it are.
TEST_F(Crash, HalfAnEntryAtTheEndIsNone) {
    const pid_t pid = start_hanging();
    ::kill(pid, SIGKILL);
    finish(pid);
    expect_nothing_left();
    const auto journal = log_dir() / "report" / "collection.journal";
    write_file(journal, continued(read_file(journal), {9, 0, 0, 0, 2, 0}));
    EXPECT_EQ(run({"show", log_dir()}).exit, 0);
    expect_all_filed(store_in(log_dir()));
}

}  // namespace

}  // namespace test
