#include "bench.h"

using marlox::repository::RModule;

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
    std::vector<boost::shared_ptr<RModule>> modules{boost::shared_ptr<RModule>(new OtherModule)};
    const auto* first = modules[0].get();
    AddModules(modules);
    ASSERT_EQ(modules.size(), 6u);
    EXPECT_EQ(modules[0].get(), first);
    EXPECT_EQ(modules[1]->GetName(), "sampleModule1");
}

}  // namespace
