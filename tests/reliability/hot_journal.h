// What a hostile sender lays beside a store.
#pragma once

#include <cstdint>
#include <string>

namespace test {

inline std::string big_endian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
    return bytes;
}

// A rollback journal that SQLite takes for one of a program that crashed: without pages, and with the
// name of a super-journal, which SQLite removes when it has rolled back. The form is that of SQLite's
// "Database File Format", section 3. `database` is its bytes.
inline std::string hot_journal(const std::string& database, const std::string& super_journal) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(database.at(at)); };
    const std::uint32_t page_size = byte(16) * 256u + byte(17);
    const auto pages = static_cast<std::uint32_t>(database.size() / page_size);
    std::string journal("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);
    journal +=
        big_endian(0) + big_endian(0) + big_endian(pages) + big_endian(512) + big_endian(page_size);
    journal.resize(512);
    std::uint32_t sum = 0;
    for (const char c : super_journal) sum += static_cast<std::uint32_t>(c);
    return journal + big_endian(0x40000000 / page_size + 1) + super_journal +
           big_endian(static_cast<std::uint32_t>(super_journal.size())) + big_endian(sum) +
           std::string("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);
}

}  // namespace test
