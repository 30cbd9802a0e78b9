// What findings call drives, volumes and controllers: in ids and for people.
#pragma once

#include <string>

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

// "" if it is not known.
std::string number_text(const inventory::Integer& number);

// "c0"; each tool counts controllers for itself: "arcconf_c1" where it is not storcli.
std::string controller_key(const std::string& tool, const inventory::Integer& controller);
// " of controller 0"; "": behind none
std::string at_controller(const inventory::Integer& controller);

// "252:1", "device 11", "sda"
std::string drive_place(const inventory::Drive& drive);
// Its serial number, else where it is.
std::string drive_key(const inventory::Drive& drive);
std::string volume_key(const inventory::Volume& volume);

Subject subject_of(const inventory::Inventory& inventory, const inventory::Drive& drive);
Subject subject_of(const inventory::Inventory& inventory, const inventory::Volume& volume);

// A drive that a volume lacks: "Drive 8:1 of controller 1", "Drive at row 0 of drive group 0 of controller 1"
Subject missing_drive(const inventory::VolumeMember& member);

}  // namespace qvhost::findings
