// The parsers and the naive readers agree on thousands of captures that nobody would think of, and on
// real ones where there are some.
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <random>

#include "bench.h"
#include "naive.h"
#include "rbmcinfo/captures.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule2/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

using Texts = std::vector<std::string>;

template <int kind>
void bmc(RRepository& repo) {
    bmc_info(repo, kind);
}
void sensors(RRepository& repo) { sensor_info(repo); }
void data_records(RRepository& repo) { sdr_info(repo); }
void fru(RRepository& repo) { fru_info(repo); }
void first_fru(RRepository& repo) { fru_info_amd(repo); }
void bmc_events(RRepository& repo) { sel_info(repo); }

struct Pair {
    const char* name;
    const char* capture;
    void (*parser)(RRepository&);
    std::string (*reader)(const std::string&);
    Texts pieces;  // what a capture is made of
};

std::ostream& operator<<(std::ostream& out, const Pair& pair) { return out << pair.name; }

const Texts kDriveKeys = {
    "Shield Counter =",
    "Media Error Count =",
    "Other Error Count =",
    "Drive Temperature =",
    "Predictive Failure Count =",
    "S.M.A.R.T alert flagged by drive =",
    "SN =",
    "WWN =",
    "Firmware Revision =",
    "Raw size =",
    "Coerced size =",
    "Non Coerced size =",
    "Device Speed =",
    "Link Speed =",
    "Logical Sector Size =",
    "Enclosure position =",
    "Connected Port Number =",
    "Commissioned Spare =",
    "Emergency Spare =",
    "Needs EKM Attention =",
    "Needs EKM Attention =",
};

const Texts kSummaryKeys = {
    "Product Name =",  "Serial Number =",   "SAS Address =",      "Mfg. Date =",
    "System Time =",   "Controller Time =", "FW Package Build =", "BIOS Version =",
    "FW Version =",    "Driver Name =",     "Driver Version =",   "Bus Number =",
    "Device Number =", "Function Number =", "Function Number =",
};

const Texts kLists = {
    "TOPOLOGY :",
    "VD LIST :",
    "PD LIST :",
    "==\n\n-----\nhead\n-----\n",
    std::string(25, '-'),
    std::string(26, '-'),
    std::string(27, '-'),
    std::string(28, '-'),
    std::string(60, '-') + "\n",
    " 0 - - - - RAID1 Optl N  930.390 GB dflt N  N dflt N N\n",
    "0/0 R1 Optl RW Yes RWTD - 1.0 GB system\n",
    "0/1 R5 Dgrd RW Yes RWTD - 2.7 TB \n",
    "252:0 8 Onln 0 930.390 GB SATA HDD N N 512B EX1000 U\n",
    "252:1 9 UBad - 1.8",
    "\t",
};

const Texts kEvents = {
    "seqNum:",     "seqNum: 0x1\n",
    "Time:",       "Seconds since last reboot:",
    "Code:",       "Class:",
    "Locale:",     "Event Description:",
    "Event Data:", "=======",
    "=======\n",   "Controller = 0\n",
    "\n",          "\n",
};

const Texts kIrLog = {
    "Time:",
    "LogSequence:",
    "LogEntryQualifier:",
    "LogEntryDescription:",
    "LogEntryValue:",
    "vf_id:",
    "vp_id:",
    "LogCode:",
    "LogDataDescription:",
    "LogDataValue:",
    "LogClass:",
    "ArgumentType:",
    "Locale:",
    "Locale:",
};

const Texts kAnswer = {
    ":",     ":",     " : ",          "-",     " - ",
    "\n",    "\r\n",  "Label",        "Value", "Selftest: failed\n  -> why\n",
    "Label", "Error", "Bad response", "\n",    "Cannot open an IPMI driver",
};

const Pair kPairs[] = {
    {"summary", "c0_showall.txt", lsi_info, naive::summary, kSummaryKeys},
    {"drive_details", "pdlist.txt", pd_list, naive::drive_details, kDriveKeys},
    {"lists", "c0_showall.txt", lsi_list, naive::lists, kLists},
    {"events", "raidevents.txt", event_log, naive::events, kEvents},
    {"term_log",
     "fwtermlog.txt",
     fw_term_log,
     naive::term_log,
     {"Firmware Term Log Information", "Firmware Term", " Log Information", "\n"}},
    {"integrated_raid_log", "ir.txt", sas2308_log, naive::integrated_raid_log, kIrLog},
    {"sensors",
     "sensorinfo.txt",
     sensors,
     naive::sensors,
     {"|", "|", "|", " | ", "||", "\n", "\r\n", "Error", "Error sending MS", "Bad response"}},
    {"data_records", "sdrinfo.txt", data_records, naive::data_records, {"\n", "\r", "\n\n", " | "}},
    {"controller", "mcinfo.txt", bmc<1>, naive::controller, kAnswer},
    {"self_test", "selfinfo.txt", bmc<2>, naive::self_test, kAnswer},
    {"versions", "verinfo.txt", bmc<3>, naive::versions, kAnswer},
    {"power_supplies", "psuinfo.txt", bmc<4>, naive::power_supplies, kAnswer},
    {"lan", "laninfo.txt", bmc<5>, naive::lan, kAnswer},
    {"leds", "ledinfo.txt", bmc<6>, naive::leds, kAnswer},
    {"first_fru", "fruinfo.txt", first_fru, naive::first_fru, kAnswer},
    {"bmc_events", "selinfo.txt", bmc_events, naive::events_of_bmc, kAnswer},
    {"fru", "fruinfo.txt", fru, naive::fru, {"\n", "Board Mfg : ", "\r\n"}},
};

class Differential : public Bench, public testing::WithParamInterface<Pair> {
protected:
    Differential() {
        fakehost::min_log_level = 2;
        fake_system.program_instead = "/bin/true";
        std::ofstream("b.txt") << "1\n";  // a SAS2308
    }

    void compare(const std::string& capture, const std::string& what) {
        const auto& pair = GetParam();
        const auto file = log_dir + pair.capture;
        std::ofstream(file, std::ios::binary) << capture;
        std::memset(total_buff, 0, sizeof total_buff);
        fakehost::notes.clear();
        pair.parser(fakehost::repository());
        const auto records = noted({"add"});
        compared_ += records.size();
        ASSERT_EQ(records, pair.reader(file)) << what << "\n" << fakehost::escaped(capture);
    }

    std::size_t compared_ = 0;  // bytes of records
};

// Agreement on nothing at all would be no agreement.
constexpr std::size_t kEnough = 10'000;

class Maker {
public:
    Maker(unsigned long number, const Texts& pieces) : random_(number), pieces_(pieces) {}

    std::string capture() {
        std::string text;
        const auto length = below(2) ? below(12) : below(120);
        for (unsigned long i = 0; i < length; ++i) text += piece();
        return text;
    }

private:
    unsigned long below(unsigned long limit) { return random_() % limit; }

    std::string piece() {
        switch (below(16)) {
            case 0: return "\n";
            case 1: return "\n";
            case 2: return " ";
            case 3: return std::string(1, '\0');
            case 4: return "\r\n";
            case 5: return std::string(below(600), static_cast<char>('a' + below(26)));
            case 6: return std::string(505 + below(14), 'x') + "\n";
            case 7: return std::string(1, static_cast<char>(below(256)));
            case 8: return " value " + std::to_string(below(1000));
            case 9: {
                // A piece that is cut short.
                const auto& whole = pieces_[below(pieces_.size())];
                return whole.substr(0, below(whole.size() + 1));
            }
            case 10:
            case 11: return pieces_[below(pieces_.size())];
            default: return pieces_[below(pieces_.size())] + " value\n";
        }
    }

    std::mt19937_64 random_;
    const Texts& pieces_;
};

TEST_P(Differential, OnMadeUpCaptures) {
    const char* given = std::getenv("QV_TEST_SEED");
    const unsigned long first =
        given ? std::strtoul(given, nullptr, 10) : static_cast<unsigned long>(std::time(nullptr));
    std::printf("QV_TEST_SEED=%lu\n", first);
    for (unsigned long i = 0; i < 1000; ++i) {
        Maker maker(first + i, GetParam().pieces);
        compare(maker.capture(), "QV_TEST_SEED=" + std::to_string(first + i));
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(compared_, kEnough);
}

// Every capture there is, whichever tool printed it: what is not this parser's is text all the same.
TEST_P(Differential, OnRealCaptures) {
    if (!std::filesystem::exists(QV_CAPTURES)) GTEST_SKIP() << "There is no " << QV_CAPTURES;
    int captures = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(QV_CAPTURES)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        compare({std::istreambuf_iterator<char>(in), {}}, entry.path());
        if (HasFatalFailure()) return;
        ++captures;
    }
    EXPECT_GT(captures, 100);
}

INSTANTIATE_TEST_SUITE_P(Parsers, Differential, testing::ValuesIn(kPairs),
                         [](const auto& pair) { return std::string(pair.param.name); });

}  // namespace
