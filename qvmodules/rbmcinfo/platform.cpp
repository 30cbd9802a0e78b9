#include "rbmcinfo/platform.h"

#include <initializer_list>
#include <string>

#include "capture/process.h"
#include "capture/text.h"
#include "rbmcinfo/tools.h"
#include "rbmcinfo/unit.h"

namespace marlox::repository {

namespace {

struct Family {
    std::initializer_list<const char*> codes;  // a product name that holds one of these
    int kind;
    const char* message;
};

// Tested in this order, anywhere in the upper-cased name. A KP220E therefore is a KP220; its own
// entry is out of reach for every name that holds the code.
constexpr Family kFamilies[] = {
    {{"KP120", "KP220", "KP320", "KP420", "KW120", "KV900"},
     kFullBmc,                                                                "Grantley 4R1T or KV900, has BMC, return 5"                            },
    {{"KN100"},                                              kBmcWithoutLeds, "fjord(kn100), has BMC(no led), return 7"                              },
    {{"KL010", "KL020", "KP220E", "KM801", "KM802"},
     kReducedBmc,                                                             "KL010 or KL020 or KP220E or AMD KM801 or AMD KM802, has BMC, return 9"},
    {{"KP010", "KP110", "KP210", "KP310", "KW110"},          kReducedBmcIvb,  "IVB 4R1T, has BMC, return 11"                                         },
};

}  // namespace

// dmidecode prints "	Product Name: KP220 Rack Server"; awk leaves " KP220 Rack Server".
int check_bmc() {
    const auto output =
        capture::output_of("dmidecode -t system 2>&1|grep 'Product Name'|awk -F: '{print $2}'");
    if (!output) {
        unit.progress("Fail to get the Product Name");
        return kUnreadableProduct;
    }
    // Nineteen characters count, the blank in front included.
    std::string name(capture::first_line(*output, 19));
    unit.progress("Product name(20bytes):", name);

    // The only test of the name as it is written.
    if (capture::contains(name, "Converged")) {
        unit.progress("Converged, has BMC(no led), return 7");
        return kBmcWithoutLeds;
    }
    strupr(name.data());
    for (const Family& family : kFamilies) {
        for (const char* code : family.codes) {
            if (!capture::contains(name, code)) continue;
            unit.progress(family.message);
            return family.kind;
        }
    }
    unit.progress("No BMC, return 4");
    return kNoBmc;
}

int check_ipmi_devintf() {
    const auto output = capture::output_of("lsmod|grep ipmi_devintf|wc -l");
    if (!output) {
        unit.progress("Fail to get the status of ipmi_devintf module");
        return -1;
    }
    // One character of the count is enough: it is '0' only if there is no such module.
    const auto digit = capture::first_line(*output, 1);
    unit.progress("check ipmi_devintf load status:", digit);
    const bool loaded = !capture::contains(digit, "0");
    unit.progress(loaded ? "ipmi_devintf is loaded" : "ipmi_devintf is not loaded");
    return loaded ? 1 : 0;
}

}  // namespace marlox::repository
