// What looks like an address or a number of a device by itself, wherever it stands.
#pragma once

#include <cstddef>
#include <string_view>

#include "redact/find.h"

namespace qvhost::redact {

// "00:25:90:ab:cd:ef", "00-25-...", "0025.90ab.cdef"
bool is_mac(std::string_view text);

// A name of at least so many labels that ends as names of networks do: "db.example.org", "printer.lan".
bool looks_like_domain(std::string_view text, std::size_t labels);

class AddressFinder {
public:
    AddressFinder(std::string_view text, const TakeFound& take) : text_(text), take_(take) {}

    // A character that may be part of one: any of ":.-@x$5". Places must ascend.
    void look_at(std::size_t at);

private:
    struct Token {
        std::size_t at, end;
    };
    void look_at_colon(std::size_t at);
    void look_at_url(std::size_t at);
    void look_at_dot(std::size_t at);
    void look_at_dash(std::size_t at);
    void look_at_sign(std::size_t at);
    void look_at_number(std::size_t at);
    void look_at_hash(std::size_t at);
    Token token_around(std::size_t at, bool (*is_part)(char)) const;
    void take(std::size_t at, std::size_t end, Class which, Form form) const;
    void take_host(std::size_t at, std::size_t end) const;
    bool take_colons(std::size_t at, std::size_t end) const;
    bool is_version(std::size_t at, std::size_t end) const;

    std::string_view text_;
    const TakeFound& take_;
    std::size_t done_ = 0;  // up to there all was looked at
};

}  // namespace qvhost::redact
