// Every parser of the plug-in: its capture holds the input, and the records that it files are those of
// the naive reader where there is one. The program's own name tells which parser: the build links it
// as parser_NAME for each row.
#include <cerrno>
#include <cstring>
#include <functional>

#include "check.h"
#include "fakehost.h"
#include "naive.h"
#include "no_tools.h"
#include "notes.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/items.h"
#include "rbmcinfo/platform.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "scratch.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

struct Parser {
    const char* name;
    const char* capture;  // nullptr: what the commands print
    std::function<void(RRepository&)> read;
    std::string (*naive)(const std::string& file);  // nullptr: there is none
};

template <int kind>
void answer(RRepository& repo) {
    bmc_info(repo, kind);
}

void platform(RRepository&) {
    check_bmc();
    check_ipmi_devintf();
    check_linux_bit();
}

void controllers(RRepository& repo) { RSampleModule2().EnumQV2Instances(repo); }

const Parser kParsers[] = {
    {"adaptec",               "Firmware/Controller 1 Config.txt", pmc_info,     naive::adaptec            },
    {"controllers",           "ctrlcount.txt",                    controllers,  nullptr                   },
    {"data_records",          "sdrinfo.txt",                      sdr_info,     naive::data_records       },
    {"drive_details",         "pdlist.txt",                       pd_list,      naive::drive_details      },
    {"events",                "raidevents.txt",                   event_log,    naive::events             },
    {"first_fru",             "fruinfo.txt",                      fru_info_amd, naive::first_fru          },
    {"fru",                   "fruinfo.txt",                      fru_info,     naive::fru                },
    {"integrated_raid_log",   "ir.txt",                           sas2308_log,  naive::integrated_raid_log},
    {"lan",                   "laninfo.txt",                      answer<5>,    naive::lan                },
    {"leds",                  "ledinfo.txt",                      answer<6>,    naive::leds               },
    {"lists",                 "c0_showall.txt",                   lsi_list,     naive::lists              },
    {"management_controller", "mcinfo.txt",                       answer<1>,    naive::controller         },
    {"platform",              nullptr,                            platform,     nullptr                   },
    {"power_supplies",        "psuinfo.txt",                      answer<4>,    naive::power_supplies     },
    {"sel",                   "selinfo.txt",                      sel_info,     naive::events_of_bmc      },
    {"selftest",              "selfinfo.txt",                     answer<2>,    naive::self_test          },
    {"sensors",               "sensorinfo.txt",                   sensor_info,  naive::sensors            },
    {"summary",               "c0_showall.txt",                   lsi_info,     naive::summary            },
    {"term_log",              "fwtermlog.txt",                    fw_term_log,  naive::term_log           },
    {"versions",              "verinfo.txt",                      answer<3>,    naive::versions           },
};

const Parser& chosen() {
    const std::string program = program_invocation_short_name;
    for (const Parser& parser : kParsers) {
        if (program == "parser_" + std::string(parser.name)) return parser;
    }
    fuzz::expect(false, "the program is called parser_NAME");
    std::abort();
}

// The log directory, which is the current one while a parser reads.
class Place {
public:
    Place() : before_(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        std::filesystem::create_directory(scratch_ / "Firmware");
        fuzz::write_file(scratch_ / "b.txt", "1\n");  // a SAS2308
        fakehost::log_dir = scratch_.path().string() + "/";
        fakehost::min_log_level = 2;  // details would repeat every line of the input
    }
    void enter() const { fuzz::expect(::chdir(fakehost::log_dir.c_str()) == 0, "it is there"); }
    void leave() const { fuzz::expect(::fchdir(before_) == 0, "the way back is known"); }

private:
    fuzz::Scratch scratch_;
    int before_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Parser& parser = chosen();
    static const Place place;
    const auto text = fuzz::text_of(data, size);

    place.enter();
    fuzz::printed = "64\n";
    if (parser.capture) {
        fuzz::write_file(parser.capture, text);
    } else {
        fuzz::printed = text;
    }
    std::memset(total_buff, 0, sizeof total_buff);
    flag_data = 0;
    linux_x32_x64 = 64;
    fakehost::notes.clear();
    parser.read(fakehost::repository());

    const auto records = fuzz::noted_records();
    if (parser.naive)
        fuzz::expect_same(records, parser.naive(parser.capture), "the naive reader reads the same");
    place.leave();
    return 0;
}
