// Access control lists of files, acl(5).
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace qvhost {

enum class AccessList {
    access,          // of the file itself
    default_access,  // what is made in a directory gets
};

// Whether the list lets somebody write who is neither root nor the owner; nothing if there is no list, and the mode
// says all. A group counts if `groups_count`, and it is not root's. `path` is followed.
std::optional<bool> list_lets_others_write(const std::string& path, AccessList kind, uid_t owner,
                                           gid_t group, bool groups_count);

}  // namespace qvhost
