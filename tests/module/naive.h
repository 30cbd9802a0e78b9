// Readers as plain as they can be: a 512-byte buffer, fgets(), strstr(), strtok(), one test after the
// other. They say the same as the parsers in as different a way as possible.
#pragma once

#include <string>

namespace naive {

// Each reads a capture file and returns the records that belong into the repository, noted as the fake
// host notes them.
std::string summary(const std::string& file);
std::string drive_details(const std::string& file);
std::string lists(const std::string& file);
std::string events(const std::string& file);
std::string term_log(const std::string& file);
std::string integrated_raid_log(const std::string& file);
std::string sensors(const std::string& file);
std::string data_records(const std::string& file);
std::string versions(const std::string& file);
std::string fru(const std::string& file);
std::string first_fru(const std::string& file);
std::string power_supplies(const std::string& file);
std::string leds(const std::string& file);
std::string controller(const std::string& file);
std::string self_test(const std::string& file);
std::string lan(const std::string& file);
std::string events_of_bmc(const std::string& file);
std::string adaptec(const std::string& file);

}  // namespace naive
