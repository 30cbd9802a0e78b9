#include "rbmcinfo/platform.h"

#include <string>

#include "rbmcinfo/unit.h"
#include "read/text.h"
#include "runner/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

struct Code {
    const char* text;
    int kind;
    const char* message;
};

constexpr const char* kGrantley = "Grantley 4R1T or KV900, has BMC, return 5";
constexpr const char* kFjord = "fjord(kn100), has BMC(no led), return 7";
constexpr const char* kLowAndAmd =
    "KL010 or KL020 or KP220E or AMD KM801 or AMD KM802, has BMC, return 9";
constexpr const char* kIvb = "IVB 4R1T, has BMC, return 11";

// Tested in this order, anywhere in the upper-cased name. The row KP220E is
// never reached: the row KP220 matches every name that contains it.
constexpr Code kCodes[] = {
    {"KP120",  kFullBmc,        kGrantley },
    {"KP220",  kFullBmc,        kGrantley },
    {"KP320",  kFullBmc,        kGrantley },
    {"KP420",  kFullBmc,        kGrantley },
    {"KW120",  kFullBmc,        kGrantley },
    {"KV900",  kFullBmc,        kGrantley },
    {"KN100",  kBmcWithoutLeds, kFjord    },
    {"KL010",  kReducedBmc,     kLowAndAmd},
    {"KL020",  kReducedBmc,     kLowAndAmd},
    {"KP220E", kReducedBmc,     kLowAndAmd},
    {"KM801",  kReducedBmc,     kLowAndAmd},
    {"KM802",  kReducedBmc,     kLowAndAmd},
    {"KP010",  kReducedBmcIvb,  kIvb      },
    {"KP110",  kReducedBmcIvb,  kIvb      },
    {"KP210",  kReducedBmcIvb,  kIvb      },
    {"KP310",  kReducedBmcIvb,  kIvb      },
    {"KW110",  kReducedBmcIvb,  kIvb      },
};

}  // namespace

// dmidecode prints "	Product Name: KP220 Rack Server"; awk leaves " KP220 Rack Server".
int check_bmc() {
    const auto output =
        runner::output_of("dmidecode -t system 2>&1|grep 'Product Name'|awk -F: '{print $2}'");
    if (!output) {
        unit.progress("Fail to get the Product Name");
        return kUnreadableProduct;
    }
    // Only the first 19 characters count, the leading blank included.
    std::string name(capture::first_line(*output, 19));
    unit.progress("Product name(20bytes):", name);

    // Unlike the codes, this word is compared case by case.
    if (capture::contains(name, "Converged")) {
        unit.progress("Converged, has BMC(no led), return 7");
        return kBmcWithoutLeds;
    }
    strupr(name.data());
    for (const Code& code : kCodes) {
        if (!capture::contains(name, code.text)) continue;
        unit.progress(code.message);
        return code.kind;
    }
    unit.progress("No BMC, return 4");
    return kNoBmc;
}

int check_ipmi_devintf() {
    const auto output = runner::output_of("lsmod|grep ipmi_devintf|wc -l");
    if (!output) {
        unit.progress("Fail to get the status of ipmi_devintf module");
        return -1;
    }
    // The first character of the count is enough: it is '0' only if no such module is loaded.
    const auto digit = capture::first_line(*output, 1);
    unit.progress("check ipmi_devintf load status:", digit);
    const bool loaded = !capture::contains(digit, "0");
    unit.progress(loaded ? "ipmi_devintf is loaded" : "ipmi_devintf is not loaded");
    return loaded ? 1 : 0;
}

}  // namespace marlox::repository
