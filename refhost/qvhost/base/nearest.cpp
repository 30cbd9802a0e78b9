#include "qvhost/base/nearest.h"

#include <algorithm>
#include <limits>

#include "text/case.h"

namespace qvhost {

namespace {

constexpr std::size_t kLongest = 64;  // longer words are no names

// How many letters are wrong, missing, too many or swapped with their neighbour.
std::size_t mistakes(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> least(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t k = 0; k <= b.size(); ++k) {
            auto& here = least[i][k];
            if (i == 0 || k == 0) {
                here = i + k;
                continue;
            }
            here = std::min({least[i - 1][k] + 1, least[i][k - 1] + 1,
                             least[i - 1][k - 1] + (a[i - 1] == b[k - 1] ? 0 : 1)});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1])
                here = std::min(here, least[i - 2][k - 2] + 1);
        }
    }
    return least[a.size()][b.size()];
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& names) {
    if (word.empty() || word.size() > kLongest) return "";
    const auto typed = lowered(word);
    std::string found;
    auto fewest = std::numeric_limits<std::size_t>::max();
    for (const auto& name : names) {
        if (name.size() > kLongest) continue;
        const auto count = mistakes(typed, lowered(name));
        if (count < fewest &&
            count <= std::max<std::size_t>(1, std::max(typed.size(), name.size()) / 3)) {
            fewest = count;
            found = name;
        }
    }
    if (!found.empty() || typed.size() < 3) return found;
    // A part of a name, if it is long enough to mean something.
    for (const auto& name : names) {
        if (lowered(name).starts_with(typed)) return name;
    }
    for (const auto& name : names) {
        if (lowered(name).find(typed) != std::string::npos) return name;
    }
    return "";
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& names) {
    const auto name = nearest(word, names);
    return name.empty() ? "" : "; did you mean " + name + "?";
}

}  // namespace qvhost
