#include "cpu_list.h"

#include "bench.h"

namespace {

class CpuList : public Bench {};

TEST_F(CpuList, OneRecord) {
    tool("lscpu", prints("Architecture:        x86_64\n"
                         "CPU(s):              32\n"
                         "Model name:          Example CPU @ 2.40GHz\n"
                         "Socket(s):           2\n"));
    marlox::repository::cpu_list(fakehost::repository());
    EXPECT_EQ(noted(),
              "log 3 qvmodules/example: [repo] cpu list raw path:lscpu > 'L/lscpu.txt'\n"
              "$ lscpu > 'L/lscpu.txt'\n"
              "add CPULIST \"Processors\" -1: "
              "Architecture \"Architecture\"=\"        x86_64\\n\", "
              "ModelName \"Model name\"=\"          Example CPU @ 2.40GHz\\n\", "
              "Sockets \"Socket(s)\"=\"           2\\n\"\n");
}

TEST_F(CpuList, NoToolNoRecord) {
    tool("lscpu", "exit 127");
    marlox::repository::cpu_list(fakehost::repository());
    EXPECT_EQ(noted({"add"}), "");
}

}  // namespace
