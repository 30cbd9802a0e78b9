#include "page.h"

namespace truth {

int Page::line(std::string text) {
    lines.push_back({std::move(text)});
    return last();
}

int Page::row(std::string text, int tail, bool is_counted) {
    lines.push_back({std::move(text), tail, is_counted});
    return last();
}

void Page::text(const std::string& all) {
    std::size_t at = 0;
    while (at < all.size()) {
        const auto end = all.find('\n', at);
        line(all.substr(at, end - at));
        at = end == std::string::npos ? all.size() : end + 1;
    }
}

void Subject::tell(const Page& page, int line, std::initializer_list<Saying> fields) {
    for (const auto& [field, told] : fields)
        facts.push_back({field, told, {page.name, line, line}});
}

std::vector<Spot> Subject::spots_of(const std::string& field) const {
    std::vector<Spot> spots;
    for (const auto& fact : facts) {
        if (fact.field == field) spots.push_back(fact.spot);
    }
    return spots;
}

std::optional<Spot> Subject::spot_of(const std::string& field) const {
    const auto spots = spots_of(field);
    return spots.empty() ? std::nullopt : std::optional(spots.front());
}

Subject& Book::subject(const std::string& kind, const std::string& id,
                       const std::vector<std::string>& match) {
    auto& place = by_id[{kind, id}];
    if (!place) place = &subjects.emplace_back(Subject{kind, id, match});
    if (place->match.empty()) place->match = match;  // it was known by another's line
    return *place;
}

const Subject* Book::find(const std::string& kind, const std::string& id) const {
    const auto found = by_id.find({kind, id});
    return found == by_id.end() ? nullptr : found->second;
}

}  // namespace truth
