#include "cluster.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <pqxx/pqxx>
#include <stdexcept>
#include <thread>
#include <vector>

#include "files/descriptor.h"
#include "processes/processes.h"

namespace test {

namespace fs = std::filesystem;
using namespace qvhost;

namespace {

constexpr const char* kPrograms = "/usr/lib/postgresql/15/bin";
constexpr const char* kUser = "postgres";
constexpr std::chrono::minutes kLongest{5};  // a busy machine is slow

void give_to_user(const fs::path& path) {
    const auto* const user = ::getpwnam(kUser);
    if (!user) throw std::runtime_error("there is no user \"postgres\"");
    if (::chown(path.c_str(), user->pw_uid, user->pw_gid) != 0)
        throw std::runtime_error("cannot give " + path.string() + " to postgres");
}

}  // namespace

Cluster::Cluster() : place_("pg") {
    if (::geteuid() == 0) give_to_user(place_.path());
    run("initdb",
        {"--no-sync", "--auth=trust", "--encoding=UTF8", "--locale=C.UTF-8",
         std::string("--username=") + kUser, "--pgdata=" + (place_.path() / "data").string()},
        true);
    start();
    pqxx::connection connection(administrator());
    pqxx::nontransaction(connection).exec("CREATE ROLE fleet LOGIN NOSUPERUSER NOCREATEDB");
}

Cluster::~Cluster() { crash(); }

void Cluster::run(const std::string& program, const std::vector<std::string>& arguments,
                  bool wait) {
    Start start{.program = std::string(kPrograms) + "/" + program, .arguments = arguments};
    if (::geteuid() == 0) {
        start.arguments.insert(start.arguments.begin(),
                               {std::string("--reuid=") + kUser, std::string("--regid=") + kUser,
                                "--clear-groups", start.program});
        start.program = "/usr/bin/setpriv";
    }
    const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    start.descriptors = {{nowhere.get(), 1}, {nowhere.get(), 2}};
    const auto process = start_process(start);
    if (!wait) {
        server_ = process;
    } else if (wait_for_process(process) != 0) {
        throw std::runtime_error(program + " failed");
    }
}

void Cluster::start() {
    const auto place = place_.path().string();
    run("postgres",
        {"-D", place + "/data", "-k", place, "-c", "listen_addresses=", "-c", "fsync=off"}, false);
    const auto until = std::chrono::steady_clock::now() + kLongest;
    for (;;) {
        try {
            const pqxx::connection connection(administrator());
            return;
        } catch (const pqxx::failure&) {
            int status = 0;
            if (::waitpid(server_, &status, WNOHANG) == server_)
                throw std::runtime_error("postgres ended");
            if (std::chrono::steady_clock::now() > until) throw;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
}

void Cluster::crash() {
    if (server_ == 0) return;
    ::kill(server_, SIGQUIT);  // its processes end at once, as they are
    wait_for_process(server_);
    server_ = 0;
}

std::string Cluster::administrator() const {
    return std::string("postgresql:///postgres?user=") + kUser + "&host=" + place_.path().string();
}

std::string Cluster::role_in(const std::string& schema) const {
    return "postgresql:///postgres?user=fleet&host=" + place_.path().string() +
           "&options=-csearch_path%3D" + schema;
}

Cluster& cluster() {
    static Cluster one;
    return one;
}

}  // namespace test
