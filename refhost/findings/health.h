// One word for each subsystem: the worst of its findings; without such, `ok` only where the evidence
// that could have said otherwise was read whole.
#pragma once

#include <string>
#include <vector>

#include "findings/finding.h"
#include "findings/past.h"
#include "inventory/survey.h"

namespace qvhost::findings {

// A question that could not be asked. It alone makes no subsystem unknown.
struct Lack {
    std::string subsystem;
    std::string words;
};

// How long the BMC took to say who it is.
struct BmcAnswer {
    double seconds = 0;
    Place place;
};

// What is known of the collection as a whole.
struct Circumstances {
    std::string now;                            // when it ended, ISO 8601, on this system's clock
    std::string incomplete_because;             // in words; empty: it is complete
    std::vector<std::string> cut_off_commands;  // "sensorinfo.txt: ipmitool: killed by signal 9"
    std::vector<std::string> unanswered_by_bmc =
        {};  // commands to it that were stopped, in the same words
    // What could not be asked: "ipmitool is not installed (Debian package ipmitool)".
    std::vector<Lack> lacks = {};
    Past past = {};
    std::vector<BmcAnswer> bmc_answers = {};
};

std::vector<Health> judge_health(const inventory::Survey& survey,
                                 const Circumstances& circumstances,
                                 const std::vector<Finding>& findings);

// The capture that says that the machine has no BMC; null: nothing says so.
const inventory::SurveyedCapture* absence_of_bmc(const inventory::Survey& survey);

// Whether its tool is not there.
bool is_not_installed(const inventory::SurveyedCapture& capture);

// Why a capture does not say all that it should, in words; empty: it is whole.
std::string why_not_whole(const inventory::SurveyedCapture& capture);

}  // namespace qvhost::findings
