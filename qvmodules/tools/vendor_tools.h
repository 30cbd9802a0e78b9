// The vendors' tools that modules run: they lie in qv_tools beside the program, one build for each word size.
#pragma once

#include <array>
#include <string_view>

namespace marlox::repository {

struct VendorTool {
    std::string_view name;
    std::string_view x32;
    std::string_view x64;
};

// clang-format off
inline constexpr auto kVendorTools = std::to_array<VendorTool>({
    {"SAS2IR_linux",      "SAS2IR_linux_x32",      "SAS2IR_linux_x64"},
    {"SCELNX",            "SCELNX_32",             "SCELNX_64"},
    {"arcconf",           "arcconf_x32",           "arcconf_x64"},
    {"eventslog_convert", "eventslog_convert_x32", "eventslog_convert_x64"},
    {"ipmiutil",          "ipmiutil_x32_nh",       "ipmiutil_x64_nh"},
    {"sas2ircu",          "sas2ircu",              "sas2ircu"},  // one build for both
    {"storcli",           "storcli_x32",           "storcli_x64"},
});
// clang-format on

}  // namespace marlox::repository
