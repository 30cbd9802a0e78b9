#include "inventory/ipmi/units.h"

#include <array>

#include "inventory/forms.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

struct Unit {
    std::string_view name;
    std::string_view kind;
};

// IPMI 2.0, table 43-15, in ipmitool's words.
constexpr auto kUnits = std::to_array<Unit>({
    {"degrees C",           "temperature"},
    {"degrees F",           "temperature"},
    {"degrees K",           "temperature"},
    {"% degrees C",         "temperature"},
    {"RPM",                 "fan"        },
    {"CFM",                 "airflow"    },
    {"Volts",               "voltage"    },
    {"Amps",                "current"    },
    {"Watts",               "power"      },
    {"VA",                  "power"      },
    {"Joules",              "energy"     },
    {"percent",             "percent"    },
    {"Hz",                  "frequency"  },
    {"kPa",                 "pressure"   },
    {"PSI",                 "pressure"   },
    {"microsecond",         "time"       },
    {"millisecond",         "time"       },
    {"second",              "time"       },
    {"minute",              "time"       },
    {"hour",                "time"       },
    {"day",                 "time"       },
    {"week",                "time"       },
    {"discrete",            "discrete"   },
    {"unspecified",         "other"      },
    {"Coulombs",            "other"      },
    {"liters",              "other"      },
    {"cycles",              "other"      },
    {"ohms",                "other"      },
    {"PPM",                 "other"      },
    {"Decibels",            "other"      },
    {"bytes",               "other"      },
    {"error",               "other"      },
    {"correctable error",   "other"      },
    {"uncorrectable error", "other"      },
});

struct SensorType {
    std::string_view code;
    std::string_view kind;
};

// IPMI 2.0, table 42-3.
constexpr auto kTypes = std::to_array<SensorType>({
    {"01", "temperature"},
    {"02", "voltage"    },
    {"03", "current"    },
    {"04", "fan"        },
});

}  // namespace

std::string kind_of_sensor(std::string_view unit, std::string_view name) {
    for (const auto& row : kUnits) {
        if (row.name != unit) continue;
        if (row.kind == "percent" && name.size() >= 3 && same_word(name.substr(0, 3), "fan"))
            return "fan";
        return std::string(row.kind);
    }
    return "other";
}

bool is_unit(std::string_view text) {
    for (const auto& row : kUnits)
        if (row.name == text) return true;
    return false;
}

std::optional<std::string> kind_of_sensor_type(std::string_view type) {
    for (const auto& row : kTypes)
        if (row.code == type) return std::string(row.kind);
    return std::nullopt;
}

}  // namespace qvhost::inventory
