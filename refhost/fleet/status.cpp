#include "fleet/status.h"

#include <algorithm>
#include <tuple>

#include "store/typed_value.h"

namespace qvhost::fleet {

namespace {

constexpr const char* kStates[] = {"critical", "warning", "unknown", "ok"};

// From the worst on. Nobody knows how a silent host is, which is worse than a warning that somebody sees.
int rank(const HostStatus& host) {
    const auto* const state = std::find_if(std::begin(kStates), std::end(kStates),
                                           [&](const char* one) { return host.state == one; });
    const auto place = static_cast<int>(state - std::begin(kStates));
    return host.is_silent ? std::min(2 * place, 1) : 2 * place;
}

std::string first_known(const Row& row, std::size_t begin, std::size_t end) {
    for (auto i = begin; i < end; ++i) {
        if (auto words = text_of(row[i]); !words.empty()) return words;
    }
    return "";
}

}  // namespace

FleetStatus status_of(Database& db, Milliseconds now, Milliseconds silent_after) {
    FleetStatus status;
    db.each(
        "SELECT s.host_name, s.serial, s.machine_id, s.last_run, s.critical, s.warning, s.unknown,"
        " s.findings, s.replaced, w.subject, w.says"
        " FROM host_status s LEFT JOIN worst_findings w ON w.host = s.host",
        {}, [&](const Row& row) {
            if (integer_of(row[8]) != 0) return void(++status.replaced);
            HostStatus host;
            host.name = first_known(row, 0, 3);
            host.age = std::max<Milliseconds>(now - integer_of(row[3]), 0);
            host.is_silent = host.age > silent_after;
            std::size_t place = 0;
            while (place < 3 && integer_of(row[4 + place]) == 0) ++place;
            host.state = kStates[place];
            host.findings = integer_of(row[7]);
            const auto subject = text_of(row[9]);
            host.worst = subject + (subject.empty() ? "" : ": ") + text_of(row[10]);
            status.hosts.push_back(std::move(host));
        });
    std::sort(status.hosts.begin(), status.hosts.end(), [](const auto& a, const auto& b) {
        const auto key = [](const HostStatus& one) {
            return std::make_tuple(rank(one), -one.findings, std::cref(one.name), one.age);
        };
        return key(a) < key(b);
    });
    return status;
}

}  // namespace qvhost::fleet
