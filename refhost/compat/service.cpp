// `service ipmi start` before the BMC is asked, `service ipmi stop` behind: RHEL has a unit "ipmi", Debian
// and Ubuntu call it "openipmi", and where there is neither, the driver's modules are loaded. A driver
// that works is left alone, and what was running before is not stopped. What was started stays while the host
// has questions of its own.
#include <filesystem>
#include <fstream>
#include <system_error>

#include "compat/layer.h"
#include "compat/script_parts.h"
#include "files/script.h"

namespace qvhost::compat {

namespace fs = std::filesystem;

namespace {

constexpr const char* kScript = R"(
driver_works() {
    for device in $devices; do
        [ ! -c "$device" ] || return 0
    done
    return 1
}

# Starts the service of this name, and notes how it is stopped again if it was not running.
start_service() {
    running=
    ! service "$1" status >/dev/null 2>&1 || running=1
    service "$1" start || return
    if [ "$running" ]; then
        note "service ipmi start: service $1 was running"
    else
        echo "service $1 stop" >"$started"
        note "service ipmi start: service $1 start"
    fi
}

start_modules() {
    command -v modprobe >/dev/null || return
    loaded=
    for module in ipmi_si ipmi_devintf; do
        [ ! -d "/sys/module/$module" ] || continue
        modprobe "$module" || return
        loaded="$module${loaded:+ $loaded}"
    done
    [ ! "$loaded" ] || echo "modprobe -r $loaded" >"$started"
    note "service ipmi start: modprobe ${loaded:-loads nothing that was not there}"
}

case "$*" in
'ipmi start')
    if driver_works; then
        note 'service ipmi start: the IPMI driver works already'
        exit 0
    fi
    status=127
    if command -v service >/dev/null; then
        start_service ipmi && exit
        status=$?
        start_service openipmi && exit
    fi
    start_modules && exit
    note 'service ipmi start: neither service ipmi nor service openipmi nor modprobe could start the driver'
    [ "$status" -ne 127 ] || exec /bin/sh -c 'service "$@"' sh "$@"
    exit "$status"
    ;;
'ipmi stop')
    if [ ! -f "$started" ]; then
        note 'service ipmi stop: not passed on, since the driver was there before'
        exit 0
    fi
    if [ -f "$kept" ]; then
        note 'service ipmi stop: put off until everything is asked'
        exit 0
    fi
    stop=$(cat "$started")
    rm -f "$started"
    note "service ipmi stop: $stop"
    exec $stop
    ;;
esac
)";

fs::path started(const fs::path& notes) { return notes / "ipmi_started"; }
fs::path kept(const fs::path& notes) { return notes / "ipmi_kept"; }

}  // namespace

void keep_driver(const fs::path& notes) {
    std::error_code error;
    if (fs::is_directory(notes, error)) std::ofstream(kept(notes));
}

bool release_driver(const fs::path& notes) {
    std::error_code error;
    return fs::remove(kept(notes), error) && fs::exists(started(notes), error);
}

std::string service_script(const Place& place) {
    std::string devices;
    for (const auto& device : place.ipmi_devices)
        devices += (devices.empty() ? "" : " ") + device.string();
    return beginning(place) + "devices=" + shell_quoted(devices) +
           "\nstarted=" + shell_quoted(started(place.notes)) +
           "\nkept=" + shell_quoted(kept(place.notes)) + "\n" + kScript + start("service");
}

}  // namespace qvhost::compat
