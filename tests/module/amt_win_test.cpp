// The two modules whose tables stay empty.
#include "bench.h"

namespace {

class EmptyModules : public Bench {};

TEST_F(EmptyModules, AmtLogsItsPairAtEveryCall) {
    const std::string pair =
        "log 3 qvmodules/ramtinfo: [repo] Enter EnumAMTInstances\n"
        "log 3 qvmodules/ramtinfo: [repo] Exit EnumAMTInstances\n";
    enumerate("AMT_Info", "AMTLOG");
    EXPECT_EQ(noted(), pair);
    enumerate("AMT_Info", "AMTLOG");
    EXPECT_EQ(noted(), pair);
}

TEST_F(EmptyModules, WindowsLogsItsCollectionOnce) {
    const std::string unit = "log 3 qvmodules/rwininfo: [repo] ";
    const std::string first =
        unit + "Enter EnumWINInstances\n" + unit + "Enter CollectData-Windows related info\n" +
        unit + "Exit CollectData-Windows related info\n" + unit + "Exit EnumWINInstances\n";
    const std::string later = unit + "Enter EnumWINInstances\n" + unit + "Exit EnumWINInstances\n";
    enumerate("Windows_Related_Info", "ARPINFO");
    EXPECT_EQ(noted(), first);
    enumerate("Windows_Related_Info", "NETSTATINFO");
    EXPECT_EQ(noted(), later);
    enumerate("Windows_Related_Info", "ARPINFO");
    EXPECT_EQ(noted(), later);

    forget_modules();  // a new object collects anew, from either table
    enumerate("Windows_Related_Info", "NETSTATINFO");
    EXPECT_EQ(noted(), first);
}

TEST_F(EmptyModules, SilentBelowLevel3) {
    fakehost::min_log_level = 2;
    enumerate("AMT_Info", "AMTLOG");
    enumerate("Windows_Related_Info", "ARPINFO");
    EXPECT_EQ(noted(), "");
}

}  // namespace
