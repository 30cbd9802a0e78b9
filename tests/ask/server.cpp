#include "server.h"

namespace test {

namespace fs = std::filesystem;

namespace {

void write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

void write_tool(const fs::path& file) {
    write(file, "#!/bin/false\n");
    fs::permissions(file, fs::perms::owner_all);
}

// "'/x/qv_tools/storcli_x64' /c0 show >'/x/log/host_a.txt'"
struct Command {
    std::string asked;    // "storcli /c0 show"
    std::string capture;  // "host_a.txt"
};

Command parsed(const std::string& text, const fs::path& log_dir) {
    const auto mark = " >'" + log_dir.string() + "/";
    const auto at = text.find(mark);
    if (at == std::string::npos || !text.ends_with('\'')) return {text, ""};
    Command command{text.substr(0, at), text.substr(at + mark.size())};
    command.capture.pop_back();
    if (command.asked.starts_with('\'')) {
        const auto end = command.asked.find('\'', 1);
        auto tool = fs::path(command.asked.substr(1, end - 1)).filename().string();
        if (tool.ends_with("_x64")) tool.resize(tool.size() - 4);
        command.asked = tool + command.asked.substr(end + 1);
    }
    return command;
}

}  // namespace

AskedServer::AskedServer()
    : root(dir / "root"), path(dir / "path"), vendor_tools(dir / "qv_tools"), log_dir(dir / "log") {
    for (const auto& made : {root, path, vendor_tools, log_dir}) fs::create_directories(made);
}

void AskedServer::has_file(const std::string& name, const std::string& text) {
    write(root / name, text);
}

void AskedServer::has_disk(const std::string& name, const std::string& device) {
    const auto place = root / "sys/devices" / device / "block" / name;
    fs::create_directories(place);
    fs::create_directories(root / "sys/block");
    fs::create_directory_symlink(place, root / "sys/block" / name);
}

void AskedServer::has_tool(const std::string& file) { write_tool(path / file); }
void AskedServer::has_vendor_tool(const std::string& file) { write_tool(vendor_tools / file); }
void AskedServer::has_capture(const std::string& name, const std::string& text) {
    write(log_dir / name, text);
}

void AskedServer::forget_answers() const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(log_dir)) {
        if (entry.path().filename().string().starts_with("host_")) found.push_back(entry.path());
    }
    for (const auto& file : found) fs::remove(file);
}

qvhost::ask::Settings AskedServer::settings() {
    return {
        .log_dir = log_dir,
        .places = {.vendor_tools = vendor_tools,
                   .search_path = path.string(),
                   .why_not_trusted = [](const fs::path&) { return std::string(); }},
        .machine_root = root,
        .run = {},
        .begin = {},
        .lacks = {},
    };
}

Texts AskedServer::asked(const qvhost::ask::Settings& given) {
    Texts commands;
    begun.clear();
    lacks.clear();
    auto settings = given;
    settings.run = [&](const std::string& text) {
        const auto [question, capture] = parsed(text, log_dir);
        commands.push_back(question + (capture.empty() ? "" : " > " + capture));
        if (!capture.empty()) write(log_dir / capture, answers[question]);
        const auto status = statuses.find(question);
        return status == statuses.end() ? 0 : status->second;
    };
    settings.begin = [&](const std::string& tool) { begun.push_back(tool); };
    settings.lacks = [&](const qvhost::ask::Lack& lack) { lacks.push_back(lack); };
    qvhost::ask::ask(settings);
    return commands;
}

std::string controller_list(int count) {
    std::string rows;
    for (int number = 0; number < count; ++number)
        rows += "  " + std::to_string(number) +
                " Example9460         8   6   2     0   2     0 N/A On  3   Y       3 Opt   \n";
    const std::string ruler(86, '-');
    return "CLI Version = 007.1912.0000.0000\nStatus Code = 0\nStatus = Success\nDescription = None\n\n"
           "Number of Controllers = " +
           std::to_string(count) + "\n\nSystem Overview :\n===============\n\n" + ruler +
           "\nCtl Model               Ports PDs DGs DNOpt VDs VNOpt BBU sPR DS  EHS ASOs Hlth  \n" +
           ruler + "\n" + rows + ruler + "\n";
}

}  // namespace test
