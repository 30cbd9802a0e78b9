// A plug-in with tables of its own, and tables.json beside it that declares them.
#include <sys/stat.h>

#include "program.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;

constexpr const char* kTables = R"({"format": 1, "modules": [{"name": "newcomer", "tables": [
    {"id": "ABSENT", "title": "What is absent", "filled": "always", "tool": "qv-absent-tool",
     "tool_place": "search path", "command": "qv-absent-tool -a >'{L}absent.txt' 2>&1",
     "capture": "absent.txt"},
    {"id": "QUIET", "title": "Quiet \u001b[31mthings", "filled": "always", "tool": "true",
     "tool_place": "search path", "command": "true >'{L}quiet.txt' 2>&1", "capture": "quiet.txt"},
    {"id": "WORDY", "title": "Words", "filled": "always", "tool": "echo",
     "tool_place": "search path", "capture": "wordy.txt"},
    {"id": "LATER", "title": "Later", "filled": "always", "tool": "lsblk",
     "tool_place": "search path", "capture": "lsblk.txt", "not_asked": "no disks"},
    {"id": "PLACE", "title": "A place", "filled": "never"}]}]})";

class Declared : public ProductTest {
protected:
    void SetUp() override {
        ProductTest::SetUp();
        fs::create_directories(file().parent_path());
        fs::create_directory(dir() / "P" / "lib");
        fs::copy_file(test::plugin("declares"), plugin());
    }
    fs::path plugin() const { return dir() / "P" / "lib" / "declares.so"; }
    fs::path file() const { return dir() / "P" / "share" / "qvhost" / "tables.json"; }

    Outcome collect(const fs::path& plugin) {
        fs::remove_all(log_dir());
        return run({"collect", "--log-dir", log_dir(), "--plugin", plugin, "--quiet"});
    }
    std::map<std::string, std::string> titles() const {
        const qvhost::Store store(store_in(log_dir()), qvhost::Store::Mode::read);
        std::map<std::string, std::string> found;
        for (const auto& module : store.modules()) {
            for (const auto& table : module.tables) found[table.id] = table.title;
        }
        return found;
    }
};

using ById = std::map<std::string, std::string>;

const ById kUnknown = {
    {"ABSENT", "unknown"}, {"QUIET", "unknown"}, {"WORDY", "unknown"},
    {"LATER", "unknown"},  {"PLACE", "unknown"}, {"UNTOLD", "unknown"},
};

TEST_F(Declared, TablesOfWhichTheHostHasNeverHeardAreExplained) {
    write_file(file(), kTables);
    const auto outcome = collect(plugin());
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(reasons(store_in(log_dir())),
              (ById{
                  {"ABSENT", "qv-absent-tool is not installed (exit code 127)"},
                  {"QUIET", "true printed nothing"},
                  {"WORDY", "nothing to report in wordy.txt"},
                  {"LATER", "no disks"},
                  {"PLACE", "not collected"},
                  {"UNTOLD", "unknown"},
              }));
    EXPECT_EQ(titles(), (ById{
                            {"ABSENT", "What is absent"},
                            {"QUIET", "Quiet \x1b[31mthings"},
                            {"WORDY", "Words"},
                            {"LATER", "Later"},
                            {"PLACE", "A place"},
                            {"UNTOLD", ""},
                        }));
}

// A report is read where the plug-in is not.
TEST_F(Declared, TitlesStandWhereTablesAreNamed) {
    write_file(file(), kTables);
    EXPECT_EQ(collect(plugin()).exit, 0);
    const auto listed = run({"tables", "--plugin", plugin()}).out;
    EXPECT_NE(listed.find("ABSENT  What is absent"), std::string::npos) << listed;
    fs::remove_all(dir() / "P");
    const auto shown = run({"show", log_dir(), "--all", "--no-pager"}).out;
    EXPECT_NE(shown.find("WORDY: Words (Module newcomer), no records"), std::string::npos) << shown;
    for (const auto& text : {listed, shown}) {
        EXPECT_EQ(text.find('\x1b'), std::string::npos);
        EXPECT_NE(text.find("Quiet \\x1b[31mthings"), std::string::npos) << text;
    }
    const auto page = dir() / "page";
    EXPECT_EQ(run({"export", log_dir(), "--format", "html", "--output", page}).exit, 0);
    const auto overview = read_file(page / "data" / "overview.js");
    EXPECT_NE(overview.find(R"("id":"WORDY","title":"Words")"), std::string::npos) << overview;
}

// By a link as well, wherever it lies.
TEST_F(Declared, TheFileIsBesideThePluginItself) {
    write_file(file(), kTables);
    fs::create_symlink(plugin(), dir() / "link.so");
    EXPECT_EQ(collect(dir() / "link.so").exit, 0);
    EXPECT_EQ(titles().at("WORDY"), "Words");
}

TEST_F(Declared, APluginNeedNotDeclareItsTables) {
    const auto outcome = collect(plugin());
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(reasons(store_in(log_dir())), kUnknown);
}

TEST_F(Declared, AFileThatIsBrokenIsToldAndLeftOut) {
    const struct {
        std::string text;
        const char* told;
    } broken[] = {
        {"", "no JSON: unexpected end of input"},
        {std::string(kTables).substr(0, 400), "no JSON: invalid string: missing closing quote"},
        {std::string(100'000, '['), "too deep"},
        {std::string(4 << 20, ' '), "no JSON: unexpected end of input"},
        {std::string((4 << 20) + 1, ' '), "too large"},
        {"[]", "modules"},
        {R"({"format": 2, "modules": []})", "version"},
        {R"({"format": [], "modules": []})", "version"},
        {R"({"format": 1, "modules": {}})", "modules"},
        {R"({"format": 1, "modules": [7]})", "tables"},
        {R"({"format": 1, "modules": [{"tables": ["T"]}]})", "no object"},
        {R"({"format": 1, "modules": [{"tables": [{"title": "T"}]}]})", "no id"},
        {R"({"format": 1, "modules": [{"tables": [{"id": "T", "title": 1}]}]})", "title"},
        {R"({"format": 1, "modules": [{"tables": [{"id": "T", "capture": "../a"}]}]})",
         "log directory"},
        {R"({"format": 1, "modules": [{"tables": [{"id": "T", "capture": "/dev/a"}]}]})",
         "log directory"},
        {R"({"format": 1, "modules": [], "tools": [1]})", "tool"},
        {R"({"format": 1, "modules": [], "tools": [{"files": ["../a"]}]})", "tool"},
    };
    for (const auto& [text, told] : broken) {
        SCOPED_TRACE(text.substr(0, 100));
        write_file(file(), text);
        const auto outcome = collect(plugin());
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_EQ(lines_of(outcome.err).size(), 1u) << outcome.err;
        EXPECT_NE(outcome.err.find("tables.json"), std::string::npos) << outcome.err;
        EXPECT_NE(outcome.err.find(told), std::string::npos) << outcome.err;
        EXPECT_EQ(reasons(store_in(log_dir())), kUnknown);
    }
    const auto listed = run({"tables", "--plugin", plugin()});
    EXPECT_EQ(listed.exit, 0);
    EXPECT_NE(listed.err.find("tables.json"), std::string::npos);
    EXPECT_NE(listed.out.find("ABSENT"), std::string::npos);
}

// Opening a pipe would wait for somebody who writes.
TEST_F(Declared, APipeIsNoFile) {
    ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
    const auto outcome = collect(plugin());
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_NE(outcome.err.find("it is no file"), std::string::npos) << outcome.err;
}

}  // namespace

}  // namespace test
