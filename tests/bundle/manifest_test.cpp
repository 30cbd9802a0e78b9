// manifest.json: what is written is read, and what is none is refused.
#include "bundle/manifest.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace qvhost::bundle {

namespace {

Manifest manifest() {
    return {
        "qvhost 1.0.0",
        "0.9.0",
        "web1",
        "2026-11-21T01:20:00Z",
        "2026-11-21T01:20:40Z",
        "complete",
        "serials,network",
        {{"c0.txt", 12, "ab", "storcli /c0 show >c0.txt", "2026-11-21T01:20:01Z", 0.5,
          "exit code 1"},
         {"pmc.txt", 0, "cd", "arcconf getconfig 1 >pmc.txt", "", {}, "it could not be started"},
         {"SUMMARY.txt", 5, "ef"}},
        {{"big \"log\"", "the bundle would be larger than it may be", 1u << 31}}};
}

TEST(Manifest, IsReadAsItWasWritten) {
    EXPECT_EQ(read_manifest(json_of(manifest())), manifest());
    EXPECT_EQ(read_manifest(json_of(Manifest{"qvhost 1.0.0"})), Manifest{"qvhost 1.0.0"});
}

TEST(Manifest, OfAnotherFormIsRefused) {
    const auto good = json_of(manifest());
    const auto with = [&](const std::string& from, const std::string& to) {
        auto text = good;
        const auto at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return text.replace(at, from.size(), to);
    };
    EXPECT_THROW(read_manifest(""), std::runtime_error);
    EXPECT_THROW(read_manifest("[]"), std::runtime_error);
    EXPECT_THROW(read_manifest(std::string(60000, '[')), std::runtime_error);
    EXPECT_THROW(read_manifest(good.substr(0, good.size() / 2)), std::runtime_error);
    for (const auto& [from, to] : std::initializer_list<std::pair<const char*, const char*>>{
             {"\"format\": 1", "\"format\": 2"},
             {"\"format\": 1", "\"format\": \"1\""},
             {"\"files\"", "\"things\""},
             {"\"bytes\": 12", "\"bytes\": \"12\""},
             {"\"sha256\": \"ab\"", "\"sha256\": null"},
             {"\"seconds\": 0.5", "\"seconds\": []"},
             {"\"reason\"", "\"why\""}})
        EXPECT_THROW(read_manifest(with(from, to)), std::runtime_error) << from;
}

}  // namespace

}  // namespace qvhost::bundle
