#include "redact/common.h"

#include <algorithm>
#include <array>
#include <set>

#include "redact/letters.h"

namespace qvhost::redact {

namespace {

// clang-format off
constexpr auto kNothing = std::to_array<std::string_view>({
    "none", "(none)", "<none>", "null", "(null)", "nil", "n/a", "na", "unknown", "unspecified", "undefined", "empty",
    "not specified", "not available", "not applicable", "not present", "not set", "not provided", "not found",
    "not supported", "not recorded", "no dimm", "no asset tag", "no asset information", "asset tag", "serial number",
    "system serial number", "chassis serial number", "base board serial number", "default string", "default",
    "to be filled by o.e.m.", "to be filled by o.e.m", "o.e.m.", "oem", "invalid", "unavailable", "reserved", "blank",
    "0123456789", "123456789", "1234567890", "xxxxxxxxxx", "...", "---", "--",
    "yes", "no", "true", "false", "on", "off", "enabled", "disabled", "enable", "disable", "supported", "unsupported",
    "required", "optional", "expired", "changed", "valid", "never", "always", "absent", "present", "ok", "failed",
    "assigned", "unassigned", "hidden", "redacted", "masked", "prompt", "auto", "static", "dhcp", "any", "all",
});

constexpr auto kWords = std::to_array<std::string_view>({
    // users
    "root", "admin", "administrator", "user", "users", "guest", "nobody", "anonymous", "operator", "system", "service",
    "daemon", "bin", "sys", "sync", "games", "man", "lp", "mail", "news", "uucp", "proxy", "www-data", "backup",
    "list", "irc", "gnats", "_apt", "sshd", "ntp", "chrony", "dbus", "messagebus", "polkitd", "polkit", "tss", "rpc",
    "postfix", "mysql", "postgres", "nginx", "apache", "httpd", "oracle", "named", "systemd", "kernel", "cron",
    "systemd-network", "systemd-resolve", "systemd-timesync", "systemd-coredump", "debian", "ubuntu", "centos",
    "login", "username", "password", "passwd", "secret", "token", "public", "private", "default", "callback",
    "monitor", "monitoring", "support", "manager", "owner", "account", "local", "remote", "test", "tests",
    // hosts
    "localhost", "localhost.localdomain", "localdomain", "ip6-localhost", "ip6-loopback", "server", "host", "node",
    "machine", "computer", "client", "gateway", "router", "switch", "storage", "database", "hostname", "linux",
    "windows", "debian12", "bmc", "ipmi", "domain", "network", "example", "workgroup",
    // words of reports
    "health", "warning", "critical", "notice", "findings", "finding", "temperature", "cooling", "power", "memory",
    "processor", "processors", "collection", "complete", "incomplete", "sensor", "sensors", "drive", "drives",
    "volume", "volumes", "controller", "controllers", "enclosure", "enclosures", "battery", "batteries", "events",
    "event", "model", "product", "serial", "firmware", "report", "capture", "captures", "command", "commands",
    "state", "status", "device", "devices", "module", "modules", "table", "tables", "record", "records", "online",
    "offline", "optimal", "degraded", "rebuild", "settings", "version", "release", "missing", "bundle", "manifest",
    "summary", "console", "index", "assets", "script", "style", "plug-in", "qvhost", "ipmitool", "storcli", "arcconf",
    "smartctl", "dmidecode", "lspci", "dmesg", "cpuinfo", "interrupts", "change", "changes", "light", "print",
    // words of captures
    "build", "builder", "buildd", "mockbuild", "geeko", "package", "driver", "current", "cache", "write", "policy",
    "media", "error", "errors", "count", "total", "slots", "array", "group", "groups", "level",
    "speed", "width", "voltage", "reading", "threshold", "revision", "vendor", "manufacturer", "present",
    "failed", "rebuilding", "background", "initialization", "properties", "backplane", "connector",
    "interface", "channel", "address", "number", "description", "success", "failure", "information", "personality",
    "board", "chassis", "supply", "input", "output", "upper", "lower", "nominal", "degrees", "volts",
    "watts", "amps", "percent", "physical", "virtual", "logical", "foreign", "global", "dedicated", "spare", "disk",
    "disks", "flash", "image", "update", "debug", "trace", "probe", "reset", "fault", "alarm", "timer", "clock",
    "month", "today", "linux-gnu", "amd64", "x86_64", "megaraid", "adaptec", "intel", "samsung", "seagate", "toshiba",
    "micron", "lenovo", "hitachi", "fujitsu", "supermicro", "dell", "hewlett", "packard", "broadcom", "mellanox",
});

// Names of makers, projects and distributions as tools print them.
constexpr auto kPublic = std::to_array<std::string_view>({
    "kernel.org", "debian.org", "ubuntu.com", "canonical.com", "redhat.com", "fedoraproject.org", "centos.org",
    "rockylinux.org", "almalinux.org", "suse.com", "suse.de", "novell.com", "opensuse.org", "oracle.com", "gentoo.org",
    "archlinux.org", "freedesktop.org", "gnu.org", "systemd.io", "0pointer.de", "smartmontools.org", "github.com",
    "gitlab.com", "githubusercontent.com", "sourceforge.net", "launchpad.net", "zfsonlinux.org", "openzfs.org",
    "opensource.org", "apache.org", "python.org", "openssl.org", "openssh.com", "libssh.org", "nvmexpress.org",
    "dmtf.org", "intel.com", "amd.com", "nvidia.com", "mellanox.com", "broadcom.com", "avagotech.com", "lsi.com",
    "adaptec.com", "microsemi.com", "microchip.com", "seagate.com", "wdc.com", "westerndigital.com", "hgst.com",
    "samsung.com", "micron.com", "toshiba.com", "kioxia.com", "supermicro.com", "dell.com", "hp.com", "hpe.com",
    "lenovo.com", "ibm.com", "cisco.com", "fujitsu.com", "vmware.com", "microsoft.com", "google.com", "qemu.org",
    "linux-ipmi.org", "ietf.org", "w3.org", "mozilla.org", "sqlite.org", "json-schema.org", "wikipedia.org",
    "linuxfoundation.org", "kde.org", "gnome.org", "pci-ids.ucw.cz", "pciids.sourceforge.net", "redfish.dmtf.org",
});

// Types of partitions, which are the same on every disk.
constexpr auto kPartitionTypes = std::to_array<std::string_view>({
    "c12a7328f81f11d2ba4b00a0c93ec93b", "0fc63daf848347728e793d69d8477de4", "0657fd6da4ab43c484e50933c84b4f4f",
    "e6d6d379f50744c2a23c238f2a3df928", "a19d880f05fc4d3ba006743f0f84911e", "21686148644944746e6f744e65656449",
    "4f68bce3e8cd4db196e7fbcaf984b709", "933ac7e12eb44f13b8440e14e2aef915", "ebd0a0a2b9e5443387c068b6b72699c7",
    "e3c9e3160b5c4db8817df92df00215ae", "de94bba406d14d40a16abfd50179d6ac", "bc13c2ff59e64262a352b275fd6f7172",
    "8da63339000760c0c436083ac8230908", "44479540f29741b29af7d131d5f0458a", "6a898cc31dd211b299a6080020736631",
});

// Among them: ffffffffffff, which no network card has.
constexpr auto kNoHex = std::to_array<std::string_view>({"0123456789abcdef", "123456789abc", "03000200040005000006000700080009"});
// clang-format on

// "0000", "xxxx", "ff:ff:ff:ff:ff:ff"
bool is_of_one_character(std::string_view text) {
    char only = '\0';
    for (const char c : text) {
        if (!is_alnum(c) && !is_wide(c)) continue;
        if (only != '\0' && c != only) return false;
        only = c;
    }
    return only == '\0' || text.size() > 1;
}

bool is_netmask(std::string_view address) { return address.starts_with("255."); }

bool is_common_ipv4(std::string_view address) {
    constexpr std::string_view kBeginnings[] = {"127.", "224.0.0.", "239.255.255."};
    return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                       [&](auto one) { return address.starts_with(one); });
}

bool is_common_ipv6(std::string_view digits) {
    const bool is_small =
        std::all_of(digits.begin(), digits.end() - 1, [](char c) { return c == '0'; });
    return is_small || digits.starts_with("ff0");
}

}  // namespace

bool is_one_of(std::span<const std::string_view> list, std::string_view text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

bool says_nothing(Form form, std::string_view canonical) {
    switch (form) {
        case Form::ipv4: return canonical.starts_with("0.") || is_netmask(canonical);
        case Form::ipv6: return is_of_one_character(canonical);
        case Form::hex:
            return is_of_one_character(canonical) || is_one_of(kPartitionTypes, canonical) ||
                   is_one_of(kNoHex, canonical);
        case Form::host: return is_one_of(kNothing, canonical) || is_public_host(canonical);
        case Form::text: break;
    }
    return is_one_of(kNothing, canonical) ||
           (is_of_one_character(canonical) && canonical.size() > 1) ||
           std::none_of(canonical.begin(), canonical.end(),
                        [](char c) { return is_alnum(c) || is_wide(c); });
}

bool is_common_value(Form form, std::string_view canonical) {
    switch (form) {
        case Form::ipv4: return is_common_ipv4(canonical);
        case Form::ipv6: return is_common_ipv6(canonical);
        case Form::hex: return false;
        case Form::text:
        case Form::host: break;
    }
    static const std::set<std::string_view> words(kWords.begin(), kWords.end());
    return words.count(canonical) > 0;
}

bool is_public_host(std::string_view host) {
    return std::any_of(kPublic.begin(), kPublic.end(), [&](std::string_view domain) {
        return host == domain || (host.size() > domain.size() && host.ends_with(domain) &&
                                  host[host.size() - domain.size() - 1] == '.');
    });
}

std::span<const std::string_view> common_words() { return kWords; }
std::span<const std::string_view> public_domains() { return kPublic; }

}  // namespace qvhost::redact
