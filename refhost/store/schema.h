// The SQL schema of a store.
#pragma once

namespace qvhost::store {

inline constexpr int kApplicationId = 0x71767374;  // "qvst": tells a store from any other database
inline constexpr int kVersion = 2;

// Creates the tables qv_*.
extern const char* const kSchema;

}  // namespace qvhost::store
