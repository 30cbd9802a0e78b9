// The tables of bmc_info(). Four of the six answers are labels and values, which make one record
// with a property a row; the tool prints the labels:
//     Device ID : 32
//     Firmware Revision : 1.2

#include <array>
#include <cstddef>

#include "file/table.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/items.h"

namespace marlox::repository {

using capture::Column;
using capture::header_column;
using capture::header_row;
using capture::Table;

// clang-format off
constexpr const char* const mcitem[12]  = {"MC1", "MC2", "MC3", "MC4", "MC5", "MC6", "MC7", "MC8", "MC9", "MC10", "MC11", "MC12"};
constexpr const char* const selfitem[2] = {"self1", "self2"};
constexpr const char* const veritem[16] = {"VER1", "VER2", "VER3", "VER4", "VER5", "VER6", "VER7", "VER8", "VER9", "VER10", "VER11", "VER12", "VER13", "VER14", "VER15", "VER16"};
constexpr const char* const lanitem[12] = {"LAN1", "LAN2", "LAN3", "LAN4", "LAN5", "LAN6", "LAN7", "LAN8", "LAN9", "LAN10", "LAN11", "LAN12"};
// clang-format on

namespace {

// A column for each row of the answer. Hosts rely on layouts that are shorter than the longest
// answer; records keep all of it.
template <std::size_t n>
consteval std::array<Column, n> answer_rows(const char* const (&ids)[n], std::size_t listed) {
    std::array<Column, n> columns;
    for (std::size_t i = 0; i < n; ++i) {
        columns[i] = {ids[i], "", "the value in this row of the answer"};
        if (i >= listed)
            columns[i].unlisted = "hosts rely on a layout that is shorter than the longest answer";
    }
    return columns;
}

constexpr auto kMcColumns = answer_rows(mcitem, 9);
constexpr auto kSelfColumns = answer_rows(selfitem, 1);
constexpr auto kVerColumns = answer_rows(veritem, 15);
constexpr auto kLanColumns = answer_rows(lanitem, 6);
constexpr auto kPsuColumns = std::to_array<Column>({
    {"PSUINFO", "PSU Detailed Info", "a line of the answer"},
});
constexpr auto kLedColumns = std::to_array<Column>({
    {"LEDINFO", "LED Detailed Status", "a line of the answer"},
});

}  // namespace

constexpr Table kMcInfo = {
    .id = "MCINFO",
    .title = "MC Information",
    .row = "The row is the management controller: its identity and what it can do.",
    .source = {.tool = "ipmiutil",
               .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem mc 1>'{L}mcinfo.txt' 2>&1",
               .capture = "mcinfo.txt",
               .log_label = "MC"},
    .layout = header_column(30),
    .columns = kMcColumns,
};
static_assert(capture::well_formed(kMcInfo));

constexpr Table kSelfInfo = {
    .id = "SELFINFO",
    .title = "QVM Selftest",
    .row = "The row is the result of the management controller's self-test.",
    .source = {.tool = "ipmitool",
               .command = "ipmitool mc selftest 1>'{L}selfinfo.txt' 2>&1",
               .capture = "selfinfo.txt",
               .log_label = "selftest"},
    .layout = header_column(30),
    .columns = kSelfColumns,
};
static_assert(capture::well_formed(kSelfInfo));

constexpr Table kVerInfo = {
    .id = "VERINFO",
    .title = "Version Information",
    .row = "The row is the versions of the server's firmware.",
    .source = {.tool = "ipmiutil",
               .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem ver 1>'{L}verinfo.txt' 2>&1",
               .capture = "verinfo.txt",
               .log_label = "version"},
    .layout = header_column(30),
    .columns = kVerColumns,
};
static_assert(capture::well_formed(kVerInfo));

constexpr Table kPsuInfo = {
    .id = "PSUINFO",
    .title = "PSU Information",
    .row = "A row is a line of what the management controller says of the power supplies.",
    .source = {.tool = "ipmiutil",
               .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem psu 1>'{L}psuinfo.txt' 2>&1",
               .capture = "psuinfo.txt",
               .log_label = "PSU"},
    .layout = header_row(100),
    .columns = kPsuColumns,
};
static_assert(capture::well_formed(kPsuInfo));

constexpr Table kLanInfo = {
    .id = "LANINFO",
    .title = "LAN Information",
    .row = "The row is the management LAN: addresses and how they are assigned.",
    .source = {.tool = "ipmiutil",
               .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem lan 1>'{L}laninfo.txt' 2>&1",
               .capture = "laninfo.txt",
               .log_label = "LAN"},
    .layout = header_column(30),
    .columns = kLanColumns,
};
static_assert(capture::well_formed(kLanInfo));

constexpr Table kLedInfo = {
    .id = "LEDINFO",
    .title = "LEDs Status",
    .row = "A row is a line of what the management controller says of the LEDs.",
    .source = {.tool = "ipmiutil",
               .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem led 1>'{L}ledinfo.txt' 2>&1",
               .capture = "ledinfo.txt",
               .log_label = "LED"},
    .layout = header_row(100),
    .columns = kLedColumns,
};
static_assert(capture::well_formed(kLedInfo));

}  // namespace marlox::repository
