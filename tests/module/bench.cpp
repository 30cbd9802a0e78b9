#include "bench.h"

#include <dlfcn.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "rbmcinfo/items.h"
#include "rsamplemodule2/captures.h"
#include "tools/tools.h"

extern "C" int AddModules(std::vector<boost::shared_ptr<marlox::repository::RModule>>& modules);

System fake_system;

namespace {

// The locale that the whole run is in; none is an error.
[[maybe_unused]] const bool in_locale = [] {
    const char* const name = std::getenv("QV_TEST_LOCALE");
    if (name && !std::setlocale(LC_ALL, name))
        throw std::runtime_error(std::string("there is no locale ") + name);
    return name != nullptr;
}();

}  // namespace

// The program's own definitions come before the C library's, for the plug-in as well.
extern "C" {

__attribute__((visibility("default"))) int posix_spawn(pid_t* pid, const char* path,
                                                       const posix_spawn_file_actions_t* actions,
                                                       const posix_spawnattr_t* attributes,
                                                       char* const arguments[],
                                                       char* const environment[]) {
    const std::string command = arguments[2];
    fakehost::notes.push_back("$ " + fakehost::escaped(command));
    if (fake_system.spawn_error) {
        if (const int error = fake_system.spawn_error(command)) return error;
    }
    static const auto real =
        reinterpret_cast<decltype(&posix_spawn)>(dlsym(RTLD_NEXT, "posix_spawn"));
    const auto& instead = fake_system.program_instead;
    return real(pid, instead.empty() ? path : instead.c_str(), actions, attributes, arguments,
                environment);
}

__attribute__((visibility("default"))) ssize_t readlink(const char* path, char* buffer,
                                                        size_t size) {
    if (std::strcmp(path, "/proc/self/exe") == 0) {
        if (fake_system.exe_link_error != 0) {
            errno = fake_system.exe_link_error;
            return -1;
        }
        if (!fake_system.exe_link.empty()) {
            const auto n = std::min(size, fake_system.exe_link.size());
            std::memcpy(buffer, fake_system.exe_link.data(), n);
            return static_cast<ssize_t>(n);
        }
    }
    static const auto real = reinterpret_cast<decltype(&readlink)>(dlsym(RTLD_NEXT, "readlink"));
    return real(path, buffer, size);
}

__attribute__((visibility("default"))) int access(const char* path, int mode) {
    const auto known = fake_system.exists.find(path);
    if (known != fake_system.exists.end()) {
        if (known->second) return 0;
        errno = ENOENT;
        return -1;
    }
    static const auto real = reinterpret_cast<decltype(&access)>(dlsym(RTLD_NEXT, "access"));
    return real(path, mode);
}

}  // extern "C"

namespace {

void replace_all(std::string& text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::string shell_quoted(std::string text) {
    replace_all(text, "'", R"('\'')");
    return "'" + text + "'";
}

}  // namespace

Bench::Bench() {
    auto name = std::filesystem::temp_directory_path() / "qv-bench-XXXXXX";
    std::string pattern = name;
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no directory for the bench");
    root = pattern;
    std::filesystem::create_directories(root / "path");
    std::filesystem::create_directories(root / "cwd");
    saved_directory_ = std::filesystem::current_path();
    std::filesystem::current_path(root / "cwd");
    saved_path_ = std::getenv("PATH");
    setenv("PATH", ((root / "path").string() + ":/usr/bin:/bin").c_str(), 1);
    unsetenv("QV_TOOL_TIMEOUT");
    unsetenv("QV_ARCHIVE_TIMEOUT");

    fakehost::reset();
    fake_system = {};
    fake_system.exists = {{"/etc/redhat-release", false}, {"/etc/NXBR-release", false}};
    use_program_dir("prog");
    use_log_dir("log");

    using namespace marlox::repository;
    linux_x32_x64 = 64;
    abs_path = abs_path2 = 0;
    mc_item_size = self_item_size = ver_item_size = lan_item_size = 0;
    std::memset(total_buff, 0, sizeof total_buff);
    flag_data = 0;
}

Bench::~Bench() {
    setenv("PATH", saved_path_.c_str(), 1);
    std::filesystem::current_path(saved_directory_);
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
}

void Bench::use_program_dir(const std::string& name) {
    program_dir = (root / name).string() + "/";
    std::filesystem::create_directories(program_dir + "qv_tools");
    fake_system.exe_link = program_dir + "host";
    using namespace marlox::repository;
    for (char* global :
         {current_absolute_path, current_absolute_path_bmc, current_absolute_path2}) {
        std::memset(global, 0, 256);
        std::strncpy(global, program_dir.c_str(), 255);
    }
}

void Bench::use_log_dir(const std::string& name) {
    log_dir = (root / name).string() + "/";
    std::filesystem::create_directories(log_dir);
    fakehost::log_dir = log_dir;
}

void Bench::write_script(const std::filesystem::path& path, const std::string& script) {
    std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

void Bench::tool(const std::string& name, const std::string& script) {
    write_script(root / "path" / name, script);
}

void Bench::vendor_tool(const std::string& name, const std::string& script) {
    write_script(std::filesystem::path(program_dir) / "qv_tools" / name, script);
}

std::string Bench::prints(const std::string& text, int exit_code) {
    const auto file = root / ("text" + std::to_string(++texts_));
    std::ofstream(file) << text;
    return "/bin/cat " + shell_quoted(file) + "; exit " + std::to_string(exit_code);
}

std::string Bench::dies_by(int signal) {
    const auto kill = "kill -" + std::to_string(signal);
    return "case $(tr '\\0' ' ' </proc/$PPID/cmdline) in 'sh -c '*) " + kill + " $PPID ;; *) " +
           kill + " $$ ;; esac";
}

std::string Bench::by_arguments(const std::map<std::string, std::string>& answers) {
    std::string script = "case \"$*\" in\n";
    for (const auto& [arguments, answer] : answers)
        script += shell_quoted(arguments) + ") " + answer + " ;;\n";
    return script + "*) echo \"unexpected: $0 $*\" >&2; exit 99 ;;\nesac";
}

std::string Bench::log_file(const std::string& name) const {
    std::ifstream file(log_dir + name);
    if (!file) return "(none)";
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Bench::noted() { return noted({""}); }

std::string Bench::noted(const std::vector<std::string>& beginnings) {
    std::string text;
    for (std::string note : fakehost::notes) {
        replace_all(note, fakehost::escaped(log_dir), "L/");
        replace_all(note, fakehost::escaped(program_dir), "P/");
        const bool wanted = std::any_of(beginnings.begin(), beginnings.end(),
                                        [&](const auto& word) { return note.starts_with(word); });
        if (!wanted) continue;
        text += note + "\n";
    }
    fakehost::notes.clear();
    return text;
}

marlox::repository::RModule& Bench::module(const std::string& name) {
    if (modules_.empty()) {
        AddModules(modules_);
        for (auto& module : modules_) module->InitCallbacks();
    }
    for (auto& module : modules_) {
        if (module->GetName() == name) return *module;
    }
    throw std::runtime_error("no module " + name);
}

void Bench::enumerate(const std::string& module_name, const std::string& table) {
    module(module_name).callbacks.at(table).enumerate(fakehost::repository());
}

void Bench::wrap(const std::string& module_name, const std::string& table) {
    module(module_name).callbacks.at(table).wrap(fakehost::wrapper());
}
