#include <algorithm>
#include <functional>
#include <iterator>
#include <map>

#include "bench.h"
#include "ramtinfo.h"
#include "rbmcinfo/items.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rsamplemodule1/rsamplemodule1.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rwininfo.h"

using namespace marlox::repository;

namespace {

class Layouts : public Bench {};

struct Case {
    const char* module;
    const char* table;
    const char* layout;
};

const Case kLayouts[] = {
    {"sampleModule1", "S1TABLE1", "columns: S1T1PRO1 S1T1PRO2 S1T1PRO3 S1T1PRO4 / 30 2"},
    {"sampleModule1", "S1TABLE2", "columns: S1T2PRO1 S1T2PRO2 S1T2PRO3 S1T2PRO4 / 30 2"},
    {"sampleModule1", "PELADDTABLE", "columns: peladd1 peladd2 peladd3 peladd4 / 30 1"},
    {"sampleModule1", "RAIDINFO",
     "columns: ProductName SerialNumber SASAddress MfgDate SystemTime ControllerTime FWPackageBuild "
     "BIOSVersion FWVersion DriverName DriverVersion BusNumber DeviceNumber FunctionNumber / 10 1"},
    {"sampleModule1", "CONTROLLER",
     "columns: Name Type SupportedRAID Max HWInformation VendorID DeviceID HWRevision / 10 1"},
    {"sampleModule1", "PMCINFO",
     "columns: Status Mode description Model SerialNumber WorldWideName Alarm Temperature memory "
     "priority type speed width period internal external Logical NCQ Statistics Policy Level Rate / "
     "20 1"},
    {"sampleModule1", "PMCVER", "columns: BIOS Firmware Driver BootFlash / 10 1"},
    {"sampleModule1", "PMCLINK", "columns: Link / 10 1"},
    {"sampleModule2", "S2TABLE1",
     "rows: item1=20 item2=16 item3=16 item4=16 item5=16 item6=16 / false"},
    {"sampleModule2", "S2TABLE2", "rows: S2T2PRO1=20 S2T2PRO2=30 S2T2PRO3=30 S2T2PRO4=20 / false"},
    {"sampleModule2", "EVENTLOG1",
     "rows: seqNum=4 Time=5 Code=5 Class=4 Locale=4 EventDescription=12 EventData=12 / false"},
    {"sampleModule2", "EVENTLOG2",
     "rows: seqNum=4 Time=5 Code=5 Class=4 Locale=4 EventDescription=12 EventData=12 / false"},
    {"sampleModule2", "EVENTLOG3",
     "rows: seqNum=4 Time=5 Code=5 Class=4 Locale=4 EventDescription=12 EventData=12 / false"},
    {"sampleModule2", "EVENTLOG4",
     "rows: seqNum=4 Time=5 Code=5 Class=4 Locale=4 EventDescription=12 EventData=12 / false"},
    {"sampleModule2", "EVENTLOG5",
     "rows: seqNum=4 Time=5 Code=5 Class=4 Locale=4 EventDescription=12 EventData=12 / false"},
    {"sampleModule2", "FWTERMLOG", "rows: FWTERMLOG=100 / false"},
    {"sampleModule2", "PDLIST",
     "rows: ShieldCounter=5 MediaErrorCount=5 OtherErrorCount=5 DriveTemperature=5 PredictiveFail=5 "
     "SMARTflag=5 SN=5 WWN=5 FirmwareRevision=5 Rawsize=5 Coercedsize=5 NonCoercedsize=5 "
     "DeviceSpeed=5 LinkSpeed=5 LogicalSectorSize=5 Enclosureposition=5 ConnectedPortNumber=5 "
     "CommissionedSpare=5 EmergencySpare=5 NeedsEKMAttention=5 / false"},
    {"sampleModule2", "TINFO",
     "rows: DG=5 Arr=5 Row=5 EID=5 DID=5 Type=5 State=5 BT=5 Size=5 PDC=5 PI=5 SED=5 DS3=5 FSpace=5 "
     "/ false"},
    {"sampleModule2", "VINFO",
     "rows: DG=5 TYPE=5 State=5 Access=5 Consist=5 Cache=5 sCC=5 Size=5 Name=5 / false"},
    {"sampleModule2", "PINFO",
     "rows: EID=5 DID=5 State=5 DG=5 Size=5 Intf=5 Med=5 SED=5 PI=5 SeSz=5 Model=5 Sp=5 / false"},
    {"sampleModule2", "SAS2IRLOG",
     "rows: Time=5 LogSequence=5 LogEntryQualifier=5 LogEntryDescription=5 LogEntryValue=5 vfid=5 "
     "vpid=5 LogCode=5 LogDataDescription=5 LogDataValue=5 LogClass=5 ArgumentType=5 Locale=5 / "
     "false"},
    {"sampleModule2", "ENDDEVICEINFO",
     "rows: ID=5 Type=5 DiskType=5 State=5 Size=5 SystemDisk=5 Usage=5 SerialNumber=5 Model=5 / "
     "false"},
    {"sampleModule2", "ARRAY",
     "rows: Name=5 Size=5 Free=5 NumDisks=5 NumVols=5 WriteCache=5 / false"},
    {"sampleModule2", "VOLUME",
     "rows: Name=5 RaidLevel=5 Size=5 StripeSize=5 NumDisks=5 State=5 System=5 Initialized=5 "
     "CachePolicy=5 / false"},
    {"sampleModule2", "LSILINK",
     "rows: index=2 lsishowall=5 pdlist=5 lsieventlog=5 lsifwtermlog=5 / false"},
    {"BMC_Info", "MCINFO", "columns: MC1 MC2 MC3 MC4 MC5 MC6 MC7 MC8 MC9 / 30 1"},
    {"BMC_Info", "SELFINFO", "columns: self1 / 30 1"},
    {"BMC_Info", "VERINFO",
     "columns: VER1 VER2 VER3 VER4 VER5 VER6 VER7 VER8 VER9 VER10 VER11 VER12 VER13 VER14 VER15 / 30 "
     "1"},
    {"BMC_Info", "LANINFO", "columns: LAN1 LAN2 LAN3 LAN4 LAN5 LAN6 / 30 1"},
    {"BMC_Info", "LEDINFO", "rows: LEDINFO=100 / false"},
    {"BMC_Info", "PSUINFO", "rows: PSUINFO=100 / false"},
    {"BMC_Info", "SENSORINFO",
     "rows: item1=19 item2=9 item3=9 item4=9 item5=9 item6=9 item7=9 item8=9 item9=9 item10=9 / "
     "false"},
    {"BMC_Info", "FRUINFO", "rows: FRUINFO=100 / false"},
    {"BMC_Info", "SDRINFO", "rows: SDRINFO=100 / false"},
    {"BMC_Info", "SELINFO", "rows: SELINFO=100 / false"},
    {"AMT_Info", "AMTLOG", "rows: AMTLOG=100 / false"},
    {"Windows_Related_Info", "ARPINFO", "rows: item1=40 item2=40 item3=20 / false"},
    {"Windows_Related_Info", "NETSTATINFO", "rows: item1=10 item2=30 item3=30 item4=30 / false"},
};

TEST_F(Layouts, EveryTableAsItIsDeclared) {
    for (const auto& [module_name, table, layout] : kLayouts) {
        wrap(module_name, table);
        EXPECT_EQ(noted(), std::string(layout) + "\n") << table;
    }
}

TEST_F(Layouts, TheseAreAllTables) {
    std::map<std::string, std::vector<std::string>> expected;
    for (const auto& [module_name, table, layout] : kLayouts)
        expected[module_name].push_back(table);
    for (auto& [module_name, tables] : expected) {
        std::sort(tables.begin(), tables.end());
        std::vector<std::string> registered;
        for (const auto& [table, callbacks] : module(module_name).callbacks)
            registered.push_back(table);
        EXPECT_EQ(registered, tables) << module_name;
    }
}

TEST_F(Layouts, RegisteringTwiceChangesNothing) {
    for (const char* name :
         {"sampleModule1", "sampleModule2", "BMC_Info", "AMT_Info", "Windows_Related_Info"}) {
        const auto before = module(name).callbacks.size();
        module(name).InitCallbacks();
        EXPECT_EQ(module(name).callbacks.size(), before);
        for (const auto& [table, callbacks] : module(name).callbacks) {
            EXPECT_FALSE(callbacks.enumerate.empty());
            EXPECT_FALSE(callbacks.wrap.empty());
        }
    }
    EXPECT_EQ(noted(), "");  // registering neither collects nor logs
    for (const auto& [module_name, table, layout] : kLayouts) {
        wrap(module_name, table);
        EXPECT_EQ(noted(), std::string(layout) + "\n") << table;
    }
}

// The exported ids and wrap members belong together: hosts may call them by name.
template <class Module>
struct Member {
    const std::string& table;
    void (Module::*wrap)(RInstancesWrapper&);
};

template <class Module>
void expect_layouts(const std::vector<Member<Module>>& members,
                    const std::function<std::string()>& noted) {
    Module module;
    for (const auto& [table, wrap] : members) {
        const auto expected =
            std::find_if(std::begin(kLayouts), std::end(kLayouts), [&, &id = table](const Case& c) {
                return c.module == module.GetName() && c.table == id;
            });
        ASSERT_NE(expected, std::end(kLayouts)) << table;
        (module.*wrap)(fakehost::wrapper());
        EXPECT_EQ(noted(), std::string(expected->layout) + "\n") << table;
    }
}

TEST_F(Layouts, EveryMemberLaysOutItsTable) {
    const auto notes = [this] { return noted(); };
    // clang-format off
    expect_layouts<RSampleModule1>({
        {RSampleModule1::T_SAMPLE1_TABLE1, &RSampleModule1::WrapQV1T1Instances},
        {RSampleModule1::T_SAMPLE1_TABLE2, &RSampleModule1::WrapQV1T2Instances},
        {RSampleModule1::T_SAMPLE1_TABLE3, &RSampleModule1::WrapQV1T3Instances},
        {RSampleModule1::T_SAMPLE1_TABLE4, &RSampleModule1::WrapRAIDInstances},
        {RSampleModule1::T_CONTROLLER_TABLE4, &RSampleModule1::WrapCONTROLLERInstances},
        {RSampleModule1::T_PMCINFO_TABLE, &RSampleModule1::WrapPMCINFOInstances},
        {RSampleModule1::T_PMCVER_TABLE, &RSampleModule1::WrapPMCVERInstances},
        {RSampleModule1::T_PMCLINK_TABLE, &RSampleModule1::WrapPMCLINKInstances},
    }, notes);
    expect_layouts<RSampleModule2>({
        {RSampleModule2::T_SAMPLE2_TABLE1, &RSampleModule2::WrapQV2T1Instances},
        {RSampleModule2::T_SAMPLE2_TABLE2, &RSampleModule2::WrapQV2T2Instances},
        {RSampleModule2::T_EVENTLOG1_TABLE2, &RSampleModule2::WrapEventLog1Instances},
        {RSampleModule2::T_EVENTLOG2_TABLE2, &RSampleModule2::WrapEventLog2Instances},
        {RSampleModule2::T_EVENTLOG3_TABLE2, &RSampleModule2::WrapEventLog3Instances},
        {RSampleModule2::T_EVENTLOG4_TABLE2, &RSampleModule2::WrapEventLog4Instances},
        {RSampleModule2::T_EVENTLOG5_TABLE2, &RSampleModule2::WrapEventLog5Instances},
        {RSampleModule2::T_FWTERM_TABLE2, &RSampleModule2::WrapFWtermInstances},
        {RSampleModule2::T_PDLIST_TABLE2, &RSampleModule2::WrapPDListInstances},
        {RSampleModule2::T_TINFO_TABLE2, &RSampleModule2::WrapTINFOInstances},
        {RSampleModule2::T_VINFO_TABLE2, &RSampleModule2::WrapVINFOInstances},
        {RSampleModule2::T_PINFO_TABLE2, &RSampleModule2::WrapPINFOInstances},
        {RSampleModule2::T_IR_TABLE2, &RSampleModule2::WrapIRInstances},
        {RSampleModule2::T_END_TABLE2, &RSampleModule2::WrapENDInstances},
        {RSampleModule2::T_ARRAY_TABLE4, &RSampleModule2::WrapARRAYInstances},
        {RSampleModule2::T_VOLUME_TABLE4, &RSampleModule2::WrapVOLUMEInstances},
        {RSampleModule2::T_LSILINK_TABLE4, &RSampleModule2::WrapLSILINKInstances},
    }, notes);
    expect_layouts<RBMCInfo>({
        {RBMCInfo::MCINFO, &RBMCInfo::WrapMCInstances},
        {RBMCInfo::SELFINFO, &RBMCInfo::WrapSELFInstances},
        {RBMCInfo::VERINFO, &RBMCInfo::WrapVERInstances},
        {RBMCInfo::LANINFO, &RBMCInfo::WrapLANInstances},
        {RBMCInfo::LEDINFO, &RBMCInfo::WrapLEDInstances},
        {RBMCInfo::PSUINFO, &RBMCInfo::WrapPSUInstances},
        {RBMCInfo::SENSORINFO, &RBMCInfo::WrapSENSORInstances},
        {RBMCInfo::FRUINFO, &RBMCInfo::WrapFRUInstances},
        {RBMCInfo::SDRINFO, &RBMCInfo::WrapSDRInstances},
        {RBMCInfo::SELINFO, &RBMCInfo::WrapSELInstances},
    }, notes);
    expect_layouts<RAMTInfo>({
        {RAMTInfo::AMTLOG, &RAMTInfo::WrapAMTInstances},
    }, notes);
    expect_layouts<RWINInfo>({
        {RWINInfo::ARPINFO, &RWINInfo::WrapARPInstances},
        {RWINInfo::NETSTATINFO, &RWINInfo::WrapNETSTATInstances},
    }, notes);
    // clang-format on
}

template <std::size_t count>
std::vector<std::string> ids(const char* const (&table)[count]) {
    return {std::begin(table), std::end(table)};
}

std::vector<std::string> numbered(const std::string& prefix, int count) {
    std::vector<std::string> names;
    for (int i = 1; i <= count; ++i) names.push_back(prefix + std::to_string(i));
    return names;
}

TEST_F(Layouts, ExportedTablesOfIds) {
    EXPECT_EQ(ids(leditem), numbered("LED", 16));
    EXPECT_EQ(ids(mcitem), numbered("MC", 12));
    EXPECT_EQ(ids(selfitem), numbered("self", 2));
    EXPECT_EQ(ids(veritem), numbered("VER", 16));
    EXPECT_EQ(ids(lanitem), numbered("LAN", 12));
    EXPECT_EQ(ids(psuitem), numbered("PSU", 26));
    EXPECT_EQ(ids(fruitem), numbered("FRU", 160));
    EXPECT_EQ(ids(ptn), numbered("peladd", 4));
}

}  // namespace
