#include "ask/tools.h"

#include "server.h"

namespace test {

namespace {

using qvhost::ask::find_tool;
using qvhost::ask::not_installed;

class AskedTools : public AskedServer {
protected:
    Texts found(const std::string& tool) {
        Texts commands;
        const auto places = settings().places;
        for (const auto& one : find_tool(tool, places).found)
            commands.push_back(one.name + ": " + one.command);
        return commands;
    }
    std::string quoted(const std::string& file) const {
        return "'" + (vendor_tools / file).string() + "'";
    }
};

TEST_F(AskedTools, TheMakersAreLookedForAsPlugInsDoAndOnTheSearchPath) {
    EXPECT_EQ(found("storcli"), Texts{});
    has_tool("storcli64");
    EXPECT_EQ(found("storcli"), Texts{"storcli64: storcli64"});
    has_tool("storcli");
    EXPECT_EQ(found("storcli"), Texts{"storcli: storcli"});
    has_vendor_tool("storcli");
    EXPECT_EQ(found("storcli"), Texts{"storcli: " + quoted("storcli")});
    has_vendor_tool("storcli_x64");
    EXPECT_EQ(found("storcli"), Texts{"storcli: " + quoted("storcli_x64")});
    has_tool("perccli2");
    has_tool("perccli64");
    EXPECT_EQ(found("storcli"), (Texts{"storcli: " + quoted("storcli_x64"), "perccli64: perccli64",
                                       "perccli2: perccli2"}));
}

TEST_F(AskedTools, TheFirstDirectoryOfTheSearchPathCounts) {
    has_tool("ipmitool");
    auto places = settings().places;
    places.search_path = "::relative:/nowhere:" + path.string();
    EXPECT_EQ(find_tool("ipmitool", places).found.size(), 1u);
    places.search_path = path.filename().string();
    EXPECT_EQ(find_tool("ipmitool", places).found.size(), 0u)
        << "a relative directory is not searched";
}

TEST_F(AskedTools, WhatOthersCanWriteIsNotRun) {
    has_tool("ipmitool");
    has_vendor_tool("ipmitool");
    auto places = settings().places;
    places.why_not_trusted = [&](const std::filesystem::path& file) {
        return file == path / "ipmitool" ? "others can write to it" : "";
    };
    EXPECT_EQ(find_tool("ipmitool", places).found.size(), 1u) << "the other one is trusted";
    std::filesystem::remove(vendor_tools / "ipmitool");
    const auto search = find_tool("ipmitool", places);
    EXPECT_TRUE(search.found.empty());
    EXPECT_EQ(search.problem, "others can write to it");
}

TEST_F(AskedTools, WhatIsNoProgramIsNotRun) {
    has_vendor_tool("storcli_x64");
    std::filesystem::permissions(vendor_tools / "storcli_x64", std::filesystem::perms::owner_read);
    std::filesystem::create_directory(path / "storcli");
    const auto search = find_tool("storcli", settings().places);
    EXPECT_TRUE(search.found.empty());
    EXPECT_EQ(search.problem, (vendor_tools / "storcli_x64").string() + " is not executable");
}

TEST_F(AskedTools, AQuoteInADirectorysNameReachesTheShell) {
    auto places = settings().places;
    places.vendor_tools = dir / "it's";
    std::filesystem::create_directory(places.vendor_tools);
    std::filesystem::copy_file("/bin/true", places.vendor_tools / "storcli_x64");
    EXPECT_EQ(find_tool("storcli", places).found.at(0).command,
              "'" + dir.string() + R"(/it'\''s/storcli_x64')");
}

TEST(NotInstalled, NamesThePackage) {
    EXPECT_EQ(not_installed("smartctl"),
              "smartctl is not installed (Debian package smartmontools)");
    EXPECT_EQ(not_installed("storcli"),
              "storcli is not installed (it comes from the controller's maker)");
}

}  // namespace

}  // namespace test
