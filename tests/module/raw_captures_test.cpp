#include "bench.h"
#include "rbmcinfo/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class RawCaptures : public Bench {};

TEST_F(RawCaptures, HoldTheStandardOutput) {
    for (const auto& [bits, utility] :
         {std::pair<int, std::string>{64, "ipmiutil_x64_nh"}, {32, "ipmiutil_x32_nh"}}) {
        linux_x32_x64 = bits;
        vendor_tool(utility, "echo ${0##*/} $*; echo trouble >&2; exit 3");
        EXPECT_EQ(selhex(), 3 << 8);
        EXPECT_EQ(sen_id(), 3 << 8);
        EXPECT_EQ(noted(), "$ 'P/qv_tools/" + utility +
                               "' sel -r >'L/SEL_Hex.txt'\n"
                               "$ 'P/qv_tools/" +
                               utility + "' sensor >'L/sensor_with_id_string.txt'\n");
        EXPECT_EQ(log_file("SEL_Hex.txt"), utility + " sel -r\n");
        EXPECT_EQ(log_file("sensor_with_id_string.txt"), utility + " sensor\n");
    }
}

TEST_F(RawCaptures, NameNoUtilityForAnyOtherWordSize) {
    for (const int bits : {0, 16, 128}) {
        linux_x32_x64 = bits;
        EXPECT_EQ(selhex(), 127 << 8);
        EXPECT_EQ(sen_id(), 127 << 8);
        EXPECT_EQ(noted(), "$ 'P/L/SEL_Hex.txt'\n$ 'P/L/sensor_with_id_string.txt'\n");
        EXPECT_EQ(log_file("SEL_Hex.txt"), "(none)");
    }
}

}  // namespace
