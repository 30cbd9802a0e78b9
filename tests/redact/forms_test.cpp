// Replacements have the form and length of what they replace; classes by their words.
#include "redact/forms.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "redact/classes.h"
#include "redact/substitutes.h"

namespace qvhost::redact {

namespace {

TEST(Classes, ByTheirWords) {
    EXPECT_EQ(text_of(classes_of("all")), "serials,network,users,secrets");
    EXPECT_EQ(text_of(classes_of("users,network")), "network,users");
    for (const auto* const text : {"", "serial", "serials,", ",serials", "serials, users"})
        EXPECT_TRUE(classes_of(text).empty()) << text;
}

struct Canonical {
    Form form;
    const char* text;
    const char* canonical;  // "": it has not that form
};

constexpr Canonical kCanonical[] = {
    {Form::hex, "00:25:90:AB:CD:EF", "002590abcdef"},
    {Form::hex, "0025.90AB.CDEF", "002590abcdef"},
    {Form::hex, "5 000c50 0a1b2c3d4", "5000c500a1b2c3d4"},
    {Form::hex, "EXS00012", ""},
    {Form::ipv4, "192.0.2.7", "192.0.2.7"},
    {Form::ipv4, "192.0.2.256", ""},
    {Form::ipv4, "192.0.02.7", ""},
    {Form::ipv4, "192.0.2", ""},
    {Form::ipv6, "2001:DB8::1", "20010db8000000000000000000000001"},
    {Form::ipv6, "2001:db8:0:0:0:0:0:1", "20010db8000000000000000000000001"},
    {Form::ipv6, "12:34", ""},
    {Form::host, "Web1.Example.COM.", "web1.example.com"},
    {Form::host, "a b", ""},
};

TEST(Forms, AreComparedByWhatTheySay) {
    for (const auto& [form, text, expected] : kCanonical)
        EXPECT_EQ(canonical(form, text).value_or(""), expected) << text;
}

TEST(Forms, StayAsTheyAre) {
    constexpr struct {
        Form form;
        const char* value;
    } kValues[] = {
        {Form::text, "exd00000004"},
        {Form::text, "m\xc3\xbcller"},
        {Form::hex, "002590abcdef"},
        {Form::hex, "5000c500a1b2c3d4"},
        {Form::hex, "4c4c45440042351080b2b4c04f4e3132"},
        {Form::ipv4, "10.2.34.156"},
        {Form::ipv4, "203.0.113.9"},
        {Form::ipv6, "fe80000000000000022590fffeabcdef"},
        {Form::ipv6, "20010db8001200000000000000000007"},
    };
    for (const auto& [form, value] : kValues) {
        Noise noise("key", value);
        for (int i = 0; i < 100; ++i) {
            const auto made = disguised(form, value, noise, i % 2 == 1);
            EXPECT_EQ(made.size(), std::string(value).size()) << value;
            EXPECT_EQ(canonical(form, made), made) << value;
            if (form == Form::ipv6) {
                EXPECT_EQ(short_ipv6(made).size(), short_ipv6(value).size())
                    << value << ' ' << made;
            }
        }
    }
}

TEST(Forms, TakeTheCaseOfWhatTheyReplace) {
    EXPECT_EQ(in_case_of("AB-12", "qx-73"), "QX-73");
    EXPECT_EQ(in_case_of("Ab12", "qx73"), "Qx73");
    EXPECT_EQ(in_case_of("12AB", "ab34"), "AB34");
}

// Many values of which few others are possible.
TEST(Substitutes, AreNoValueAndStandForOne) {
    Values values;
    for (int i = 0; i < 250; ++i)
        values.add("10.0.0." + std::to_string(i), Class::network, Form::ipv4, true);
    for (int i = 0; i < 9; ++i)
        values.add("A" + std::to_string(i), Class::serials, Form::text, true);
    for (int i = 100; i < 300; ++i)
        values.add("EXD00" + std::to_string(i), Class::serials, Form::text, true);
    Substitutes substitutes;
    substitutes.assign(values);
    std::set<std::string> seen;
    for (const auto& [value, use] : values.all()) {
        const auto& made = substitutes.of(value);
        EXPECT_TRUE(seen.insert(made).second) << value.canonical << " -> " << made;
        EXPECT_EQ(values.all().count({value.form, made}), 0u) << value.canonical << " -> " << made;
    }
    EXPECT_GT(seen.size(), 400u);
}

// Its end is a decimal number in smartctl's JSON. Where that is too short to be looked for it does not matter.
TEST(Substitutes, OfWwnsKeepTheirMaker) {
    Values values;
    for (const auto* const wwn : {"5000220000000003", "500605b000002200", "5000c500a1b2c3d4"})
        values.add(wwn, Class::serials, Form::hex, true);
    Substitutes substitutes;
    substitutes.assign(values);
    for (const auto& [value, use] : values.all())
        EXPECT_EQ(substitutes.of(value).substr(0, 7), value.canonical.substr(0, 7));
}

// The number is looked for as it stands in smartctl's JSON, whatever its length, so one as long replaces it.
TEST(Substitutes, OfWwnsHaveALowNumberAsLong) {
    Values values;
    for (const auto* const wwn :
         {"5000c50000002710", "5000c50000012345", "5000c500000186a0", "5000c500000f4240",
          "5000c500009abcde", "5000c50005f5e0ff", "5000c5003b9aca00", "5000c50fffffffff"})
        values.add(wwn, Class::serials, Form::hex, true);
    Substitutes substitutes;
    substitutes.assign(values);
    for (const auto& [value, use] : values.all()) {
        const auto& made = substitutes.of(value);
        ASSERT_EQ(made.substr(0, 7), value.canonical.substr(0, 7));
        EXPECT_NE(made, value.canonical);
        EXPECT_EQ(low_number(Form::hex, made)->size(),
                  low_number(Form::hex, value.canonical)->size())
            << value.canonical << " -> " << made;
    }
}

TEST(Substitutes, OfNeighboursAreNeighbours) {
    Values values;
    for (const auto* const name :
         {"web17.corp.example.org", "db9.corp.example.org", "corp.example.org"})
        values.add(name, Class::network, Form::host, true);
    Substitutes substitutes;
    substitutes.assign(values);
    const auto domain = substitutes.of({Form::host, "corp.example.org"});
    EXPECT_TRUE(substitutes.of({Form::host, "web17.corp.example.org"}).ends_with("." + domain));
    EXPECT_TRUE(substitutes.of({Form::host, "db9.corp.example.org"}).ends_with("." + domain));
    EXPECT_TRUE(domain.ends_with(".org"));
}

// The last label of a host stays, but not if it is a value, or ends with one.
TEST(Substitutes, OfHostsContainNoValue) {
    for (const auto* const last : {"s3cret99", "orgs3cret99"}) {
        Values values;
        values.add("s3cret99", Class::secrets, Form::text, true);
        values.add("db.example." + std::string(last), Class::network, Form::host, true);
        Substitutes substitutes;
        substitutes.assign(values);
        for (const auto& [value, use] : values.all())
            EXPECT_EQ(substitutes.of(value).find("s3cret99"), std::string::npos) << last;
    }
}

}  // namespace

}  // namespace qvhost::redact
