// The states of a power supply that are judged. Each names its own line.
#pragma once

#include <array>

#include "inventory/entities.h"

namespace qvhost::inventory {

struct PowerSupplyState {
    const char* field;
    Text PowerSupply::*member;
};

constexpr auto kPowerSupplyStates = std::to_array<PowerSupplyState>({
    {"state",       &PowerSupply::state      },
    {"input_state", &PowerSupply::input_state},
});

}  // namespace qvhost::inventory
