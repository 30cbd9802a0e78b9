#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <sstream>
#include <system_error>

#include "files/descriptor.h"
#include "logger/control.h"
#include "xmodule.h"

namespace {

struct State {
    qvhost::LogSettings settings{.log_dir = "", .log_file = "", .min_level = 0};
    std::unique_ptr<spdlog::logger> logger;
    std::string failure;
};

State& state() {
    static State state;
    return state;
}

// A file that only the user can read, whatever the umask, and never one that a link leads to: the
// library's own sink would follow it.
class FileSink : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
public:
    explicit FileSink(const std::string& path)
        : file_(
              ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        if (!file_)
            throw std::system_error(errno, std::generic_category(),
                                    "cannot open the log file " + path);
    }

private:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        if (!qvhost::write_bytes(file_.get(), {line.data(), line.size()}))
            throw std::system_error(errno, std::generic_category());
    }
    void flush_() override {}

    qvhost::Descriptor file_;
};

// "2026-11-21T01:20:40.123Z ", then the text.
std::unique_ptr<spdlog::formatter> line_format() {
    return std::make_unique<spdlog::pattern_formatter>("%Y-%m-%dT%H:%M:%S.%eZ %v",
                                                       spdlog::pattern_time_type::utc);
}

void note_failure(const std::string& reason) noexcept {
    try {
        if (state().failure.empty()) state().failure = reason;
    } catch (...) {
        // There is no memory left for the reason.
    }
}

}  // namespace

namespace qvhost {

void open_log(const LogSettings& settings) {
    auto& log = state();
    log.settings = settings;
    if (settings.log_file.empty()) return;

    log.logger =
        std::make_unique<spdlog::logger>("qvhost", std::make_shared<FileSink>(settings.log_file));
    log.logger->set_formatter(line_format());
    log.logger->set_error_handler([](const std::string& reason) { note_failure(reason); });
}

std::string log_failure() { return state().failure; }

}  // namespace qvhost

namespace XModule {

struct Log::Impl {
    unsigned level;
    const char* unit;
    int line;
    std::ostringstream text;
};

unsigned Log::GetMinLogLevel() { return state().settings.min_level; }

Log::Log(unsigned level, const char* file, int line) : impl_(new Impl{level, file, line, {}}) {}

Log::~Log() {
    try {
        if (auto& logger = state().logger) {
            logger->info("{} {}:{} {}", impl_->level, qvhost::escape_log_text(impl_->unit),
                         impl_->line, qvhost::escape_log_text(impl_->text.view()));
        }
    } catch (const std::exception& error) {
        note_failure(error.what());
    }
    delete impl_;
}

std::ostream& Log::Stream() { return impl_->text; }

void GetLogDir(char* buffer, unsigned long size) {
    if (size == 0) return;
    const auto& dir = state().settings.log_dir;
    const bool fits = dir.size() < size;
    std::memcpy(buffer, fits ? dir.c_str() : "", fits ? dir.size() + 1 : 1);
}

}  // namespace XModule
