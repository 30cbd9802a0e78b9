// A directory as a disk may have it after its power was cut, by the notes that power_recorder.cpp made.
#pragma once

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace test {

class PowerCut {
public:
    // `directory` as the processes left it.
    PowerCut(std::filesystem::path directory, std::filesystem::path notes);

    enum class Rest { lost, kept, partly };

    // Builds it at `place`. What was synced is there; what was not is lost, kept, or there in part: of each
    // directory the names as they were at one moment since it was synced, of each file any of its pages.
    void build(const std::filesystem::path& place, Rest rest, std::mt19937& random) const;

private:
    using Names = std::map<std::string, std::string>;  // name -> key of what it names
    std::vector<Names> lists_of(const std::string& key) const;
    void build_directory(const std::string& key, const std::filesystem::path& place, Rest rest,
                         std::mt19937& random) const;
    std::string content_of(const std::string& key, Rest rest, std::mt19937& random) const;

    std::filesystem::path directory_;
    std::filesystem::path notes_;
    std::map<std::string, std::filesystem::path> left_;  // what is still there, by its key
};

}  // namespace test
