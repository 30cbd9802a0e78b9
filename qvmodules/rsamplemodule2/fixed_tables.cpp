// The module's tables that no tool fills.

#include <array>

#include "file/record.h"
#include "file/table.h"
#include "rsamplemodule2/captures.h"

namespace marlox::repository::sample2 {

using capture::Column;
using capture::Filled;
using capture::header_row;
using capture::Table;

namespace {

constexpr auto kColumns1 = std::to_array<Column>({
    {"item1", "Name", "a fixed number", 20},
    {"item2",       "Reading",       "a fixed number"       },
    {"item3",       "Status",       "a fixed number" },
    {"item4",       "LCR",       "a fixed number"          },
    {"item5",       "LNR",       "a fixed number" },
    {"item6",       "UCR",       "a fixed number"          },
});

constexpr auto kColumns2 = std::to_array<Column>({
    {"S2T2PRO1",      "S2T2 PRO 1",   "a fixed text", 20},
    {"S2T2PRO2",      "S2T2 PRO 2",   "a fixed text"},
    {"S2T2PRO3",   "S2T2 PRO 3", "a fixed text"              },
    {"S2T2PRO4", "S2T2 PRO 4",             "a fixed text",               20  },
});

constexpr auto kEndDeviceColumns = std::to_array<Column>({
    {"ID",           "ID",            "not collected"},
    {"Type",         "Type",          "not collected"},
    {"DiskType",     "Disk Type",     "not collected"},
    {"State",        "State",         "not collected"},
    {"Size",         "Size",          "not collected"},
    {"SystemDisk",   "System Disk",   "not collected"},
    {"Usage",        "Usage",         "not collected"},
    {"SerialNumber", "Serial Number", "not collected"},
    {"Model",        "Model",         "not collected"},
});

constexpr auto kArrayColumns = std::to_array<Column>({
    {"Name",       "Name",        "not collected"},
    {"Size",       "Size",        "not collected"},
    {"Free",       "Free",        "not collected"},
    {"NumDisks",   "Disks",       "not collected"},
    {"NumVols",    "Volumes",     "not collected"},
    {"WriteCache", "Write Cache", "not collected"},
});

constexpr auto kVolumeColumns = std::to_array<Column>({
    {"Name",        "Name",         "not collected"},
    {"RaidLevel",   "RAID Level",   "not collected"},
    {"Size",        "Size",         "not collected"},
    {"StripeSize",  "Stripe Size",  "not collected"},
    {"NumDisks",    "Disks",        "not collected"},
    {"State",       "State",        "not collected"},
    {"System",      "System",       "not collected"},
    {"Initialized", "Initialized",  "not collected"},
    {"CachePolicy", "Cache Policy", "not collected"},
});

}  // namespace

constexpr Table kTable1 = {
    .id = "S2TABLE1",
    .title = "sample 2 - table 1",
    .row = "A row of fixed numbers, which shows that records reach the host.",
    .layout = header_row(16),
    .columns = kColumns1,
};
static_assert(capture::well_formed(kTable1));

constexpr Table kTable2 = {
    .id = "S2TABLE2",
    .title = "sample 2 - table 2",
    .row = "A row of fixed texts, which shows that records reach the host.",
    .layout = header_row(30),
    .columns = kColumns2,
};
static_assert(capture::well_formed(kTable2));

constexpr Table kEndDevices = {
    .id = "ENDDEVICEINFO",
    .title = "End devices",
    .row = "A place for the drives of a SAS2308 controller; no row is filed.",
    .filled = Filled::never,
    .layout = header_row(5),
    .columns = kEndDeviceColumns,
};
static_assert(capture::well_formed(kEndDevices));

constexpr Table kArray = {
    .id = "ARRAY",
    .title = "Arrays",
    .row = "A place for the arrays of a SAS2308 controller; no row is filed.",
    .filled = Filled::never,
    .layout = header_row(5),
    .columns = kArrayColumns,
};
static_assert(capture::well_formed(kArray));

constexpr Table kVolume = {
    .id = "VOLUME",
    .title = "Volumes",
    .row = "A place for the volumes of a SAS2308 controller; no row is filed.",
    .filled = Filled::never,
    .layout = header_row(5),
    .columns = kVolumeColumns,
};
static_assert(capture::well_formed(kVolume));

void file_samples(RRepository& repo) {
    for (int i = 0; i < 6; ++i) {
        capture::Record record(repo, kTable1);
        int value = i;
        for (const Column& column : kColumns1) record.set(column, value++);
        record.add();
    }
    capture::Record record(repo, kTable2);
    for (const Column& column : kColumns2) record.set(column, "VALUE1");
    record.add();
}

}  // namespace marlox::repository::sample2
