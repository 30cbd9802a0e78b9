#include "redact/map_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "files/descriptor.h"
#include "files/new_file.h"
#include "redact/letters.h"

namespace qvhost::redact {

using nlohmann::ordered_json;

namespace {

constexpr int kFormat = 1;
constexpr std::size_t kMostBytes = 256U << 20;
constexpr std::size_t kKeyDigits = 64;
constexpr int kMostDepth = 3;

// Values may be any bytes; a JSON text is UTF-8. Each byte is the character of that number.
std::string utf8_of(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xc0 | byte >> 6);
            text += static_cast<char>(0x80 | (byte & 0x3f));
        }
    }
    return text;
}

std::string bytes_of(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0xc0 && i + 1 < text.size())
            bytes +=
                static_cast<char>((byte & 3) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3f));
        else
            bytes += text[i];
    }
    return bytes;
}

Substitutes parsed(const std::string& text) {
    const auto json =
        ordered_json::parse(text, [](int depth, ordered_json::parse_event_t, const ordered_json&) {
            if (depth > kMostDepth) throw std::runtime_error("too deep");
            return true;
        });
    if (json.at("format").get<int>() != kFormat) throw std::runtime_error("another format");
    const auto key = json.at("key").get<std::string>();
    if (key.size() != kKeyDigits) throw std::runtime_error("no key");
    std::map<Value, std::string> known;
    for (const auto& one : json.at("values")) {
        const auto form = form_of(one.at("form").get<std::string>());
        const auto value = bytes_of(one.at("value")), replacement = bytes_of(one.at("replacement"));
        if (!form || value.size() != replacement.size() || canonical(*form, value) != value ||
            canonical(*form, replacement) != replacement)
            throw std::runtime_error("no value");
        known[{*form, value}] = replacement;
    }
    return {key, std::move(known)};
}

}  // namespace

Substitutes read_map(const std::filesystem::path& file) {
    const Descriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!fd) {
        if (errno == ENOENT) {
            const Substitutes made;
            return {hex_of(made.key()), {}};
        }
        throw std::system_error(errno, std::generic_category(), file.string());
    }
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode))
        throw std::runtime_error(file.string() + ": it is no file");
    if (info.st_uid != ::geteuid() || (info.st_mode & 077) != 0)
        throw std::runtime_error(
            file.string() + ": others can read or own it; a map is its owner's alone (chmod 600)");
    const auto bytes = static_cast<std::size_t>(info.st_size);
    const auto text = bytes < kMostBytes ? read_bytes(fd.get(), bytes + 1) : "";
    try {
        return parsed(text);
    } catch (const std::exception&) {
        throw std::runtime_error(file.string() + ": it is no map of a redaction");
    }
}

void expect_map_outside(const std::filesystem::path& file, const std::filesystem::path& directory,
                        const std::string& what) {
    const auto name = std::filesystem::weakly_canonical(file),
               top = std::filesystem::weakly_canonical(directory);
    if (std::mismatch(top.begin(), top.end(), name.begin(), name.end()).first == top.end())
        throw std::runtime_error(file.string() + ": a map does not belong into " + what);
}

void write_map(const std::filesystem::path& file, const Substitutes& substitutes) {
    auto values = ordered_json::array();
    for (const auto& [value, replacement] : substitutes.all())
        values.push_back({
            {"form",        name_of(value.form)     },
            {"value",       utf8_of(value.canonical)},
            {"replacement", utf8_of(replacement)    },
        });
    const ordered_json json{
        {"format", kFormat          },
        {"key",    substitutes.key()},
        {"values", std::move(values)},
    };
    replace_file(file, [&](std::ostream& out) { out << json.dump(1) << '\n'; });
}

}  // namespace qvhost::redact
