#include "files/script.h"

#include "files/new_file.h"

namespace qvhost {

std::string shell_quoted(const std::string& text) {
    std::string word = "'";
    for (const char c : text) {
        if (c == '\'') {
            word += R"('\'')";
        } else {
            word += c;
        }
    }
    return word + "'";
}

void write_script(const std::filesystem::path& file, std::string_view script) {
    write_new_file(file, script);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

}  // namespace qvhost
