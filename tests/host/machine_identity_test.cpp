#include "qvhost/base/machine_identity.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>

namespace qvhost {

namespace {

struct Case {
    const char* os_release;
    std::optional<std::string> name;
};

TEST(MachineIdentity, TheSystemsNameIsReadAsAShellWould) {
    const Case cases[] = {
        {"", std::nullopt},
        {"NAME=\"Debian GNU/Linux\"\nID=debian\n", std::nullopt},
        {"PRETTY_NAME=\n", std::nullopt},
        {"PRETTY_NAME=\"\"\n", std::nullopt},
        {"NAME=x\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"",
         "Debian GNU/Linux 12 (bookworm)"},
        {"PRETTY_NAME='A \"quoted\" one'\n", "A \"quoted\" one"},
        {"PRETTY_NAME=\"10 \\$ \\\"OS\\\" \\\\\"\nVERSION=1\n", "10 $ \"OS\" \\"},
        {"PRETTY_NAME=Plain\n", "Plain"},
        {"PRETTY_NAME=\"never ends", "never ends"},
        {"OLD_PRETTY_NAME=x\n", std::nullopt},
    };
    for (const auto& [os_release, name] : cases) {
        SCOPED_TRACE(os_release);
        EXPECT_EQ(os_name_in(os_release), name);
    }
}

TEST(MachineIdentity, IsThatOfTheSystem) {
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    const auto machine = this_machine();
    EXPECT_EQ(machine.host, names.nodename);
    EXPECT_EQ(machine.kernel, names.release);
    ASSERT_TRUE(machine.uptime_seconds);
    EXPECT_GT(*machine.uptime_seconds, 0);
    EXPECT_NE(effective_user(), "");
}

}  // namespace

}  // namespace qvhost
