// The plug-in's exported text functions, which any host may call.
//     input: text, NUL, what to replace, NUL, by what
#include "tools/tools.h"

#include <cctype>
#include <vector>

#include "check.h"
#include "fakehost.h"

using namespace marlox::repository;

namespace {

std::string replaced(const std::string& text, const std::string& from, const std::string& to) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        if (!from.empty() && text.compare(i, from.size(), from) == 0) {
            result += to;
            i += from.size();
        } else {
            result += text[i++];
        }
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Pieces input(fuzz::text_of(data, size));
    std::string text(input.until('\0'));
    std::string from(input.until('\0'));
    std::string to(input.until('\0'));

    const auto wanted = replaced(text, from, to);
    std::vector<char> room(std::max(wanted.size(), text.size()) + 1);
    text.copy(room.data(), text.size());
    StrReplace(room.data(), from.data(), to.data());
    fuzz::expect_same(room.data(), wanted, "every place is replaced once, from the left");

    std::string upper = text;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    fuzz::expect_same(strupr(text.data()), upper, "a text is upper-cased in place");

    const int status = static_cast<int>(input.number());
    const int judged = check_system_call(status, from.c_str());
    fuzz::expect(judged == 0 || judged == 1, "a status is a success or a failure");
    fuzz::expect(status != 0 || judged == 0, "status 0 is a success");
    fakehost::notes.clear();
    return 0;
}
