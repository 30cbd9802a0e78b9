// Files that are written over and over.
#include "files/scratch_files.h"

#include <gtest/gtest.h>

#include <string>

#include "place.h"

namespace {

using namespace qvhost;

void write(const ScratchFile& file, const std::string& text) {
    const auto written = file.open();
    ASSERT_TRUE(write_bytes(written.get(), text));
}

TEST(ScratchFilesTest, GivesNoFileToTwo) {
    ScratchFiles files("qvhost-test");
    const ScratchFile one(files);
    const ScratchFile other(files);
    EXPECT_NE(one.path(), other.path());
}

TEST(ScratchFilesTest, HoldsWhatWasWrittenLast) {
    ScratchFiles files("qvhost-test");
    std::filesystem::path path;
    {
        const ScratchFile one(files);
        path = one.path();
        write(one, "a long text");
    }
    const ScratchFile again(files);
    EXPECT_EQ(again.path(), path);
    write(again, "short");
    EXPECT_EQ(test::content(path), "shortg text");
    again.cut(5);
    EXPECT_EQ(test::content(path), "short");
}

TEST(ScratchFilesTest, KeepsNoLargeFile) {
    ScratchFiles files("qvhost-test");
    std::filesystem::path path;
    {
        const ScratchFile one(files);
        path = one.path();
        write(one, std::string((1u << 20) + 1, 'x'));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    const ScratchFile again(files);
    write(again, "short");
    EXPECT_EQ(test::content(again.path()), "short");
}

}  // namespace
