#include "server.h"

#include <cstdlib>

#include "expressions.h"
#include "store/store.h"

namespace test {

namespace fs = std::filesystem;
using qvhost::Store;

void ServerTest::SetUp() {
    ProductTest::SetUp();
    const fs::path program = QV_PROGRAM;
    fs::create_directories(tools());
    fs::copy_file(program, dir() / "server" / "bin" / "qvhost");
    fs::create_directory_symlink(program.parent_path().parent_path() / "lib",
                                 dir() / "server" / "lib");
    events_do("cat \"$recorded/c0_events.txt\"");
}

void ServerTest::events_do(const std::string& script) {
    const auto text = "#!/bin/sh\nrecorded='" + std::string(QV_SAMPLES) +
                      "/x86_64-kp220-megaraid'\ncase \"$*\" in\n"
                      "'show ctrlcount') echo 'Controller Count = 1';;\n"
                      "'/c0 show events') :\n" +
                      script +
                      "\n;;\n"
                      "'/c0 show termlog') cat \"$recorded/c0_termlog.txt\";;\n"
                      "'/c0 show') cat \"$recorded/c0_show.txt\";;\n"
                      "'/c0/eall/sall show all') cat \"$recorded/c0_drives.txt\";;\n"
                      "esac\n";
    for (const auto& tool : builds()) {
        fs::remove(tool);
        write_file(tool, text);
        fs::permissions(tool, fs::perms::owner_all);
    }
}

Invocation ServerTest::collecting(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments{"collect",       "--log-dir", log_dir(),      "--module",
                                       "sampleModule1", "--module",  "sampleModule2"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Invocation{.arguments = arguments, .program = {dir() / "server" / "bin" / "qvhost"}};
}

Outcome ServerTest::collect_storage(const std::vector<std::string>& more) {
    return run(collecting(more));
}

nlohmann::ordered_json ServerTest::others(const fs::path& log_dir) {
    auto records = nlohmann::ordered_json::array();
    const auto report = report_json(log_dir);
    for (const auto& record : report["records"]) {
        if (!record["table"].get<std::string>().starts_with("EVENTLOG")) records.push_back(record);
    }
    return records;
}

std::string ServerTest::reason(const fs::path& log_dir, const std::string& table) {
    for (const auto& module : Store(store_in(log_dir), Store::Mode::read).modules()) {
        for (const auto& known : module.tables) {
            if (known.id == table) return known.reason;
        }
    }
    return "(no such table)";
}

std::string ServerTest::without_build(const std::string& text) {
    return replaced(text, "_x(32|64)", "");
}

std::string ServerTest::outcome(const fs::path& log_dir, const std::string& words) {
    std::string found = "(no such command)";
    for (const auto& command : Store(store_in(log_dir), Store::Mode::read).commands()) {
        if (command.text.find(words) != std::string::npos) found = qvhost::outcome(command);
    }
    return found;
}

}  // namespace test
