#include "qvhost/views.h"

#include <cstdlib>

#include "page/write_page.h"
#include "qvhost/commands.h"
#include "qvhost/facts.h"
#include "report/report_json.h"

namespace qvhost {

void write_views(Store& store, const LogDir& dir) {
    const auto timeout = std::strtoul(store.meta("tool_timeout").c_str(), nullptr, 10);
    store.set_commands(read_commands(dir.commands(), static_cast<unsigned>(timeout)));
    store.set_facts(machine_facts(store, dir));
    store.commit();
    write_report_json(store, dir.json());
    write_page(store, dir.report(), dir.path());
}

}  // namespace qvhost
