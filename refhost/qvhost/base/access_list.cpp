#include "qvhost/base/access_list.h"

#include <sys/xattr.h>

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qvhost {

namespace {

// The value of the attribute, linux/posix_acl_xattr.h: a header, then entries, in little-endian order.
struct Entry {
    std::uint16_t tag;
    std::uint16_t permissions;
    std::uint32_t id;
};
constexpr std::size_t kHeaderBytes = 4;

enum Tag : std::uint16_t {
    named_user = 0x02,
    owning_group = 0x04,
    named_group = 0x08,
    mask = 0x10,
    others = 0x20,
};
constexpr unsigned kWrite = 2;

std::vector<Entry> entries_of(std::string_view value) {
    std::vector<Entry> entries;
    for (std::size_t at = kHeaderBytes; at + sizeof(Entry) <= value.size(); at += sizeof(Entry)) {
        Entry entry{};
        std::memcpy(&entry, value.data() + at, sizeof entry);
        entries.push_back(entry);
    }
    return entries;
}

}  // namespace

std::optional<bool> list_lets_others_write(const std::string& path, AccessList kind, uid_t owner,
                                           gid_t group, bool groups_count) {
    const char* const name =
        kind == AccessList::access ? "system.posix_acl_access" : "system.posix_acl_default";
    std::string value(65536, '\0');
    const ssize_t size = ::getxattr(path.c_str(), name, value.data(), value.size());
    if (size <= 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    const auto entries = entries_of(value);
    unsigned allowed = 07;
    for (const auto& entry : entries) {
        if (entry.tag == mask) allowed = entry.permissions;
    }
    for (const auto& entry : entries) {
        const bool writes = (entry.permissions & kWrite) != 0;
        const bool masked = writes && (allowed & kWrite) != 0;
        const bool stranger = entry.id != 0 && entry.id != owner;
        if (entry.tag == others && writes) return true;
        if (entry.tag == named_user && masked && stranger) return true;
        if (entry.tag == named_group && masked && entry.id != 0) return true;
        if (entry.tag == owning_group && masked && groups_count && group != 0) return true;
    }
    return false;
}

}  // namespace qvhost
