#pragma once

namespace qvhost::store {

inline constexpr int kApplicationId = 0x71767374;  // "qvst": tells a store from any other database
inline constexpr int kVersion = 2;

// The tables beside those of the collected tables.
extern const char* const kSchema;

}  // namespace qvhost::store
