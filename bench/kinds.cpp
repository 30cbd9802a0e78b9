#include "kinds.h"

#include "logger/control.h"
#include "rbmcinfo/captures.h"
#include "rsamplemodule2/captures.h"

namespace bench {

namespace {

constexpr Kind kKinds[] = {
    {"event_log",   "raidevents.txt", marlox::repository::event_log  },
    {"term_log",    "fwtermlog.txt",  marlox::repository::fw_term_log},
    {"drive_list",  "pdlist.txt",     marlox::repository::pd_list    },
    {"sensor_list", "sensorinfo.txt",
     [](marlox::repository::RRepository& repository) {
         marlox::repository::sensor_info(repository);
     }                                                               },
};

}  // namespace

std::span<const Kind> kinds() { return kKinds; }

void read_captures_in(const std::string& directory) {
    qvhost::open_log({.log_dir = directory + "/", .log_file = "", .min_level = 2});
}

}  // namespace bench
