// Secrets that are known, in any spelling and any capture of the recorded servers: none is left, and nothing else is
// touched.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "host/place.h"
#include "redact/redactor.h"
#include "redact/text_file.h"
#include "setting.h"
#include "text/case.h"

namespace qvhost::redact {

namespace {

namespace fs = std::filesystem;

using Random = std::mt19937;

std::string some(Random& random, std::size_t size, const std::string& of) {
    std::string text;
    while (text.size() < size) text += of[random() % of.size()];
    return text;
}

const std::string kDigits = "0123456789", kHex = "0123456789abcdef",
                  kLetters = "abcdefghijklmnopqrstuvwxyz", kCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

std::string raised(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string grouped(const std::string& digits, std::size_t size, const std::string& divider) {
    std::string text;
    for (std::size_t i = 0; i < digits.size(); i += size)
        text += (i > 0 ? divider : "") + digits.substr(i, size);
    return text;
}

std::string in_hex(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += kHex[byte / 16];
        text += kHex[byte % 16];
    }
    return text;
}

std::string in_base64(const std::string& bytes) {
    const std::string alphabet = kCapitals + kLetters + kDigits + "+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        for (std::size_t k = i; k < i + 3; ++k)
            group = group * 256 + (k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0U);
        for (int k = 3; k >= 0; --k) text += alphabet[group >> (6 * k) & 63];
    }
    text.resize((bytes.size() * 8 + 5) / 6);
    return text;
}

std::string bytewise_reversed(const std::string& digits) {
    std::string text;
    for (std::size_t end = digits.size(); end >= 2; end -= 2) text += digits.substr(end - 2, 2);
    return text;
}

struct Secret {
    std::string field;                   // a line that says what it is
    std::vector<std::string> spellings;  // as it stands elsewhere
    std::vector<std::string> traces;     // what must not be left, in lower case
};

// A number, however it is divided.
void spell_number(Secret& secret, const std::string& digits) {
    for (const std::size_t size : {2U, 4U, 8U}) {
        for (const std::string divider : {"", ":", "-", " ", "."}) {
            secret.spellings.push_back(grouped(digits, size, divider));
            secret.spellings.push_back(raised(grouped(digits, size, divider)));
        }
    }
    secret.spellings.push_back(grouped(bytewise_reversed(digits), 2, ":"));
    secret.spellings.push_back("0x" + digits);
    secret.traces = {digits, bytewise_reversed(digits)};
}

void spell_text(Secret& secret, const std::string& text) {
    for (const auto& one : {text, lowered(text), raised(text)}) {
        secret.spellings.push_back(one);
        secret.spellings.push_back(in_hex(one));
        secret.spellings.push_back(grouped(in_hex(one), 2, " "));
        secret.spellings.push_back("data:" + in_base64(one));
        secret.traces.push_back(in_hex(one));
        // The last character also has bits of what follows.
        secret.traces.push_back(lowered(in_base64(one).substr(0, text.size() * 8 / 6)));
    }
    secret.traces.push_back(lowered(text));
}

// One of each kind.
std::vector<Secret> secrets(Random& random) {
    std::vector<Secret> made;
    const auto add = [&](const std::string& before, const std::string& value, auto spell,
                         const std::string& plain) {
        Secret secret;
        secret.field = before + value;
        spell(secret, plain);
        made.push_back(secret);
    };
    const auto one_of = [&](std::vector<std::string> texts) {
        return texts[random() % texts.size()];
    };

    const auto serial = some(random, 3, kCapitals) + some(random, 5 + random() % 6, kDigits);
    add(one_of({"Serial Number: ", "\tSerial Number = ", " Product Serial        : ", "SN: ",
                "serial=", "ID_SERIAL_SHORT="}),
        serial, spell_text, serial);
    const auto tag = "inv" + some(random, 6, kDigits);
    add(one_of({"Asset Tag: ", " Product Asset Tag     : "}), tag, spell_text, tag);
    const auto wwn =
        "5000" + some(random, 6, kHex) + some(random, 4, kDigits) + some(random, 2, "abcdef");
    add(one_of({"WWN = ", "SAS Address = ", "LU WWN Device Id: ", "wwn-0x", "naa."}), wwn,
        spell_number, wwn);
    const auto uuid =
        some(random, 12, kHex) + "4" + some(random, 3, kHex) + "a" + some(random, 15, kHex);
    const auto uuid_text = uuid.substr(0, 8) + '-' + uuid.substr(8, 4) + '-' + uuid.substr(12, 4) +
                           '-' + uuid.substr(16, 4) + '-' + uuid.substr(20);
    add(one_of({"UUID: ", "root=UUID=", "boot from "}), uuid_text, spell_number, uuid);
    const auto mac = "0" + some(random, 9, kHex) + some(random, 2, "abcdef");
    add(one_of({"MAC Address: ", "link/ether ", "eth0:", "lladdr "}), grouped(mac, 2, ":"),
        spell_number, mac);
    const auto ipv4 = "10." + std::to_string(20 + random() % 200) + '.' +
                      std::to_string(20 + random() % 200) + '.' +
                      std::to_string(20 + random() % 200);
    add(
        one_of({"IP Address: ", "inet ", "rhost=", "Default Gateway IP - ", "connect to "}), ipv4,
        [&](Secret& secret, const std::string& text) {
            secret.spellings = {text, text + ":443", "ip-" + [&] {
                                    auto dashed = text;
                                    std::replace(dashed.begin(), dashed.end(), '.', '-');
                                    return dashed;
                                }()};
            secret.traces = {text, in_hex(text)};
        },
        ipv4);
    const auto tail = some(random, 1, "123456789") + some(random, 3, kHex);
    const auto ipv6 = "2001:db8:77::" + tail;
    add(
        one_of({"inet6 ", "IPv6 Address: ", "from "}), ipv6,
        [&](Secret& secret, const std::string& text) {
            secret.spellings = {text, raised(text), "2001:0db8:0077:0000:0000:0000:0000:" + tail,
                                "20010db80077000000000000"
                                "0000" +
                                    tail};
            secret.traces = {lowered(text), "0077:0000:0000:0000:0000:" + tail,
                             "0077000000000000"
                             "0000" +
                                 tail};
        },
        ipv6);
    const auto host = some(random, 6, kLetters) + some(random, 3, kDigits);
    add(one_of({"hostname: ", "Host Name    - ", "Static hostname: "}), host, spell_text, host);
    const auto domain = some(random, 9, kLetters) + ".example." + one_of({"com", "org"});
    add(one_of({"Host Name - bmc.", "search ", "https://x."}), domain, spell_text, domain);
    const auto user = some(random, 8, kLetters);
    add(one_of({"user=", "sshd[2]: Accepted password for ", "User Name: ", "cwd /home/", "ssh -l ",
                "cron[7]: (", "racadm -u ", "ldapsearch -D cn=", "ipmitool user set name 3 ",
                "<username>"}),
        user, spell_text, user);
    const auto password = some(random, 5, kLetters) + one_of({"!", "#", "%", "+"}) +
                          some(random, 5, kCapitals + kDigits);
    add(one_of({"password=", "ipmitool -I lanplus -P ", "Password: ", "secret: ", "PGPASSWORD=",
                "sshpass -p", "rootpw ", "ipmitool user set password 2 ", "snmpget -v3 -X ",
                "ldapsearch -w ", "curl -u ops:", "<password>", "smbclient -U ops%"}),
        password, spell_text, password);
    const auto token = some(random, 16, kLetters + kDigits);
    add(one_of({"token=", "api_key: ", "Authorization: Bearer ", "AccountKey=", "snmpwalk -v2c -c ",
                "{SSHA}"}),
        token, spell_text, token);
    return made;
}

// None of these is anybody's.
const char* const kLookalikes[] = {
    "Firmware Version = 4.680.00-8290",
    "fw 24.21.0.126",
    "2026-11-22T14:00:01Z",
    "0000:03:00.0 RAID",
    "CPU Temp | 41.000 | degrees C",
    "4,000,787,030,016 bytes",
    "OUI 00:25:90",
    "127.0.0.1 root",
    "255.255.255.0",
    "Link at 12:34:56",
    "C12A7328-F81F-11D2-BA4B-00A0C93EC93B",
    "0x5000",
};

std::map<std::string, std::string> captures_of(const fs::path& sample) {
    std::map<std::string, std::string> captures;
    for (const auto& entry : fs::recursive_directory_iterator(sample)) {
        if (entry.is_regular_file() && entry.path().filename() != "machine.json")
            captures[fs::relative(entry.path(), sample)] = test::content(entry.path());
    }
    return captures;
}

std::string without_ends_of_lines(const std::string& text) {
    std::string made;
    for (const char c : text) {
        if (c != '\n') made += c;
    }
    return lowered(made);
}

std::string digits_alone(const std::string& text) {
    std::string made;
    for (const char c : text) {
        if (std::string(":-. \n").find(c) == std::string::npos) made += c;
    }
    return lowered(made);
}

void check(const fs::path& sample, Random& random) {
    auto captures = captures_of(sample);
    ASSERT_FALSE(captures.empty());
    // Lines, and what is put between two of them: a value may be divided by a line end, but not by another line.
    std::vector<std::vector<std::string>> texts;
    for (const auto& [name, text] : captures) {
        auto& lines = texts.emplace_back();
        for (std::size_t at = 0; at < text.size();) {
            const auto end = std::min(text.find('\n', at), text.size());
            lines.push_back(text.substr(at, end - at) + "\n");
            at = end + 1;
        }
    }
    const auto put = [&](const std::string& text) {
        auto& lines = texts[random() % texts.size()];
        const auto place = random() % (lines.size() + 1);
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(place), text + "\n");
    };
    const auto all = secrets(random);
    for (const auto& secret : all) {
        put(secret.field);
        for (int i = 0; i < 6; ++i) {
            auto spelled = secret.spellings[random() % secret.spellings.size()];
            if (spelled.size() >= 9 && random() % 4 == 0)
                spelled.insert(1 + random() % (spelled.size() - 2), "\n");
            put("seen (" + spelled + ") there");
        }
    }
    for (const auto* const line : kLookalikes) put(line);
    auto lines_of = texts.begin();
    for (auto& [name, text] : captures) {
        text.clear();
        for (const auto& line : *lines_of) text += line;
        ++lines_of;
    }

    Values values;
    for (const auto& [name, text] : captures) gather_from_text(text, values);
    Substitutes substitutes;
    substitutes.assign(values);
    const Redactor redactor(classes_of("all"), values, substitutes);
    std::string lines;
    for (const auto& [name, text] : captures) {
        const auto made = redactor.text(text);
        ASSERT_EQ(made.size(), text.size());
        const auto joined = without_ends_of_lines(made), digits = digits_alone(made);
        for (const auto& secret : all) {
            for (const auto& trace : secret.traces) {
                const auto at = joined.find(trace);
                EXPECT_EQ(at, std::string::npos)
                    << joined.substr(at < 60 ? 0 : at - 60, 120) << "\n"
                    << trace << " of " << secret.field << " in " << name;
                if (trace.size() >= 12 && trace.find_first_not_of(kHex) == std::string::npos) {
                    EXPECT_EQ(digits.find(trace), std::string::npos)
                        << trace << " of " << secret.field << " in " << name;
                }
            }
        }
        lines += made;
    }
    for (const auto* const line : kLookalikes)
        EXPECT_NE(lines.find(std::string(line) + "\n"), std::string::npos) << line;
}

TEST(Samples, NoSecretIsLeftAndNothingElseIsTouched) {
    const auto first = test::first_random();
    Random random(static_cast<unsigned>(first));
    const auto times = test::repetitions("QV_REDACTED_SAMPLES", 1, 200);
    for (long i = 0; i < times; ++i) {
        for (const auto& entry : fs::directory_iterator(QV_SAMPLES)) {
            if (!entry.is_directory()) continue;
            SCOPED_TRACE(entry.path().filename().string());
            check(entry.path(), random);
        }
    }
}

}  // namespace

}  // namespace qvhost::redact
