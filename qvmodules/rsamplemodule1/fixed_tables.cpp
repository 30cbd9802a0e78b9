// The module's tables that no tool fills.

#include <array>
#include <string_view>

#include "file/record.h"
#include "file/table.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule1/rsamplemodule1.h"

namespace marlox::repository {

using capture::Column;
using capture::Filled;
using capture::header_column;
using capture::Table;

constexpr const char* const ptn[4] = {"peladd1", "peladd2", "peladd3", "peladd4"};

namespace sample1 {

namespace {

constexpr auto kColumns1 = std::to_array<Column>({
    {"S1T1PRO1", "S1T1 PRO 1", "a fixed text"},
    {"S1T1PRO2", "S1T1 PRO 2", "a fixed text"},
    {"S1T1PRO3", "S1T1 PRO 3", "a fixed text"},
    {"S1T1PRO4", "S1T1 PRO 4", "a fixed text"},
});

constexpr auto kColumns2 = std::to_array<Column>({
    {"S1T2PRO1", "S1T2 PRO 1", "a fixed text"},
    {"S1T2PRO2", "S1T2 PRO 2", "a fixed text"},
    {"S1T2PRO3", "S1T2 PRO 3", "a fixed text"},
    {"S1T2PRO4", "S1T2 PRO 4", "a fixed text"},
});

constexpr auto kPelAddColumns = std::to_array<Column>({
    {ptn[0], "PEL addition 1", "not collected"},
    {ptn[1], "PEL addition 2", "not collected"},
    {ptn[2], "PEL addition 3", "not collected"},
    {ptn[3], "PEL addition 4", "not collected"},
});

constexpr auto kControllerColumns = std::to_array<Column>({
    {"Name",          "Name",           "not collected"},
    {"Type",          "Type",           "not collected"},
    {"SupportedRAID", "Supported RAID", "not collected"},
    {"Max",           "Max",            "not collected"},
    {"HWInformation", "HW Information", "not collected"},
    {"VendorID",      "Vendor ID",      "not collected"},
    {"DeviceID",      "Device ID",      "not collected"},
    {"HWRevision",    "HW Revision",    "not collected"},
});

void add(RRepository& repository, const Table& table, std::string_view value) {
    capture::Record record(repository, table);
    for (const Column& column : table.columns) record.set(column, value);
    record.add();
}

}  // namespace

constexpr Table kTable1 = {
    .id = "S1TABLE1",
    .title = "sample 1 - table 1",
    .row = "A row of fixed texts, which shows that records reach the host.",
    .layout = header_column(30, 2),
    .columns = kColumns1,
};
static_assert(capture::well_formed(kTable1));

constexpr Table kTable2 = {
    .id = "S1TABLE2",
    .title = "sample 1 - table 2",
    .row = "A row of fixed texts, which shows that records reach the host.",
    .layout = header_column(30, 2),
    .columns = kColumns2,
};
static_assert(capture::well_formed(kTable2));

constexpr Table kPelAdd = {
    .id = "PELADDTABLE",
    .title = "sample 1 - table 3",
    .row = "A place for additions to the platform event log; no row is filed.",
    .filled = Filled::never,
    .layout = header_column(30),
    .columns = kPelAddColumns,
};
static_assert(capture::well_formed(kPelAdd));

constexpr Table kController = {
    .id = "CONTROLLER",
    .title = "Controller",
    .row = "A place for RAID controllers of other makers; no row is filed.",
    .filled = Filled::never,
    .layout = header_column(10),
    .columns = kControllerColumns,
};
static_assert(capture::well_formed(kController));

void file_samples(RRepository& repository) {
    add(repository, kTable1, "VALUE1");
    add(repository, kTable1, "VALUE2");
    add(repository, kTable2, "VALUE1");
}

}  // namespace sample1

}  // namespace marlox::repository
