// What changed between two reports of a server, as a person would tell it.
#pragma once

#include <string>
#include <vector>

#include "compare/entities.h"
#include "findings/finding.h"
#include "inventory/inventory.h"

namespace qvhost::compare {

// Who collected what, when; texts that are not known are empty.
struct Collection {
    std::string host, machine_id, os, kernel, run_as, version;
    std::string started, finished;  // "2026-11-21T01:20:40Z"
};

struct Side {
    Collection collection;
    inventory::Inventory inventory;
    findings::Verdict verdict;
};

// `unsure`: nothing that tells machines apart stands in both reports.
enum class Machines { same, two, unsure };

struct HealthChange {
    findings::Subsystem subsystem = findings::Subsystem::system;
    findings::HealthWord from = findings::HealthWord::unknown;
    findings::HealthWord to = findings::HealthWord::unknown;
};

// What a health lacked, in its words.
struct Lack {
    findings::Subsystem subsystem = findings::Subsystem::system;
    std::string words;
};

struct SeverityChange {
    findings::Finding finding;  // as the new report has it
    findings::Severity from = findings::Severity::notice;
};

struct Difference {
    Machines machines = Machines::unsure;
    bool is_backwards = false;  // the old report is the later one
    std::vector<HealthChange> health;
    std::vector<Change> changes;  // by kind, in the order of report.json
    std::vector<findings::Finding> new_findings, gone_findings;
    std::vector<SeverityChange> other_severity;
    std::vector<Unread> not_now, not_then;
    std::vector<Lack> lacking_now, lacking_then;  // in one report alone
    std::vector<Lack> lacking_both;               // no difference, but what may hide one

    bool is_empty() const;
};

// One thing that is the same makes it one machine: boards are replaced, systems installed anew.
Machines machines_of(const Side& from, const Side& to);

Difference compare(const Side& from, const Side& to);

}  // namespace qvhost::compare
