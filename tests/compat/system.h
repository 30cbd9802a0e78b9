// A system that is made up: a search path with scripts for tools, and a layer before it.
#pragma once

#include "compat/layer.h"
#include "program.h"

namespace test {

class SystemTest : public ProductTest {
protected:
    void SetUp() override;

    // A tool of the system, a shell script. It notes its name and arguments in calls() first.
    void has(const std::string& tool, const std::string& script = "exit 0");

    // What was called, line by line, since the last time.
    std::vector<std::string> calls();

    // Writes the layer and runs the command line as the plug-in does, with the layer or without it.
    Outcome with_layer(const std::string& command);
    Outcome bare(const std::string& command);

    // The texts in the log.
    std::vector<std::string> notes() const;

    std::filesystem::path system() const { return dir() / "system"; }
    qvhost::compat::Place place_;

private:
    Outcome shell(const std::string& command, const std::string& path);
};

}  // namespace test
