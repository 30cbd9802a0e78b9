#include "findings/finding.h"

namespace qvhost::findings {

const char* word(Severity severity) {
    switch (severity) {
        case Severity::critical: return "critical";
        case Severity::warning: return "warning";
        case Severity::unknown: return "unknown";
        case Severity::notice: return "notice";
    }
    return "";
}

const char* word(Subsystem subsystem) {
    switch (subsystem) {
        case Subsystem::temperature: return "temperature";
        case Subsystem::cooling: return "cooling";
        case Subsystem::power: return "power";
        case Subsystem::memory: return "memory";
        case Subsystem::processor: return "processor";
        case Subsystem::storage: return "storage";
        case Subsystem::bmc: return "bmc";
        case Subsystem::system: return "system";
        case Subsystem::collection: return "collection";
    }
    return "";
}

const char* word(HealthWord health) {
    switch (health) {
        case HealthWord::critical: return "critical";
        case HealthWord::warning: return "warning";
        case HealthWord::unknown: return "unknown";
        case HealthWord::ok: return "ok";
        case HealthWord::absent: return "absent";
    }
    return "";
}

std::string since(const Finding& finding, const Verdict& verdict) {
    const auto& seen = finding.first_seen;
    return !seen || seen == finding.time || *seen >= verdict.started ? "" : *seen;
}

std::string words_of(const Acknowledgement& acknowledgement) {
    const auto& [until, by, why] = acknowledgement;
    return "acknowledged" + (by.empty() ? "" : " by " + by) + " until " + until +
           (why.empty() ? "" : ": " + why);
}

}  // namespace qvhost::findings
