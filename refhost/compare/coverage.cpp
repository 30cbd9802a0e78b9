#include "compare/coverage.h"

#include <string_view>

namespace qvhost::compare {

namespace {

// "c0_show.txt: storcli: killed by signal 9", "c0_show.txt, line 5: ...": the capture.
std::string capture_in(const std::string& missing) {
    const auto end = missing.find_first_of(":,");
    return end == std::string::npos ? "" : missing.substr(0, end);
}

}  // namespace

Coverage::Coverage(const findings::Verdict& verdict, const std::vector<Table>& tables) {
    for (const auto& table : tables) {
        for (const auto& row : table.rows) whole_.insert(row.place.capture);
        if (!table.rows.empty()) kinds_.insert(table.kind);
    }
    for (const auto& health : verdict.health) {
        whole_.insert(health.judged_by.begin(), health.judged_by.end());
        for (const auto& words : health.missing) broken_.insert(capture_in(words));
        if (!health.missing.empty()) lacking_.insert(health.subsystem);
    }
    for (const auto& finding : verdict.findings) {
        if (finding.rule != "not_read") continue;
        for (const auto& place : finding.evidence) broken_.insert(place.capture);
    }
}

bool Coverage::could_tell(const KindRow& kind, const Row& row) const {
    if (broken_.contains(row.place.capture)) return false;
    if (kinds_.contains(kind.parts_of) && !kinds_.contains(kind.kind)) return false;
    if (whole_.contains(row.place.capture)) return true;
    if (kind.is_always_there && !kinds_.contains(kind.kind)) return false;
    for (const auto subsystem : kind.subsystems) {
        if (lacking_.contains(subsystem)) return false;
    }
    return true;
}

}  // namespace qvhost::compare
