#include "journal/journal.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "place.h"

using namespace qvhost;

namespace {

class Journal : public test::Place {
protected:
    std::string path() const { return dir / "journal"; }

    static std::vector<JournalEntry> read_all(JournalReader& reader) {
        std::vector<JournalEntry> entries;
        reader.read([&](const JournalEntry& entry) { entries.push_back(entry); });
        return entries;
    }
    std::vector<JournalEntry> read_all() const {
        JournalReader reader(path());
        return read_all(reader);
    }
};

const std::string kOdd("\0\xff\n'\"", 5);

std::vector<JournalEntry> one_of_each() {
    return {
        ModuleEntry{"BMC_Info", "BMC information", {"MCINFO", "SELINFO", ""}},
        TableStartEntry{"BMC_Info", "MCINFO"},
        Record{"MCINFO",
               "MC Information",
               -1,
               {{"MC1", "Device", " 32"}, {"n", "", -7}, {"", kOdd, kOdd}}},
        // Like the one before: only the values are written.
        Record{"MCINFO",
               "MC Information",
               -1,
               {{"MC1", "Device", 5}, {"n", "", "a longer text than before"}, {"", kOdd, ""}}},
        // Another label.
        Record{
            "MCINFO", "MC Information", -1, {{"MC1", "Device", 5}, {"n", "N", ""}, {"", kOdd, ""}}},
        Record{"", "", 2147483647, {}},
        Record{"", "", 2147483647, {}},
        TableStartEntry{"BMC_Info", "MCINFO"},
        Record{"", "", 2147483647, {}},
        TableEndEntry{"BMC_Info", "MCINFO", ColumnLayout{{"MC1", "MC2"}, 30, 1}, ""},
        TableEndEntry{"BMC_Info", "SELINFO", RowLayout{{"a", "b"}, {19, 9, 4}, true}, "it threw"},
        TableEndEntry{"", "", Layout{}, ""},
        EndEntry{""},
        EndEntry{"no plug-in"},
        QuestionEntry{"smartctl", "", ""},
        QuestionEntry{"", "storage", "smartctl is not installed"},
        ModulesEndEntry{false},
        ModulesEndEntry{true},
    };
}

TEST_F(Journal, ReadsWhatWasWritten) {
    {
        JournalWriter writer(path());
        for (const auto& entry : one_of_each()) writer.append(entry);
    }
    EXPECT_EQ(read_all(), one_of_each());
    struct stat info {};
    ASSERT_EQ(::stat(path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
}

// An entry as it stands in a journal: its length, its kind, its fields.
std::string bytes_of(int kind, const std::string& fields) {
    const auto size = static_cast<std::uint32_t>(1 + fields.size());
    return std::string(reinterpret_cast<const char*>(&size), sizeof size) +
           static_cast<char>(kind) + fields;
}

std::string bytes_of(const std::string& text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    return std::string(reinterpret_cast<const char*>(&size), sizeof size) + text;
}

// A collection that an older program had begun. 1.0.0 wrote 5 for a record like the one before; a later build 6 for
// it, and 5 for a question.
TEST_F(Journal, OfAnOlderProgramIsRead) {
    const std::string four("\4\0\0\0", 4);
    const std::string one("\1\0\0\0", 4);
    const std::string head = bytes_of("RAIDINFO") + bytes_of("Controller 0") +
                             std::string("\xff\xff\xff\xff", 4) + one + bytes_of("Model") +
                             bytes_of("Product");
    const auto text = [](const std::string& value) { return '\0' + bytes_of(value); };
    const auto begin = bytes_of(0, bytes_of("sampleModule1") + bytes_of("Sample Module 1") + one +
                                       bytes_of("RAIDINFO")) +
                       bytes_of(1, bytes_of("sampleModule1") + bytes_of("RAIDINFO")) +
                       bytes_of(2, head + text("KP220"));
    const auto end =
        bytes_of(3, bytes_of("sampleModule1") + bytes_of("RAIDINFO") + '\0' + bytes_of("it threw"));
    const auto last = bytes_of(4, bytes_of(""));
    const auto question = bytes_of("smartctl") + bytes_of("") + bytes_of("");

    const auto record = [](const auto& value) {
        return Record{"RAIDINFO", "Controller 0", -1, {{"Model", "Product", value}}};
    };
    const std::vector<JournalEntry> expected{
        ModuleEntry{"sampleModule1", "Sample Module 1", {"RAIDINFO"}},
        TableStartEntry{"sampleModule1", "RAIDINFO"},
        record("KP220"),
        record("KP221"),
        record(4),
        TableEndEntry{"sampleModule1", "RAIDINFO", Layout{}, "it threw"},
    };
    for (const int like_before : {5, 6}) {
        SCOPED_TRACE(like_before);
        auto entries =
            begin + bytes_of(like_before, text("KP221")) + bytes_of(like_before, '\1' + four) + end;
        auto all = expected;
        if (like_before == 6) {
            entries += bytes_of(5, question);
            all.emplace_back(QuestionEntry{"smartctl", "", ""});
        }
        entries += last;
        all.emplace_back(EndEntry{""});
        const std::uint64_t written = sizeof written + entries.size();
        std::ofstream(path(), std::ios::binary)
            << std::string(reinterpret_cast<const char*>(&written), sizeof written) << entries;
        EXPECT_EQ(read_all(), all);
    }
}

TEST_F(Journal, IsReadWhileItGrows) {
    JournalReader reader(path());
    EXPECT_EQ(read_all(reader), std::vector<JournalEntry>());  // not there yet
    JournalWriter writer(path());
    for (const auto& entry : one_of_each()) {
        writer.append(entry);
        EXPECT_EQ(read_all(reader), std::vector<JournalEntry>{entry});
    }
    EXPECT_EQ(read_all(reader), std::vector<JournalEntry>());
}

TEST_F(Journal, SurvivesItsProcess) {
    const pid_t child = ::fork();
    if (child == 0) {
        JournalWriter writer(path());
        for (const auto& entry : one_of_each()) writer.append(entry);
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(read_all(), one_of_each());
}

#ifndef QV_SANITIZED  // a sanitizer needs memory of its own at any time
// No memory for the file's pages stands for a file system that gives none.
TEST_F(Journal, IsWrittenByCallsWhereMemoryCannotStandForIt) {
    rlimit before{};
    ::getrlimit(RLIMIT_AS, &before);
    const rlimit none{0, before.rlim_max};
    const auto entries = one_of_each();
    ::setrlimit(RLIMIT_AS, &none);
    {
        JournalWriter writer(path());
        for (const auto& entry : entries) writer.append(entry);
    }
    ::setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(read_all(), entries);
}
#endif

// Short and long entries lie in and across the parts of the file that are in memory at a time.
TEST_F(Journal, GrowsPastWhatIsInMemory) {
    std::vector<JournalEntry> entries;
    for (std::size_t i = 0; i < 700; ++i)
        entries.emplace_back(EndEntry{std::string(i % 100 == 99 ? 400'000 : i, 'x')});
    JournalReader reader(path());
    JournalWriter writer(path());
    std::vector<JournalEntry> found;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        writer.append(entries[i]);
        if (i % 7 != 0) continue;
        for (auto& one : read_all(reader)) found.push_back(std::move(one));
    }
    for (auto& one : read_all(reader)) found.push_back(std::move(one));
    EXPECT_EQ(found, entries);
    EXPECT_EQ(read_all(), entries);
}

// Cut at every byte, what was whole is read and the rest waits.
TEST_F(Journal, HalfAnEntryWaitsForTheRest) {
    {
        JournalWriter writer(path());
        for (const auto& entry : one_of_each()) writer.append(entry);
    }
    const auto bytes = test::content(path());
    std::size_t entries = 0;
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        std::ofstream(path(), std::ios::binary) << bytes.substr(0, size);
        JournalReader reader(path());
        auto found = read_all(reader);
        EXPECT_GE(found.size(), entries);
        entries = found.size();
        std::ofstream(path(), std::ios::binary | std::ios::app) << bytes.substr(size);
        for (auto& entry : read_all(reader)) found.push_back(std::move(entry));
        EXPECT_EQ(found, one_of_each()) << size;
    }
    EXPECT_EQ(entries, one_of_each().size());
}

// Any byte changed: an error or other entries, never a crash or a hang.
TEST_F(Journal, DamageIsAnErrorAtWorst) {
    {
        JournalWriter writer(path());
        for (const auto& entry : one_of_each()) writer.append(entry);
    }
    const auto bytes = test::content(path());
    std::size_t refused = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (const char value : {'\0', '\x01', '\x7f', '\xff'}) {
            auto damaged = bytes;
            damaged[i] = value;
            std::ofstream(path(), std::ios::binary) << damaged;
            try {
                read_all();
            } catch (const std::runtime_error&) {
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 0u);
}

// A page that a disk never got is zeros.
TEST_F(Journal, AHoleIsNoEntry) {
    constexpr std::uint64_t kEnd = std::uint64_t{1} << 40;
    constexpr std::uint32_t kLength = 0xffff'fff0;
    std::string head(sizeof kEnd + sizeof kLength, '\0');
    std::memcpy(head.data(), &kEnd, sizeof kEnd);
    std::memcpy(head.data() + sizeof kEnd, &kLength, sizeof kLength);
    std::ofstream(path(), std::ios::binary) << head;
    std::filesystem::resize_file(path(), kEnd);
    try {
        read_all();
        FAIL() << "it was read";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), path() + ": an entry is longer than what the file holds");
    }
}

TEST_F(Journal, APageThatIsLostTellsNothing) {
    std::vector<JournalEntry> all;
    {
        JournalWriter writer(path());
        for (int i = 0; i < 500; ++i) {
            const auto text =
                std::string(static_cast<std::size_t>(i % 90), 'x') + std::to_string(i);
            all.emplace_back(Record{"SELINFO", "Entry", i / 50, {{"SEL1", "Event", text}}});
            writer.append(all.back());
        }
        all.emplace_back(EndEntry{std::string(10'000, 'y')});  // longer than a page
        writer.append(all.back());
    }
    constexpr std::size_t kSector = 512;
    const auto bytes = test::content(path());
    for (std::size_t at = kSector; at < bytes.size(); at += kSector) {
        auto damaged = bytes;
        damaged.replace(at, kSector, std::min(kSector, bytes.size() - at), '\0');
        std::ofstream(path(), std::ios::binary) << damaged;
        std::size_t read = 0;
        JournalReader reader(path());
        EXPECT_THROW(reader.read([&](const JournalEntry& entry) { EXPECT_EQ(entry, all[read++]); }),
                     std::runtime_error)
            << at;
    }
}

TEST_F(Journal, CanBeReadInParts) {
    JournalWriter writer(path());
    const Record record{"T", "n", -1, {{"a", "b", std::string(1000, 'x')}}};
    for (int i = 0; i < 5000; ++i) writer.append(record);
    JournalReader reader(path());
    std::size_t entries = 0;
    std::size_t parts = 0;
    while (const auto n = reader.read([&](const JournalEntry&) {}, 100'000)) {
        entries += n;
        ++parts;
    }
    EXPECT_EQ(entries, 5000u);
    EXPECT_GT(parts, 5u);
}

TEST_F(Journal, AnExistingFileIsNotWrittenOver) {
    std::ofstream(path()) << "precious";
    EXPECT_THROW(JournalWriter writer(path()), std::system_error);
    EXPECT_EQ(test::content(path()), "precious");
}

const std::string kTooMuch(1'000'000, 'x');

// A limit on the file's size stands for a full disk.
TEST_F(Journal, WhatDoesNotFitIsTakenBackWhole) {
    JournalWriter writer(path());
    writer.append(EndEntry{"first"});
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{test::content(path()).size() + 100, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_THROW(writer.append(EndEntry{kTooMuch}), std::system_error);
    ::setrlimit(RLIMIT_FSIZE, &before);
    writer.append(EndEntry{"second"});
    EXPECT_EQ(read_all(), (std::vector<JournalEntry>{EndEntry{"first"}, EndEntry{"second"}}));
}

// The first record of a table did not fit; the next one has no record before it to be like.
TEST_F(Journal, ARecordThatDidNotFitIsNoneToBeLike) {
    const auto record = [](const std::string& value) {
        return Record{"T", "n", -1, {{"a", "b", value}}};
    };
    JournalWriter writer(path());
    writer.append(EndEntry{"first"});
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{test::content(path()).size() + 100, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_THROW(writer.append(record(kTooMuch)), std::system_error);
    ::setrlimit(RLIMIT_FSIZE, &before);
    writer.append(record("second"));
    EXPECT_EQ(read_all(), (std::vector<JournalEntry>{EndEntry{"first"}, record("second")}));
}

}  // namespace
