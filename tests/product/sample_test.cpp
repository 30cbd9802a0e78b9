// Every recorded server in samples/ gives the report that a person accepted. A report that differs is
// left beside the test and its difference printed; tests/accept takes it over after it was read.
#include <algorithm>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> recorded_servers() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(QV_SAMPLES)) {
        if (fs::exists(entry.path() / "machine.json")) names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string difference(const fs::path& expected, const fs::path& actual) {
    const auto command = "diff -u '" + expected.string() + "' '" + actual.string() + "' 2>&1";
    std::string text;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char block[4096];
        for (std::size_t n = 0; (n = std::fread(block, 1, sizeof block, pipe)) > 0;)
            text.append(block, n);
        ::pclose(pipe);
    }
    constexpr std::size_t kMost = 20'000;
    if (text.size() > kMost) text = text.substr(0, kMost) + "\n...\n";
    return text;
}

class Sample : public ProductTest, public testing::WithParamInterface<std::string> {};

// Tools that hang in a recording get five seconds: enough for the others on a busy machine.
TEST_P(Sample, GivesItsAcceptedReport) {
    const auto name = GetParam();
    const auto outcome = run({"replay", fs::path(QV_SAMPLES) / name, "--log-dir", log_dir(),
                              "--tool-timeout", "5", "--quiet"});
    EXPECT_EQ(family(), std::vector<pid_t>());

    const auto expected = fs::path(QV_EXPECTED) / (name + ".txt");
    const auto actual = fs::path(QV_ACTUAL) / (name + ".txt");
    fs::remove(actual);
    const auto json = read_file(log_dir() / "report" / "report.json");
    const auto report = condensed(json) + verdict(json);
    const bool complete = meta(store_in(log_dir()), "status") == "complete";
    EXPECT_EQ(outcome.exit, complete ? 0 : 3) << "a tool's failure is not the host's";
    EXPECT_EQ(outcome.err.empty(), complete) << outcome.err;
    if (fs::exists(expected) && report == read_file(expected)) return;

    write_file(actual, report);
    const auto how = "\nRead " + actual.string() + " and, if it is right, accept it:\n    " +
                     QV_ACCEPT + " " + name + " " + fs::path(QV_ACTUAL).string() + "\n";
    if (!fs::exists(expected)) {
        FAIL() << "Nobody has accepted a report of " << name << " yet." << how;
    } else {
        FAIL() << "The report of " << name << " is not the accepted one.\n"
               << difference(expected, actual) << how;
    }
}

std::string test_name(const testing::TestParamInfo<std::string>& info) {
    auto name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Recorded, Sample, testing::ValuesIn(recorded_servers()), test_name);

}  // namespace

}  // namespace test
