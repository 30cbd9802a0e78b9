// Names of modules and tables as people write them.
#include "qvhost/collect/selection.h"

#include <boost/algorithm/string/join.hpp>

#include <gtest/gtest.h>

#include "qvhost/base/misuse.h"

namespace qvhost {

namespace {

using Texts = std::vector<std::string>;

const Offer kOffer{
    {"BMC_Info", "BMC information", {"FRUINFO", "SENSORINFO", "bmc information"}},
    {"sample", "Sample Module", {"PDLIST", "PDLIST1"}},
    {"empty", "", {}},
};

std::vector<DeclaredTable> declared() {
    std::vector<DeclaredTable> tables(4);
    const char* const rows[][2] = {{"FRUINFO", "FRU"},
                                   {"SENSORINFO", "Sensor information"},
                                   {"PDLIST", "Physical drives"},
                                   {"PDLIST1", "Physical drives"}};
    for (std::size_t i = 0; i < tables.size(); ++i) {
        tables[i].id = rows[i][0];
        tables[i].title = rows[i][1];
    }
    return tables;
}

// "BMC_Info: FRUINFO | sample: ...", or what is wrong.
std::string selected(const Texts& modules, const Texts& tables) {
    CollectOptions options;
    options.modules = modules;
    options.tables = tables;
    try {
        settle_names(options, kOffer, declared());
    } catch (const Misuse& wrong) {
        return wrong.what();
    }
    Texts parts;
    for (const auto& [place, ids] : select_modules(kOffer, options))
        parts.push_back(kOffer[place].name + ": " + boost::join(ids, " "));
    return boost::join(parts, " | ");
}

TEST(Selection, ALimitIsForAToolThatIsNamedOrForNoneThatIsNear) {
    DeclaredTables declared;
    declared.tables.resize(1);
    declared.tables[0].tool = "ipmiutil";
    declared.tools = {{"cliraid", {}}};
    const struct {
        const char* limit;
        std::string says;
    } cases[] = {
        {"ipmitool=900", ""},
        {"storcli_x64=5", ""},
        {"perccli64=5", ""},
        {"ipmiutil=5", ""},
        {"cliraid_x32=5", ""},
        {"packs-logs=5", ""},
        {"ipmitol=900",
         "--limit ipmitol=900: there is no tool \"ipmitol\"; did you mean ipmitool?"},
        {"clirad=5", "--limit clirad=5: there is no tool \"clirad\"; did you mean cliraid?"},
    };
    for (const auto& [limit, says] : cases) {
        CollectOptions options;
        options.tool_limits = {limit};
        std::string said;
        try {
            expect_known_tools(options, declared);
        } catch (const Misuse& wrong) {
            said = wrong.what();
        }
        EXPECT_EQ(said, says);
    }
}

TEST(Selection, TakesNamesAndTitlesInAnyCase) {
    const std::string all = "BMC_Info: FRUINFO SENSORINFO bmc information | sample: PDLIST PDLIST1";
    const struct {
        Texts modules;
        Texts tables;
        std::string expected;
    } cases[] = {
        {{}, {}, all},
        {{"BMC_Info"}, {}, "BMC_Info: FRUINFO SENSORINFO bmc information"},
        {{"bmc information"}, {}, "BMC_Info: FRUINFO SENSORINFO bmc information"},
        {{"SAMPLE module", "sample"}, {}, "sample: PDLIST PDLIST1"},
        {{}, {"sensorinfo"}, "BMC_Info: SENSORINFO"},
        {{}, {" Sensor Information "}, "BMC_Info: SENSORINFO"},
        {{}, {"physical drives"}, "sample: PDLIST PDLIST1"},  // two tables have this title
        {{}, {"pdlist"}, "sample: PDLIST"},
        {{}, {"PDLIST1", "fru"}, "BMC_Info: FRUINFO | sample: PDLIST1"},
        {{"sample"}, {"fru", "pdlist"}, "sample: PDLIST"},
        {{"empty"}, {}, ""},
    };
    for (const auto& [modules, tables, expected] : cases)
        EXPECT_EQ(selected(modules, tables), expected);
}

TEST(Selection, SaysWhatIsWrong) {
    const struct {
        Texts modules;
        Texts tables;
        std::string expected;
    } cases[] = {
        {{"BMC_Inof"}, {}, "there is no module \"BMC_Inof\"; did you mean BMC_Info?"},
        {{"bmc informatoin"},
         {},
         "there is no module \"bmc informatoin\"; did you mean BMC information?"},
        {{"storage"}, {}, "there is no module \"storage\"; there are: BMC_Info sample empty"},
        {{""}, {}, "there is no module \"\"; there are: BMC_Info sample empty"},
        {{},
         {"SENSORINFO", "SENSRINFO"},
         "there is no table \"SENSRINFO\"; did you mean SENSORINFO?"},
        {{},
         {"events"},
         "there is no table \"events\"; there are: FRUINFO SENSORINFO bmc information PDLIST PDLIST1"},
        {{"sample"}, {"fru"}, "no table FRUINFO is in the module sample"},
    };
    for (const auto& [modules, tables, expected] : cases)
        EXPECT_EQ(selected(modules, tables), expected);
}

}  // namespace

}  // namespace qvhost
