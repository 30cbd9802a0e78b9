#include "inventory/system/captures.h"

#include <array>

#include "inventory/system/readers.h"

namespace qvhost::inventory {

// clang-format off
std::span<const CaptureReader> system_captures() {
    static constexpr auto kCaptures = std::to_array<CaptureReader>({
        // the plug-in's
        {"dmidecode.log",          read_dmidecode },
        {"dmesg.log",              read_dmesg,     nullptr, false, kOwnLog},
        {"cpuinfo.log",            read_cpuinfo   },
        {"cmdline.log",            read_cmdline   },
        // the host's own questions
        {"host_dmidecode.txt",     read_dmidecode },
        {"host_dmesg.txt",         read_dmesg,     nullptr, false, kOwnLog},
        {"host_cpuinfo.txt",       read_cpuinfo   },
        {"host_lspci.txt",         read_lspci     },
        {"host_cmdline.txt",       read_cmdline   },
        {"host_os_release.txt",    read_os_release},
        {"host_uptime.txt",        read_uptime    },
        {"host_hostname.txt",      read_hostname  },
        {"host_machine_id.txt",    read_machine_id},
        {"host_uname.txt",         read_kernel    },
    });
    return kCaptures;
}
// clang-format on

}  // namespace qvhost::inventory
