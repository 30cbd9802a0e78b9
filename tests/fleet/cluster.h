// A PostgreSQL server of the tests' own: a cluster in a temporary directory, reached through a socket alone. As root it
// runs as the user "postgres", since it refuses root.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "files/temporary_directory.h"

namespace test {

class Cluster {
public:
    // Throws std::runtime_error if it cannot be made.
    Cluster();
    ~Cluster();
    Cluster(const Cluster&) = delete;
    Cluster& operator=(const Cluster&) = delete;

    void start();
    // As a crash: no process of the server ends what it does.
    void crash();

    // Of the superuser, who makes what the tests need.
    std::string administrator() const;
    // Of a role that may make tables in that schema, and nothing else: no database, no schema.
    std::string role_in(const std::string& schema) const;

private:
    void run(const std::string& program, const std::vector<std::string>& arguments, bool wait);

    qvhost::TemporaryDirectory place_;
    pid_t server_ = 0;
};

// The one of this process, started when it is first asked for.
Cluster& cluster();

}  // namespace test
