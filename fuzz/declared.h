// Tables that are filled in each of the ways, as a plug-in declares them.
#pragma once

#include <vector>

#include "store/declared_table.h"

namespace fuzz {

inline std::vector<qvhost::DeclaredTable> declared_tables() {
    return {
        {.id = "SELFINFO",
         .title = "",
         .filled = "always",
         .tool = "ipmitool",
         .command = "ipmitool mc selftest",
         .capture = "selfinfo.txt",
         .log_label = "selftest",
         .not_asked = "",
         .gates = {}                                                         },
        {.id = "FRUINFO",
         .title = "",
         .filled = "always",
         .tool = "ipmitool",
         .command = "ipmitool fru",
         .capture = "fruinfo.txt",
         .log_label = "FRU",
         .not_asked = "",
         .gates = {"dmidecode -t system", "uname -i", "service ipmi start >"}},
        {.id = "RAIDINFO",
         .title = "",
         .filled = "always",
         .tool = "storcli",
         .in_qv_tools = true,
         .command = "'{P}storcli' >'{L}c0_showall.txt'",
         .capture = "c0_showall.txt",
         .log_label = "",
         .not_asked = "",
         .gates = {}},
        {.id = "PMCINFO",
         .title = "",
         .filled = "pmc",
         .tool = "",
         .command = "",
         .capture = "",
         .log_label = "",
         .not_asked = "",
         .gates = {}                                                     },
    };
}

}  // namespace fuzz
