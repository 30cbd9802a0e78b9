#include "qvhost/processes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>

namespace qvhost {

namespace {

// /proc/PID/stat: "17 (a name) S 1 17 17 0 ...": pid, name, state, parent, group, session. The name
// can hold anything, also ")".
std::optional<Process> read_process(const std::string& name) {
    Process process;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process.pid);
    if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;

    std::ifstream file("/proc/" + name + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto behind_name = text.rfind(')');
    if (behind_name == std::string::npos) return std::nullopt;  // it has ended
    std::istringstream fields(text.substr(behind_name + 1));
    pid_t group = 0;
    fields >> process.state >> process.parent >> group >> process.session;
    return process;
}

bool alive(const Process& process) { return process.state != 'Z' && process.state != 'X'; }

}  // namespace

std::vector<Process> processes() {
    std::vector<Process> all;
    std::error_code error;
    for (std::filesystem::directory_iterator i("/proc", error), end; !error && i != end;
         i.increment(error)) {
        if (const auto process = read_process(i->path().filename().string()))
            all.push_back(*process);
    }
    return all;
}

std::vector<Process> descendants(pid_t root, const std::vector<Process>& all) {
    std::set<pid_t> family{root};
    std::vector<Process> found;
    for (bool grew = true; grew;) {
        grew = false;
        for (const auto& process : all) {
            if (!family.contains(process.parent) || !family.insert(process.pid).second) continue;
            found.push_back(process);
            grew = true;
        }
    }
    return found;
}

std::vector<Process> kill_all(const std::function<std::vector<Process>()>& find) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(5);
    for (;;) {
        auto found = find();
        std::erase_if(found, [](const Process& process) { return !alive(process); });
        for (const auto& process : found) ::kill(process.pid, SIGKILL);
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        if (found.empty() || Clock::now() > deadline) return found;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

}  // namespace qvhost
