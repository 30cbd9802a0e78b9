#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "bench.h"
#include "ramtinfo.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rsamplemodule1/rsamplemodule1.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rwininfo.h"

using namespace marlox::repository;

extern "C" int AddModules(std::vector<boost::shared_ptr<RModule>>& modules);

namespace {

class Registry : public Bench {};

class OtherModule : public RModule {
public:
    std::string GetName() override { return "other"; }
    std::string GetDisplay() override { return "Other"; }
    void InitCallbacks() override {}
};

TEST_F(Registry, FiveModulesInOrder) {
    std::vector<boost::shared_ptr<RModule>> modules;
    EXPECT_EQ(AddModules(modules), 0);
    std::vector<std::string> names;
    for (const auto& module : modules)
        names.push_back(module->GetName() + "/" + module->GetDisplay());
    EXPECT_EQ(names, (std::vector<std::string>{
                         "sampleModule1/Sample Module 1", "sampleModule2/Sample Module 2",
                         "BMC_Info/BMC information", "AMT_Info/AMT Log",
                         "Windows_Related_Info/Windows related information"}));
    EXPECT_EQ(noted(), "");  // construction logs nothing and starts nothing
}

TEST_F(Registry, EarlierEntriesStay) {
    const boost::shared_ptr<RModule> other(new OtherModule);
    std::vector<boost::shared_ptr<RModule>> modules{other};
    AddModules(modules);
    const auto after_one_call = modules;
    AddModules(modules);
    ASSERT_EQ(modules.size(), 11u);
    EXPECT_EQ(std::vector(modules.begin(), modules.begin() + 6), after_one_call);
    EXPECT_EQ(modules[0], other);
    EXPECT_EQ(modules[1]->GetName(), "sampleModule1");
    EXPECT_EQ(modules[6]->GetName(), "sampleModule1");
}

TEST_F(Registry, ModulesRegisterNothingUntilTheyAreAsked) {
    std::vector<boost::shared_ptr<RModule>> modules;
    AddModules(modules);
    for (const auto& module : modules) EXPECT_TRUE(module->callbacks.empty());
}

TEST_F(Registry, ModulesBelongToTheHost) {
    std::vector<boost::shared_ptr<RModule>> modules;
    AddModules(modules);
    for (const auto& module : modules) EXPECT_EQ(module.use_count(), 1) << module->GetName();
}

// All tables of a module share one enumerate callback, whose collection takes place once.
TEST_F(Registry, EveryTableHasTheEnumerateCallbackOfItsModule) {
    struct Case {
        const char* module;
        const char* unit;
        const char* callback;
    };
    const Case cases[] = {
        {"sampleModule1", "rsamplemodule1", "EnumQV1Instances"},
        {"sampleModule2", "rsamplemodule2", "EnumQV2Instances"},
        {"BMC_Info", "rbmcinfo", "EnumBMCInstances"},
        {"AMT_Info", "ramtinfo", "EnumAMTInstances"},
        {"Windows_Related_Info", "rwininfo", "EnumWINInstances"},
    };
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    for (const auto& [name, unit, callback] : cases) {
        const auto log = "log 3 qvmodules/" + std::string(unit) + ": [repo] ";
        enumerate(name, module(name).callbacks.begin()->first);
        noted();
        for (const auto& [table, callbacks] : module(name).callbacks) {
            enumerate(name, table);
            EXPECT_EQ(noted(), log + "Enter " + callback + "\n" + log + "Exit " + callback + "\n")
                << table;
        }
    }
}

// What the host throws ends a collection as anything else does that cuts it short: a module collects
// once, and the records that were added before stay all there are.
TEST_F(Registry, ACollectionThatTheHostBrokeOffIsNotBegunAgain) {
    tool("dmidecode", "echo 'Product Name: KP120'");
    tool("uname", "echo x86_64");
    tool("ipmitool", "echo a:1");
    for (const char* quiet :
         {"dmesg", "cat", "service", "modprobe", "supportconfig", "lsmod", "mv"})
        tool(quiet, "exit 0");
    vendor_tool("ipmiutil_x64_nh", "echo a:1");
    vendor_tool("storcli_x64", "echo 'Controller Count = 1'");
    struct Case {
        const char* module;
        const char* unit;
        const char* callback;
        int failing_record;
    };
    const Case cases[] = {
        {"sampleModule1", "rsamplemodule1", "EnumQV1Instances", 1},
        {"sampleModule1", "rsamplemodule1", "EnumQV1Instances", 3},
        {"sampleModule2", "rsamplemodule2", "EnumQV2Instances", 1},
        {"sampleModule2", "rsamplemodule2", "EnumQV2Instances", 8},  // of the first controller
        {"BMC_Info", "rbmcinfo", "EnumBMCInstances", 1},
        {"BMC_Info", "rbmcinfo", "EnumBMCInstances", 7},
    };
    for (const auto& [name, unit, callback, failing] : cases) {
        forget_modules();
        const auto table = module(name).callbacks.begin()->first;
        fakehost::records_until_failure = failing;
        EXPECT_THROW(enumerate(name, table), std::runtime_error) << name << failing;
        const auto added = noted({"add"});
        EXPECT_EQ(std::count(added.begin(), added.end(), '\n'), failing - 1) << name;

        fakehost::records_until_failure = 0;
        const auto log = "log 3 qvmodules/" + std::string(unit) + ": [repo] ";
        for (const auto& [other_table, callbacks] : module(name).callbacks) {
            enumerate(name, other_table);
            EXPECT_EQ(noted(), log + "Enter " + callback + "\n" + log + "Exit " + callback + "\n")
                << other_table;
        }
        wrap(name, table);
        EXPECT_NE(noted(), "") << "its layout is told as ever";
    }
}

TEST_F(Registry, TableIdsAreStaticMembers) {
    const std::vector<std::pair<std::string, std::string>> ids = {
        {RSampleModule1::T_SAMPLE1_TABLE1, "S1TABLE1"},
        {RSampleModule1::T_SAMPLE1_TABLE2, "S1TABLE2"},
        {RSampleModule1::T_SAMPLE1_TABLE3, "PELADDTABLE"},
        {RSampleModule1::T_SAMPLE1_TABLE4, "RAIDINFO"},
        {RSampleModule1::T_CONTROLLER_TABLE4, "CONTROLLER"},
        {RSampleModule1::T_PMCINFO_TABLE, "PMCINFO"},
        {RSampleModule1::T_PMCVER_TABLE, "PMCVER"},
        {RSampleModule1::T_PMCLINK_TABLE, "PMCLINK"},
        {RSampleModule2::T_SAMPLE2_TABLE1, "S2TABLE1"},
        {RSampleModule2::T_SAMPLE2_TABLE2, "S2TABLE2"},
        {RSampleModule2::T_EVENTLOG1_TABLE2, "EVENTLOG1"},
        {RSampleModule2::T_EVENTLOG2_TABLE2, "EVENTLOG2"},
        {RSampleModule2::T_EVENTLOG3_TABLE2, "EVENTLOG3"},
        {RSampleModule2::T_EVENTLOG4_TABLE2, "EVENTLOG4"},
        {RSampleModule2::T_EVENTLOG5_TABLE2, "EVENTLOG5"},
        {RSampleModule2::T_FWTERM_TABLE2, "FWTERMLOG"},
        {RSampleModule2::T_PDLIST_TABLE2, "PDLIST"},
        {RSampleModule2::T_TINFO_TABLE2, "TINFO"},
        {RSampleModule2::T_VINFO_TABLE2, "VINFO"},
        {RSampleModule2::T_PINFO_TABLE2, "PINFO"},
        {RSampleModule2::T_IR_TABLE2, "SAS2IRLOG"},
        {RSampleModule2::T_END_TABLE2, "ENDDEVICEINFO"},
        {RSampleModule2::T_ARRAY_TABLE4, "ARRAY"},
        {RSampleModule2::T_VOLUME_TABLE4, "VOLUME"},
        {RSampleModule2::T_LSILINK_TABLE4, "LSILINK"},
        {RBMCInfo::LEDINFO, "LEDINFO"},
        {RBMCInfo::PSUINFO, "PSUINFO"},
        {RBMCInfo::SENSORINFO, "SENSORINFO"},
        {RBMCInfo::FRUINFO, "FRUINFO"},
        {RBMCInfo::SDRINFO, "SDRINFO"},
        {RBMCInfo::MCINFO, "MCINFO"},
        {RBMCInfo::SELFINFO, "SELFINFO"},
        {RBMCInfo::VERINFO, "VERINFO"},
        {RBMCInfo::LANINFO, "LANINFO"},
        {RBMCInfo::SELINFO, "SELINFO"},
        {RAMTInfo::AMTLOG, "AMTLOG"},
        {RWINInfo::ARPINFO, "ARPINFO"},
        {RWINInfo::NETSTATINFO, "NETSTATINFO"},
    };
    for (const auto& [member, text] : ids) EXPECT_EQ(member, text);
}

}  // namespace
