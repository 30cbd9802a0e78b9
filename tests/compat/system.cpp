#include "system.h"

namespace test {

namespace fs = std::filesystem;

void SystemTest::SetUp() {
    ProductTest::SetUp();
    fs::create_directories(system());
    fs::create_directories(dir() / "log");
    // What scripts of the layer need themselves.
    for (const char* tool : {"cat", "rm", "mv", "uname"})
        fs::create_symlink(fs::path("/usr/bin") / tool, system() / tool);
    place_ = {.directory = dir() / "layer",
              .program = QV_PROGRAM,
              .notes = dir() / "notes",
              .log_dir = dir() / "log",
              .log = dir() / "log" / "qvhost.log",
              .search_path = system().string(),
              .ipmi_devices = {dir() / "ipmi0"}};
}

void SystemTest::has(const std::string& tool, const std::string& script) {
    const auto file = system() / tool;
    fs::remove(file);
    write_file(file, "#!/bin/sh\necho \"" + tool + " $*\" >>'" + (dir() / "calls").string() +
                         "'\n" + script + "\n");
    fs::permissions(file, fs::perms::owner_all);
}

std::vector<std::string> SystemTest::calls() {
    const auto lines = lines_of(read_file(dir() / "calls"));
    fs::remove(dir() / "calls");
    return lines;
}

Outcome SystemTest::with_layer(const std::string& command) {
    if (!fs::exists(place_.directory)) {
        fs::create_directories(place_.directory);
        fs::create_directories(place_.notes);
        qvhost::compat::write_layer(place_, qvhost::compat::useful_stand_ins(place_, true));
    }
    return shell(command, place_.directory.string() + ":" + place_.search_path);
}

Outcome SystemTest::bare(const std::string& command) { return shell(command, place_.search_path); }

std::vector<std::string> SystemTest::notes() const {
    const std::string place = " 3 refhost/compat:";
    std::vector<std::string> texts;
    for (const auto& line : lines_of(read_file(place_.log))) {
        const auto at = line.find(place);
        if (at == std::string::npos) continue;
        texts.push_back(line.substr(line.find(' ', at + place.size()) + 1));
    }
    return texts;
}

Outcome SystemTest::shell(const std::string& command, const std::string& path) {
    // As the plug-in's runner names it: the shell's own messages begin with "sh".
    return run(Invocation{.arguments = {command},
                          .environment = {{"PATH", path}},
                          .program = {"/bin/bash", "-c", "exec -a sh /bin/sh -c \"$0\""}});
}

}  // namespace test
