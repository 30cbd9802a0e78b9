// Which entries of an access control list let others write.
#include "qvhost/base/access_list.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "place.h"

namespace qvhost {

namespace {

constexpr std::uint32_t kOwner = 2001;
constexpr std::uint32_t kGroup = 2002;
constexpr std::uint32_t kSomebody = 2003;
constexpr std::uint32_t kNobody = 0xffffffff;

// linux/posix_acl_xattr.h
struct Entry {
    std::uint16_t tag, permissions;
    std::uint32_t id;
};
enum Tag : std::uint16_t {
    user_obj = 0x01,
    user = 0x02,
    group_obj = 0x04,
    group = 0x08,
    mask = 0x10,
    other = 0x20,
};

class AccessLists : public test::Place {
protected:
    // A list that lets its owner alone write, but for the one entry. The mask lets its users and groups do so much.
    bool give(const Entry& entry, std::uint16_t masked) const {
        std::vector<Entry> entries{{user_obj, 6, kNobody},
                                   {group_obj, 4, kNobody},
                                   {mask, masked, kNobody},
                                   {other, 4, kNobody}};
        const auto same = [&](const Entry& one) { return one.tag == entry.tag; };
        std::erase_if(entries, same);
        // The system wants them in the order of their tags.
        const auto behind = std::find_if(entries.begin(), entries.end(),
                                         [&](const Entry& one) { return one.tag > entry.tag; });
        entries.insert(behind, entry);
        std::string value("\x02\0\0\0", 4);
        value.append(reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(Entry));
        return ::setxattr(dir.c_str(), "system.posix_acl_access", value.data(), value.size(), 0) ==
               0;
    }

    bool lets_others_write(bool groups_count = true, gid_t of_group = kGroup) const {
        return list_lets_others_write(dir, AccessList::access, kOwner, of_group, groups_count)
            .value();
    }
};

TEST_F(AccessLists, TellWhoElseMayWrite) {
    if (!give({user, 6, kSomebody}, 6)) GTEST_SKIP() << "no lists here: " << std::strerror(errno);
    const struct {
        Entry entry;
        bool others;
        bool others_where_masked;
    } rows[] = {
        {{user, 6, kSomebody}, true, false},  {{user, 4, kSomebody}, false, false},
        {{user, 6, kOwner}, false, false},    {{user, 6, 0}, false, false},
        {{group, 6, kSomebody}, true, false}, {{group, 4, kSomebody}, false, false},
        {{group, 6, 0}, false, false},        {{group_obj, 6, kNobody}, true, false},
        {{other, 6, kNobody}, true, true},
    };
    for (const auto& [entry, others, others_where_masked] : rows) {
        SCOPED_TRACE(std::to_string(entry.tag) + " " + std::to_string(entry.permissions) + " " +
                     std::to_string(entry.id));
        ASSERT_TRUE(give(entry, 6)) << std::strerror(errno);
        EXPECT_EQ(lets_others_write(), others);
        ASSERT_TRUE(give(entry, 4)) << std::strerror(errno);
        EXPECT_EQ(lets_others_write(), others_where_masked);
    }
}

TEST_F(AccessLists, TheOwningGroupCountsWhereGroupsDoAndItIsNotRoots) {
    if (!give({group_obj, 6, kNobody}, 6))
        GTEST_SKIP() << "no lists here: " << std::strerror(errno);
    EXPECT_TRUE(lets_others_write());
    EXPECT_FALSE(lets_others_write(false));
    EXPECT_FALSE(lets_others_write(true, 0));
}

TEST_F(AccessLists, WhereThereIsNoneTheModeSaysAll) {
    EXPECT_EQ(list_lets_others_write(dir, AccessList::access, kOwner, kGroup, true), std::nullopt);
    EXPECT_EQ(list_lets_others_write(dir, AccessList::default_access, kOwner, kGroup, true),
              std::nullopt);
}

}  // namespace

}  // namespace qvhost
