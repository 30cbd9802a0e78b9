#include "rbmcinfo/platform.h"

#include <cerrno>

#include "bench.h"

using namespace marlox::repository;

namespace {

class Platform : public Bench {
protected:
    void product(const std::string& name) {
        tool("dmidecode", prints("\tManufacturer: Example\n\tProduct Name: " + name + "\n"));
    }
};

constexpr const char* kLog = "log 3 qvmodules/rbmcinfo: [repo] ";

TEST_F(Platform, KindComesFromTheProductName) {
    const std::string grantley = "Grantley 4R1T or KV900, has BMC, return 5";
    const std::string low = "KL010 or KL020 or KP220E or AMD KM801 or AMD KM802, has BMC, return 9";
    struct Case {
        std::string name;
        int kind;
        std::string message;
    };
    const Case cases[] = {
        {"KP120", 5, grantley},
        {"KP220 Rack", 5, grantley},
        {"KP320", 5, grantley},
        {"KP420", 5, grantley},
        {"KW120", 5, grantley},
        {"KV900", 5, grantley},
        {"kp120", 5, grantley},               // folded
        {"KP220E Rack Server", 5, grantley},  // holds the code of the KP220
        {"KN100", 7, "fjord(kn100), has BMC(no led), return 7"},
        {"KP220E", 5, grantley},
        {"xKP120x", 5, grantley},
        {"Converged HX", 7, "Converged, has BMC(no led), return 7"},
        {"Converged KP120", 7, "Converged, has BMC(no led), return 7"},
        {"converged HX", 4, "No BMC, return 4"},  // this one test is not folded
        {"converged KP120", 5, grantley},
        {"123456789Converged", 7, "Converged, has BMC(no led), return 7"},
        {"1234567890Converged", 4, "No BMC, return 4"},
        {"KL010", 9, low},
        {"KL020", 9, low},
        {"KM801", 9, low},
        {"KM802", 9, low},
        {"KP010", 11, "IVB 4R1T, has BMC, return 11"},
        {"KP110", 11, "IVB 4R1T, has BMC, return 11"},
        {"KP210", 11, "IVB 4R1T, has BMC, return 11"},
        {"KP310", 11, "IVB 4R1T, has BMC, return 11"},
        {"KW110", 11, "IVB 4R1T, has BMC, return 11"},
        // The order of the codes decides, not that in the name.
        {"KP310 and KP120", 5, grantley},
        {"KP310 and KN100", 7, "fjord(kn100), has BMC(no led), return 7"},
        {"KL010 and KN100", 7, "fjord(kn100), has BMC(no led), return 7"},
        {"KP310 and KL020", 9, low},
        {"Other", 4, "No BMC, return 4"},
        {"1234567890123KP120", 5, grantley},  // the code ends at the 19th character
        {"12345678901234KP120", 4, "No BMC, return 4"},
    };
    for (const auto& [name, kind, message] : cases) {
        product(name);
        EXPECT_EQ(check_bmc(), kind) << name;
        const auto read = (" " + name + "\n").substr(0, 19);
        EXPECT_EQ(noted(), "$ dmidecode -t system 2>&1|grep 'Product Name'|awk -F: '{print $2}'\n" +
                               (kLog + ("Product name(20bytes):" + fakehost::escaped(read))) +
                               "\n" + kLog + message + "\n");
    }
}

TEST_F(Platform, OnlyTheFirstNameBetweenTwoColonsCounts) {
    tool("dmidecode", prints("Product Name: AB:KP120\nProduct Name: KP120\n"));
    EXPECT_EQ(check_bmc(), 4);
    EXPECT_EQ(noted({"log"}),
              std::string(kLog) + "Product name(20bytes): AB\\n\n" + kLog + "No BMC, return 4\n");
}

TEST_F(Platform, OnlyTheFirstLineCounts) {
    tool("dmidecode", prints("Product Name:\nProduct Name: KP120\n"));
    EXPECT_EQ(check_bmc(), 4);
    EXPECT_EQ(noted({"log"}),
              std::string(kLog) + "Product name(20bytes):\\n\n" + kLog + "No BMC, return 4\n");
}

// What dmidecode says on standard error is searched as well.
TEST_F(Platform, TheNameMayStandInAWarning) {
    tool("dmidecode", "echo 'Product Name: KN100' >&2");
    EXPECT_EQ(check_bmc(), 7);
}

TEST_F(Platform, NoNameIsNoBmc) {
    tool("dmidecode", "exit 127");
    EXPECT_EQ(check_bmc(), 4);
    EXPECT_EQ(noted({"log"}),
              std::string(kLog) + "Product name(20bytes):\n" + kLog + "No BMC, return 4\n");
}

TEST_F(Platform, ANameThatCannotBeAskedForIsKind255) {
    fake_system.spawn_error = [](std::string_view) { return ENOMEM; };
    EXPECT_EQ(check_bmc(), 255);
    EXPECT_EQ(noted({"log"}), std::string(kLog) + "Fail to get the Product Name\n");
}

TEST_F(Platform, SilenceBelowLevel3ChangesNothingElse) {
    fakehost::min_log_level = 2;
    product("KP120");
    EXPECT_EQ(check_bmc(), 5);
    EXPECT_EQ(noted({"log"}), "");
}

TEST_F(Platform, DriverIsLoadedUnlessTheCountBeginsWithZero) {
    struct Case {
        const char* count;
        int result;
        const char* shown;
    };
    const Case cases[] = {{"0\n", 0, "0"}, {"2\n", 1, "2"},   {"10\n", 1, "1"},
                          {"", 1, ""},     {"  0\n", 1, " "}, {"01\n", 0, "0"}};
    tool("lsmod", "exit 0");
    for (const auto& [count, result, shown] : cases) {
        tool("wc", prints(count));
        EXPECT_EQ(check_ipmi_devintf(), result) << count;
        EXPECT_EQ(noted(),
                  std::string("$ lsmod|grep ipmi_devintf|wc -l\n") + kLog +
                      "check ipmi_devintf load status:" + shown + "\n" + kLog +
                      (result ? "ipmi_devintf is loaded\n" : "ipmi_devintf is not loaded\n"));
    }
}

TEST_F(Platform, DriverStatusThatCannotBeAskedFor) {
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    EXPECT_EQ(check_ipmi_devintf(), -1);
    EXPECT_EQ(noted({"log"}),
              std::string(kLog) + "Fail to get the status of ipmi_devintf module\n");
}

}  // namespace
