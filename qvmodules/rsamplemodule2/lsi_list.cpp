#include <array>
#include <span>
#include <string_view>

#include "file/fields.h"
#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "run/command.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

using capture::Field;
using sample2::unit;

// storcli /c0 show lists the topology, the virtual drives and the physical drives. The columns are
// known by position alone; a report with other columns gives other values.

// DG Arr Row EID:Slot DID Type  State BT       Size PDC  PI SED DS3  FSpace
//  0 -   -   -        -   RAID1 Optl  N  930.390 GB dflt N  N   dflt N
constexpr auto kTopology = std::to_array<Field>({
    {{1},     "DG",     "Disk Group Index"      },
    {{2},     "Arr",    "Array Index"           },
    {{3},     "Row",    "Row Index"             },
    {{4},     "EID",    "EID:Slot"              },
    {{5},     "DID",    "Device ID"             },
    {{6},     "Type",   "Type"                  },
    {{7},     "State",  "State"                 },
    {{8},     "BT",     "Background Task Active"},
    {{9, 10}, "Size",   "Size"                  },
    {{11},    "PDC",    "PD Cache"              },
    {{12},    "PI",     "Protection Info"       },
    {{13},    "SED",    "Self Encrypting Drive" },
    {{14},    "DS3",    "Dimmer Switch 3"       },
    {{15},    "FSpace", "Free Space Present"    },
});
static_assert(capture::well_formed(kTopology));

// DG/VD TYPE  State Access Consist Cache sCC       Size Name
// 0/0   RAID1 Optl  RW     Yes     RWTD  -   930.390 GB system
constexpr auto kVirtualDrives = std::to_array<Field>({
    {{1},    "DG",      "DG/VD"  },
    {{2},    "TYPE",    "TYPE"   },
    {{3},    "State",   "State"  },
    {{4},    "Access",  "Access" },
    {{5},    "Consist", "Consist"},
    {{6},    "Cache",   "Cache"  },
    {{7},    "sCC",     "sCC"    },
    {{8, 9}, "Size",    "Size"   },
    {{10},   "Name",    "Name"   },
});
static_assert(capture::well_formed(kVirtualDrives));

// EID:Slt DID State DG       Size Intf Med SED PI SeSz Model            Sp
// 252:0     8 Onln   0 930.390 GB SATA HDD N   N  512B ST1000NM0033-9ZM173 U
constexpr auto kPhysicalDrives = std::to_array<Field>({
    {{1},    "EID",   "EID:Slt"   },
    {{2},    "DID",   "Device ID" },
    {{3},    "State", "State"     },
    {{4},    "DG",    "DriveGroup"},
    {{5, 6}, "Size",  "Size"      },
    {{7},    "Intf",  "Intf"      },
    {{8},    "Med",   "Med"       },
    {{9},    "SED",   "SED"       },
    {{10},   "PI",    "PI"        },
    {{11},   "SeSz",  "SeSz"      },
    {{12},   "Model", "Model"     },
    {{13},   "Sp",    "Spun"      },
});
static_assert(capture::well_formed(kPhysicalDrives));

// A table of the report: from the line that holds the marker, over five lines of heading, to the
// first rule of at least so many dashes. storcli's own rules are longer than any of the three.
struct Section {
    std::string_view marker;
    std::string_view closing_rule;
    std::span<const Field> fields;
    capture::Record record;
    bool open = false;
};

constexpr int kHeadingLines = 5;

// Every open table looks at a line unless one before it has taken it as part of its heading. They
// share one count of heading lines, which matters when a table never closes: the next one then
// begins with its count far advanced.
template <std::size_t n>
void read_sections(capture::Lines& lines, std::array<Section, n>& sections) {
    int counted = 0;
    while (const auto line = lines.next()) {
        for (Section& section : sections) {
            if (capture::contains(*line, section.marker)) section.open = true;
        }
        for (Section& section : sections) {
            if (!section.open) continue;
            if (counted <= kHeadingLines) {
                ++counted;
                break;
            }
            if (capture::contains(*line, section.closing_rule)) {
                section.open = false;
                counted = 0;
            } else {
                capture::read_fields(*line, section.fields, section.record);
            }
        }
    }
}

}  // namespace

void lsi_list(RRepository& repo) {
    const auto command =
        sample2::tool_command("'{P}qv_tools/storcli_{x}' /c0 show > '{L}c0_showall.txt'");
    unit.progress("raid raw path:", command);
    capture::run(command);

    auto lines = capture::Lines::open(capture::log_dir() + "c0_showall.txt");
    if (!lines) {
        unit.detail("Failed to open raid log file");
        return;
    }
    std::array<Section, 3> sections = {
        {
         {"TOPOLOGY :",
             "--------------------------",
             kTopology,
             {repo, RSampleModule2::T_TINFO_TABLE2, "Controller 0 TOPOLOGY INFO"}},
         {"VD LIST :",
             "---------------------------",
             kVirtualDrives,
             {repo, RSampleModule2::T_VINFO_TABLE2, "Controller 0 Virtual Drive List"}},
         {"PD LIST :",
             "----------------------------",
             kPhysicalDrives,
             {repo, RSampleModule2::T_PINFO_TABLE2, "Controller 0 Physical Drive List"}},
         }
    };
    read_sections(*lines, sections);
}

}  // namespace marlox::repository
