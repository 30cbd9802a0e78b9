// The classes of what a report can be handed on without.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace qvhost::redact {

enum class Class { serials, network, users, secrets };

struct ClassRow {
    Class which;
    std::string_view name;
    std::string_view meaning;
};

inline constexpr auto kClasses = std::to_array<ClassRow>({
    {Class::serials, "serials", "serial numbers, UUIDs, asset tags, WWNs"            },
    {Class::network, "network", "MAC, IPv4 and IPv6 addresses, host and domain names"},
    {Class::users,   "users",   "user names"                                         },
    {Class::secrets, "secrets", "passwords, keys, tokens"                            },
});

// Some of them.
class ClassSet {
public:
    bool has(Class one) const { return (bits_ >> static_cast<unsigned>(one) & 1U) != 0; }
    void add(Class one) { bits_ |= 1U << static_cast<unsigned>(one); }
    void add(ClassSet others) { bits_ |= others.bits_; }
    bool empty() const { return bits_ == 0; }
    bool operator==(const ClassSet&) const = default;

private:
    unsigned bits_ = 0;
};

std::string_view name_of(Class one);

// "serials,network", or "all". Empty: a word of it is no class.
ClassSet classes_of(std::string_view text);

// "serials,network"
std::string text_of(ClassSet classes);

}  // namespace qvhost::redact
