// What `qvhost doctor` says of systems that are made up.
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "system.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class Doctor : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        has("uname", "case $* in -i) echo unknown;; *) echo x86_64;; esac");
        has("dmidecode", "echo 'Product Name: KP220 Rack Server'");
        has("lspci", "echo '00:1f.2 SATA controller: Intel'");
    }

    Outcome ask(const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"doctor", "--log-dir", log_dir().string()};
        fs::permissions(log_dir(), fs::perms::owner_all);
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(
            Invocation{.arguments = arguments, .environment = {{"PATH", system().string()}}});
    }

    // "STATUS: SAYS | MEND" of the first line on the subject.
    std::string said(const std::string& subject) {
        const auto outcome = ask({"--format", "json"});
        const auto whole = json::parse(outcome.out);
        for (const auto& line : whole["lines"]) {
            if (line["subject"] != subject) continue;
            const auto mend = line["mend"].is_null() ? "" : " | " + line["mend"].get<std::string>();
            return line["status"].get<std::string>() + ": " + line["says"].get<std::string>() +
                   mend;
        }
        return "(nothing)";
    }
};

TEST_F(Doctor, FindsControllersWithoutTheirTool) {
    EXPECT_EQ(said("controllers"), "ok: lspci shows none that needs a tool");
    has("lspci",
        "echo '00:1f.2 SATA controller: Intel'\n"
        "echo '03:00.0 RAID bus controller: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] (rev 02)'");
    EXPECT_TRUE(
        said("controllers")
            .starts_with(
                "warning: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] is here, storcli is not | cp storcli64 '"));
    const auto text = ask();
    EXPECT_EQ(text.exit, 1);
    EXPECT_TRUE(text.out.starts_with("WARNING: ")) << text.out;
    has("storcli64");
    EXPECT_EQ(said("controllers"),
              "ok: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] is here, and storcli is");
    EXPECT_EQ(said("storcli_x64"), "ok: " + (system() / "storcli64").string() + " answers");
    EXPECT_EQ(said("storcli_x32"), "(nothing)");
}

TEST_F(Doctor, KnowsTheToolsThatAreAskedByTheHostAlone) {
    has("lspci",
        "echo '02:00.0 RAID bus controller: Hewlett-Packard Company Smart Array Gen8 Controllers (rev 01)'");
    EXPECT_TRUE(said("controllers").find("Gen8 Controllers is here, ssacli is not") !=
                std::string::npos)
        << said("controllers");
    has("ssacli");
    EXPECT_TRUE(said("controllers").starts_with("ok: ")) << said("controllers");
    has("lspci",
        "echo '01:00.0 Serial Attached SCSI controller: Broadcom / LSI SAS3008 PCI-Express Fusion-MPT SAS-3 (rev 02)'");
    EXPECT_TRUE(said("controllers").find("storcli or sas3ircu is not") != std::string::npos)
        << said("controllers");
    has("sas3ircu");
    EXPECT_TRUE(said("controllers").ends_with("and sas3ircu is")) << said("controllers");
    has("lspci", "echo '01:00.0 RAID bus controller: Example Unheard-of 9000 (rev 02)'");
    EXPECT_EQ(said("controllers"),
              "warning: Example Unheard-of 9000 is here, and no tool for it is known");
}

TEST_F(Doctor, TellsWordSizeAndProduct) {
    EXPECT_TRUE(said("word size").starts_with("ok: uname -i answers \"unknown\", and \"x86_64\""));
    EXPECT_TRUE(said("product").ends_with("is of kind 5")) << said("product");
    has("dmidecode", "echo 'Product Name: Shoe Box'");
    EXPECT_NE(said("product").find("(kind 4)"), std::string::npos) << said("product");
    has("dmidecode", "echo '# dmidecode 3.4'; echo '/dev/mem: Permission denied' >&2; exit 1");
    EXPECT_EQ(
        said("product"),
        "warning: dmidecode does not tell it: the plug-in will not ask the BMC; /dev/mem: Permission denied");
    EXPECT_EQ(calls().empty(), false);
}

TEST_F(Doctor, SeesWhatOthersCanWrite) {
    fs::permissions(system(), fs::perms{0777});
    const auto outcome = ask();
    EXPECT_EQ(outcome.exit, ::geteuid() == 0 ? 2 : 1) << outcome.out;
    EXPECT_NE(said("search path").find("can be written by others"), std::string::npos);
    EXPECT_NE(said("search path").find("| chown root: "), std::string::npos);
    fs::permissions(system(), fs::perms{0755});
    has("storcli64");
    fs::permissions(system() / "storcli64", fs::perms{0777});
    EXPECT_NE(said("storcli_x64").find("storcli64 is not run: "), std::string::npos);
    EXPECT_TRUE(said("log directory").starts_with("ok: ")) << said("log directory");
    fs::permissions(log_dir(), fs::perms{0777});
    const auto open = run({"doctor", "--log-dir", log_dir().string()});
    EXPECT_EQ(open.exit, 2);
    EXPECT_NE(open.out.find("critical  log directory: "), std::string::npos) << open.out;
}

TEST_F(Doctor, SaysItsUsageAsMonitoringDoes) {
    const auto outcome = run({"doctor", "--format", "xml"});
    EXPECT_EQ(outcome.exit, 3);
    EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: ")) << outcome.out;
}

}  // namespace

}  // namespace test
