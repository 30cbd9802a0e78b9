#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <sstream>
#include <system_error>

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

// "2026-11-21T01:20:40.123Z ", then the text.
std::unique_ptr<spdlog::formatter> line_format() {
    return std::make_unique<spdlog::pattern_formatter>("%Y-%m-%dT%H:%M:%S.%eZ %v",
                                                       spdlog::pattern_time_type::utc);
}

void note_failure(const std::string& reason) noexcept {
    try {
        if (state().failure.empty()) state().failure = reason;
    } catch (...) {
        // No memory to say that the log failed; the log stays as it is.
    }
}

}  // namespace

namespace qvhost {

void open_log(const LogSettings& settings) {
    auto& log = state();
    log.settings = settings;
    if (settings.log_file.empty()) return;

    // The sink would create the file with the process's umask.
    const int fd =
        ::open(settings.log_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        throw std::system_error(errno, std::generic_category(),
                                "cannot open the log file " + settings.log_file);
    ::close(fd);

    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>(settings.log_file);
    log.logger = std::make_unique<spdlog::logger>("qvhost", std::move(sink));
    log.logger->set_formatter(line_format());
    log.logger->flush_on(spdlog::level::trace);
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
