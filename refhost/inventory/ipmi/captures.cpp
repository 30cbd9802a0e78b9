#include "inventory/ipmi/captures.h"

#include <array>

#include "inventory/ipmi/readers.h"

namespace qvhost::inventory {

// clang-format off
std::span<const CaptureReader> ipmi_captures() {
    static constexpr auto kCaptures = std::to_array<CaptureReader>({
        // the plug-in's
        {"sensorinfo.txt",            read_sensors           },
        {"sdrinfo.txt",               read_sdr               },
        {"fruinfo.txt",               read_fru               },
        {"selinfo.txt",               read_ipmiutil_sel,      nullptr, false, "bmc"},
        {"mcinfo.txt",                read_mc_info           },
        {"selfinfo.txt",              read_selftest          },
        {"verinfo.txt",               read_oem_versions      },
        {"psuinfo.txt",               read_oem_power_supplies},
        {"laninfo.txt",               read_oem_lan           },
        {"ledinfo.txt",               read_oem_leds          },
        {"sensor_with_id_string.txt", read_ipmiutil_sensors  },
        // the host's own questions
        {"host_ipmitool_sensor.txt",  read_sensors           },
        {"host_ipmitool_sdr.txt",     read_sdr               },
        {"host_ipmitool_fru.txt",     read_fru               },
        {"host_sel.txt",              read_sel,               nullptr, false, "bmc"},
        {"host_sel_info.txt",         read_sel_info          },
        {"host_selftest.txt",         read_selftest          },
        {"host_mc_info.txt",          read_mc_info           },
        {"host_chassis_status.txt",   read_chassis_status    },
    });
    return kCaptures;
}
// clang-format on

}  // namespace qvhost::inventory
