// The declarations of all modules, each defined beside its module's list of tables.
#pragma once

#include <array>

#include "file/table.h"
#include "rbmcinfo/captures.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule2/captures.h"

namespace marlox::repository {

extern const capture::Module kAmtModule;
extern const capture::Module kWindowsModule;

// In the order of AddModules().
inline constexpr std::array<const capture::Module*, 5> kDeclaredModules = {
    &sample1::kModule, &sample2::kModule, &bmc::kModule, &kAmtModule, &kWindowsModule};

}  // namespace marlox::repository
