// A made-up machine with tools that answer from memory: directories for its files, its tools and its captures.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "ask/ask.h"
#include "host/place.h"

namespace test {

using Texts = std::vector<std::string>;

class AskedServer : public Place {
protected:
    AskedServer();

    // A file of the machine, below its root.
    void has_file(const std::string& name, const std::string& text = "");
    // A disk as /sys shows it, at a place in the tree of devices.
    void has_disk(const std::string& name, const std::string& device);
    // A tool on the search path, or in qv_tools.
    void has_tool(const std::string& file);
    void has_vendor_tool(const std::string& file);
    // A capture that a plug-in has left.
    void has_capture(const std::string& name, const std::string& text);

    // Removes what questions have left.
    void forget_answers() const;

    // What the commands of the tools print: by "storcli show", without directory, build and redirection.
    std::map<std::string, std::string> answers;
    std::map<std::string, int> statuses;  // wait statuses other than 0

    qvhost::ask::Settings settings();
    // What is asked: "lspci > host_lspci.txt". Anything but that form is given as it is.
    Texts asked(const qvhost::ask::Settings& settings);
    Texts asked() { return asked(settings()); }

    Texts begun;                           // tools, as they were told
    std::vector<qvhost::ask::Lack> lacks;  // of the last run

    std::filesystem::path root, path, vendor_tools, log_dir;
};

// What storcli and the like print of the controllers that they know.
std::string controller_list(int count);

}  // namespace test
