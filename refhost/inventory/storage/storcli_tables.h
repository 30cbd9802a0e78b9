// The tables that storcli, perccli and storcli2 print, and the entities that their rows are.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "inventory/columns.h"
#include "inventory/inventory.h"
#include "inventory/reading.h"

namespace qvhost::inventory::storcli {

// What a table's rows are counted as, against what the tool announced.
enum class Counted {
    no,
    topology,
    volumes,
    drives,
    jbods,
    enclosures,
    batteries,
    controllers,
};
constexpr std::size_t kCounted = 8;

struct Where {
    Integer controller;
    std::string_view section;  // the heading above the table: "Cachevault_Info"
};

struct Table {
    std::span<const Column> columns;
    Counted counted;
    // Adds what the row tells; false if its cells cannot be read.
    bool (*read)(const Row& row, const Where& where, std::int64_t line, Reading& reading);
};

std::span<const Table> tables();

// "/c0/e8/s1", "/c0/s1", "/c0/v3", "/c0/e14", with whatever stands before and behind it.
struct Path {
    Integer controller, enclosure, slot, volume;
    std::string_view rest;  // what follows it
};
std::optional<Path> path_in(std::string_view text);

// The drive's enclosure and slot: "252:1", " :5", "-" (false if it is none of these).
bool read_place(std::string_view cell, Integer& enclosure, Integer& slot);

}  // namespace qvhost::inventory::storcli
