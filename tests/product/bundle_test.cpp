// "qvhost bundle", "verify" and "open": a report as one file, and the report again.
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <thread>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class Bundle : public ProductTest {
protected:
    void collect_sample() {
        ASSERT_EQ(run({"replay", fs::path(QV_SAMPLES) / "x86_64-kn100-adaptec", "--log-dir",
                       log_dir(), "--quiet"})
                      .exit,
                  0);
    }
    std::string exported(const fs::path& report) {
        return run({"export", report, "--format", "json"}).out;
    }
};

TEST_F(Bundle, IsTheReportAgain) {
    collect_sample();
    collect_sample();  // the first moves to runs/
    write_file(log_dir() / "notes.txt", "mine");
    for (const std::string ending : {".tar.zst", ".zip"}) {
        const auto file = dir() / ("bundle" + ending);
        const auto made = run({"bundle", log_dir(), "--output", file});
        ASSERT_EQ(made.exit, 0) << made.err;
        EXPECT_NE(made.out.find("\nleft out: notes.txt, 4 B: it is not of this run\n"
                                "left out: runs, 0 B: it is of an earlier run\n"),
                  std::string::npos)
            << made.out;
        struct stat info {};
        ASSERT_EQ(::stat(file.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, 0600u);

        // The same report, the same bytes, also where it is another hour.
        const auto again = dir() / ("again" + ending);
        Invocation elsewhere{.arguments = {"bundle", log_dir(), "--output", again}};
        elsewhere.environment = {{"TZ", "Asia/Kolkata"}};
        ASSERT_EQ(run(elsewhere).exit, 0);
        EXPECT_EQ(read_file(again), read_file(file));

        const auto verified = run({"verify", file});
        EXPECT_EQ(verified.exit, 0) << verified.err;
        EXPECT_NE(verified.out.find(": as its manifest says: "), std::string::npos);

        const auto place = dir() / ("opened" + ending);
        const auto opened = run({"open", file, "--output", place});
        ASSERT_EQ(opened.exit, 0) << opened.err;
        EXPECT_EQ(opened.out, place.string() + "\n");
        EXPECT_EQ(exported(place), exported(log_dir()));
        EXPECT_EQ(run({"show", place}).out, run({"show", log_dir()}).out);
        EXPECT_EQ(run({"diff", log_dir(), place}).exit, 0);
        for (const auto& entry : fs::directory_iterator(log_dir())) {
            const auto name = entry.path().filename();
            if (!entry.is_regular_file() || name == "notes.txt") continue;
            EXPECT_EQ(read_file(place / name), read_file(entry.path())) << name;
        }
        EXPECT_TRUE(fs::exists(place / "report" / "index.html"));
        const auto summary = read_file(place / "report" / "SUMMARY.txt");
        for (const auto* part : {"\nHealth\n", "\nFindings", "Models, parts, serial numbers"})
            EXPECT_NE(summary.find(part), std::string::npos) << part << " of\n" << summary;
        // It is nowhere twice: what was opened makes the same lists again.
        const auto second = dir() / ("second" + ending);
        ASSERT_EQ(run({"bundle", place, "--output", second}).exit, 0);
        EXPECT_EQ(run({"verify", second}).out.find("SUMMARY.txt"), std::string::npos);
    }
}

TEST_F(Bundle, TheSendersPageIsNotKept) {
    collect_sample();
    write_file(log_dir() / "report" / "index.html", "<script>steal()</script>");
    write_file(log_dir() / "report" / "assets" / "page.js", "steal()");
    const auto file = dir() / "sent.zip";
    ASSERT_EQ(run({"bundle", log_dir(), "--output", file}).exit, 0);
    const auto place = dir() / "opened";
    ASSERT_EQ(run({"open", file, "--output", place}).exit, 0);
    for (const auto* name : {"index.html", "assets/page.js"})
        EXPECT_EQ(read_file(place / "report" / name).find("steal"), std::string::npos) << name;
}

TEST_F(Bundle, IsMadeOfARunThatIsOver) {
    const auto refusal = [&](const std::vector<std::string>& arguments) {
        const auto outcome = run(arguments);
        EXPECT_NE(outcome.exit, 0);
        return outcome.err;
    };
    const auto file = (dir() / "bundle.zip").string();
    EXPECT_NE(refusal({"bundle", dir() / "none", "--output", file})
                  .find("a bundle is made of a log directory"),
              std::string::npos);
    collect_sample();
    EXPECT_NE(refusal({"bundle", log_dir() / "report" / "report.sqlite", "--output", file})
                  .find("a bundle is made of a log directory"),
              std::string::npos);
    EXPECT_NE(refusal({"bundle", log_dir(), "--output", dir() / "bundle.tgz"})
                  .find("--output names a file that ends with .tar.zst or .zip"),
              std::string::npos);
    for (const std::string size : {"many", "0", "-1", "1.5M", "99999999T", "M"})
        EXPECT_NE(refusal({"bundle", log_dir(), "--output", file, "--max-size=" + size})
                      .find("--max-size: " + size +
                            " is no size: a whole number with K, M, G or T (by 1024)"),
                  std::string::npos)
            << size;
    write_file(file, "mine");
    EXPECT_NE(refusal({"bundle", log_dir(), "--output", file}).find("exists already"),
              std::string::npos);
    EXPECT_EQ(read_file(file), "mine");
}

TEST_F(Bundle, NothingIsLeftOfOneThatCouldNotBeMadeOrOpened) {
    collect_sample();
    const auto names = [&] {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(dir())) {
            const auto name = entry.path().filename().string();
            if (!name.starts_with("out") && !name.starts_with("err")) found.insert(name);
        }
        return found;
    };
    const auto before = names();
    const auto limited = [&](const std::string& command) {
        return run(Invocation{.arguments = {"-c", "ulimit -f 8; exec '" QV_PROGRAM "' " + command},
                              .program = {"/bin/bash"}});
    };
    const auto file = dir() / "bundle.zip";
    const auto full =
        limited("bundle '" + log_dir().string() + "' --output '" + file.string() + "'");
    EXPECT_EQ(full.exit, 1);
    EXPECT_NE(full.err.find(file.string()), std::string::npos) << full.err;
    EXPECT_EQ(names(), before);

    ASSERT_EQ(run({"bundle", log_dir(), "--output", file}).exit, 0);
    const auto with_file = names();
    EXPECT_EQ(
        limited("open '" + file.string() + "' --output '" + (dir() / "opened").string() + "'").exit,
        1);
    EXPECT_EQ(names(), with_file);

    // Damaged: half of it, and one byte of a capture.
    const auto bytes = read_file(file);
    write_file(dir() / "bundle.zip", bytes.substr(0, bytes.size() / 2));
    for (const std::string command : {"verify", "open"}) {
        const auto outcome = run({command, file});
        EXPECT_EQ(outcome.exit, 1) << command;
        EXPECT_NE(outcome.err.find(file.string() + ": "), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(names(), with_file);

    // A bundle without a report.
    EXPECT_NE(
        run({"open", fs::path(QV_CORPUS) / "bundle" / "zip"}).err.find(": it holds no report"),
        std::string::npos);

    // A place that is taken.
    write_file(file, bytes);
    write_file(dir() / "taken" / "mine.txt", "mine");
    EXPECT_EQ(run({"open", file, "--output", dir() / "taken"}).exit, 1);
    EXPECT_EQ(read_file(dir() / "taken" / "mine.txt"), "mine");
}

TEST_F(Bundle, AKillLeavesNoHalfFileUnderItsName) {
    collect_sample();
    // Much that does not pack well.
    std::string large(8 << 20, ' ');
    unsigned state = 1;
    for (char& c : large) c = static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);
    write_file(log_dir() / "large.bin", large);
    write_file(log_dir() / "report" / "large.bin", large);
    const auto file = dir() / "bundle.tar.zst";
    for (int i = 0; i < 8; ++i) {
        const auto program =
            start(Invocation{.arguments = {"bundle", log_dir(), "--output", file}});
        std::this_thread::sleep_for(std::chrono::milliseconds(15 * i));
        ::kill(program, SIGKILL);
        finish(program);
        if (!fs::exists(file)) continue;
        EXPECT_EQ(run({"verify", file}).exit, 0);
        fs::remove(file);
    }
}

}  // namespace

}  // namespace test
