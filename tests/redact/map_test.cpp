// A map gives the same replacements again, and is its owner's alone.
#include "redact/map_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "host/place.h"

namespace qvhost::redact {

namespace {

class Map : public test::Place {
protected:
    static Values some_values() {
        Values values;
        values.add("EXD00000004", Class::serials, Form::text, true);
        values.add("m\xc3\xbcller", Class::users, Form::text, true);
        values.add("caf\xe9-7", Class::users, Form::text, true);
        values.add("00:25:90:ab:cd:ef", Class::network, Form::hex, true);
        return values;
    }
    std::string refusal(const std::string& text) {
        const auto file = dir / "bad";
        std::ofstream(file) << text;
        ::chmod(file.c_str(), 0600);
        try {
            read_map(file);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }
};

TEST_F(Map, IsTheSameAgain) {
    const auto values = some_values();
    auto first = read_map(dir / "map");
    EXPECT_FALSE(std::filesystem::exists(dir / "map"));
    first.assign(values);
    write_map(dir / "map", first);
    EXPECT_EQ(std::filesystem::status(dir / "map").permissions(), std::filesystem::perms(0600));
    auto second = read_map(dir / "map");
    EXPECT_EQ(second.all(), first.all());
    auto more = values;
    more.add("EXD00000005", Class::serials, Form::text, true);
    second.assign(more);
    for (const auto& [value, replacement] : first.all()) EXPECT_EQ(second.of(value), replacement);
    // A report that was redacted with it is not redacted again.
    Values redacted;
    redacted.add(first.of({Form::text, "exd00000004"}), Class::serials, Form::text, true);
    second.assign(redacted);
    EXPECT_FALSE(second.has(redacted.all().begin()->first));
}

TEST_F(Map, OfOthersIsRefused) {
    Substitutes made = read_map(dir / "map");
    write_map(dir / "map", made);
    ::chmod((dir / "map").c_str(), 0640);
    EXPECT_THROW(read_map(dir / "map"), std::runtime_error);
    ::chmod((dir / "map").c_str(), 0600);
    ASSERT_EQ(::symlink((dir / "map").c_str(), (dir / "link").c_str()), 0);
    EXPECT_THROW(read_map(dir / "link"), std::system_error);
    EXPECT_THROW(read_map(dir), std::exception);
}

TEST_F(Map, ThatIsNoneIsRefused) {
    const std::string key(64, 'a');
    for (
        const auto& text : std::vector<std::string>{
            "", "{}", "[[[[[[]]]]]]", R"({"format":2,"key":")" + key + R"(","values":[]})",
            R"({"format":1,"key":"a","values":[]})",
            R"({"format":1,"key":")" + key +
                R"(","values":[{"form":"ipv4","value":"1.2.3.4","replacement":"1.2.3.44"}]})",
            R"({"format":1,"key":")" + key +
                R"(","values":[{"form":"hex","value":"002590ABCDEF","replacement":"002590abcdee"}]})"})
        EXPECT_NE(refusal(text).find(": it is no map of a redaction"), std::string::npos) << text;
    EXPECT_EQ(refusal(R"({"format":1,"key":")" + key + R"(","values":[]})"), "");
}

}  // namespace

}  // namespace qvhost::redact
