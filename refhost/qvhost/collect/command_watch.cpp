#include "qvhost/collect/command_watch.h"

#include <charconv>
#include <fstream>
#include <iterator>

#include "qvhost/finish/commands.h"

namespace qvhost {

std::vector<Begun> CommandWatch::read() {
    std::ifstream file(log_, std::ios::binary);
    file.seekg(next_);
    const std::string news{std::istreambuf_iterator<char>(file), {}};
    next_ += static_cast<std::streamoff>(news.size());
    pending_ += news;

    std::vector<Begun> begun;
    for (auto end = pending_.find('\n'); end != std::string::npos; end = pending_.find('\n')) {
        const auto line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        if (line.starts_with("= ")) {
            begun.push_back({false, line.substr(2)});
        } else if (const auto command = command_that_begins(line)) {
            running_ = Begun{true, short_text(*command)};
            begun.push_back(*running_);
        } else if (line.starts_with("~ ") && running_) {
            long long seconds = 0;
            std::from_chars(line.data() + 2, line.data() + line.size(), seconds);
            running_->limit = std::chrono::seconds(seconds);
            if (!begun.empty()) begun.back().limit = running_->limit;
        } else if (line.starts_with("< ")) {
            running_.reset();
        }
    }
    return begun;
}

}  // namespace qvhost
