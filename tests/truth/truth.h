// A server, its captures and the truth about both: what a reader must make of them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "evidence.h"
#include "expect.h"
#include "print.h"

namespace truth {

struct Options {
    std::uint64_t seed = 0;
    Seconds now = 0;               // when the collection ends
    int percent_hurt = 45;         // servers whose captures suffer
    bool is_recorded = false;      // a recorded server gives one answer to a question asked twice
    std::string fault = {};        // this fault alone, where the server can have it
    Damage damage = Damage::none;  // with `page`: this alone happens to the captures
    std::string page = {};
    std::optional<std::size_t> cut_at = {};  // of damages that cut, the byte where
    std::function<void(Server&)> change =
        {};  // what else becomes of the server; it is printed as before
};

struct Made {
    Server server;
    Pages pages;
    Book book;
    Fates fates;
    std::vector<Expected> findings;
    Json truth;  // truth.json
};

// The first seeds from `first` on whose servers can have the fault.
std::vector<std::uint64_t> seeds_with(const std::string& fault, std::size_t count,
                                      std::uint64_t first = 1);

// Pointers lead from the fates to the pages: it stays where it is.
std::unique_ptr<Made> make(const Options& options);

// The captures as the plug-in leaves them, and truth.json.
void write_log_dir(const Made& made, const std::filesystem::path& dir);

// The same as a recorded server: machine.json with a file for each answer.
void write_machine(const Made& made, const std::filesystem::path& dir);

// The kinds of entities with the fields that the contract names.
struct ContractKind {
    const char* name;
    std::vector<const char*> fields;
};
const std::vector<ContractKind>& contract();

// 2026-11-21T06:00:00, the day of all servers that are not told another.
Seconds usual_now();

}  // namespace truth
