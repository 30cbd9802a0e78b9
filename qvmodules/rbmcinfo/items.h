// The property ids of the BMC's label/value answers, by row, and how many labels the last answer
// had (0: none yet).
#pragma once

#include "export.h"

namespace marlox::repository {

QV_EXPORT extern const char* const leditem[16];   // "LED1" ...; no code reads it
QV_EXPORT extern const char* const mcitem[12];    // "MC1" ...
QV_EXPORT extern const char* const selfitem[2];   // "self1", "self2"
QV_EXPORT extern const char* const veritem[16];   // "VER1" ...
QV_EXPORT extern const char* const lanitem[12];   // "LAN1" ...
QV_EXPORT extern const char* const psuitem[26];   // "PSU1" ...; no code reads it
QV_EXPORT extern const char* const fruitem[160];  // "FRU1" ...; no code reads it

QV_EXPORT extern unsigned led_item_size;  // stays 0, as psu_item_size and fru_item_size
QV_EXPORT extern unsigned mc_item_size;
QV_EXPORT extern unsigned self_item_size;
QV_EXPORT extern unsigned ver_item_size;
QV_EXPORT extern unsigned lan_item_size;
QV_EXPORT extern unsigned psu_item_size;
QV_EXPORT extern unsigned fru_item_size;

}  // namespace marlox::repository
