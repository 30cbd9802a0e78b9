// SHA-256 of bytes that come in parts.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace qvhost::bundle {

class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void add(std::string_view bytes);
    // Of all that was added, in lower-case hexadecimal digits. Ends it.
    std::string hex();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qvhost::bundle
