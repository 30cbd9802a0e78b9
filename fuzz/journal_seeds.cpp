// Writes journals as the program of today does, for the fuzzer "journal" to begin with: whole, and
// broken off in the middle of an entry.
//     journal_seeds DIRECTORY
#include <filesystem>

#include "journal/journal.h"

using namespace qvhost;
namespace fs = std::filesystem;

int main(int, char** arguments) {
    const fs::path directory = arguments[1];
    fs::remove_all(directory);
    fs::create_directories(directory);
    const Record record{
        "T", "name", -1, {{"a", "A", "v"}, {"b", "B", 7}}
    };
    {
        JournalWriter journal(directory / "one_of_each");
        journal.append(ModuleEntry{
            "M", "Module", {"T", "U"}
        });
        journal.append(TableStartEntry{"M", "T"});
        journal.append(record);
        journal.append(record);  // like the one before: its values alone
        journal.append(TableEndEntry{
            "M", "T", RowLayout{{"a", "b"}, {30, 70}, true},
              ""
        });
        journal.append(TableEndEntry{
            "M", "U", ColumnLayout{{"a"}, 40, 1},
              "it threw"
        });
        journal.append(TableEndEntry{"M", "V", Layout(), ""});
        journal.append(QuestionEntry{"smartctl", "", ""});
        journal.append(QuestionEntry{"", "storage", "smartctl is not installed"});
        journal.append(ModulesEndEntry{true});
        journal.append(EndEntry{"no plug-in"});
    }
    fs::copy_file(directory / "one_of_each", directory / "half");
    fs::resize_file(directory / "half", fs::file_size(directory / "half") / 2);
}
