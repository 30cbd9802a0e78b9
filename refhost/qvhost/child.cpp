#include "qvhost/child.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>

#include "journal/journal.h"
#include "logger/control.h"
#include "qvhost/log_dir.h"
#include "qvhost/plugin.h"
#include "repository/sink.h"

namespace qvhost {

namespace {

using marlox::repository::RInstancesWrapper;
using marlox::repository::RRepository;

// A journal that could not be written: nothing that is collected from here on would be kept.
struct JournalFailure {
    std::string reason;
};

class Journal : public RRepository::Impl {
public:
    explicit Journal(const std::string& path) : writer_(path) {}

    void append(const JournalEntry& entry) {
        try {
            writer_.append(entry);
        } catch (const std::exception& error) {
            failure_ = error.what();
            throw;
        }
    }
    void add(const Record& record) override { append(record); }

    // Modules may swallow what add() throws.
    void check() const {
        if (!failure_.empty()) throw JournalFailure{failure_};
    }

private:
    JournalWriter writer_;
    std::string failure_;
};

// What the callback threw, as text; empty: nothing.
template <class Callback, class Argument>
std::string error_of(const Callback& callback, Argument& argument) {
    if (!callback) return "";
    try {
        callback(argument);
        return "";
    } catch (const std::exception& error) {
        const std::string what = error.what();
        return what.empty() ? "an exception without a text" : what;
    } catch (...) {
        return "something that is no std::exception";
    }
}

void ask(const ModulePlan& module, const std::string& table, Journal& journal) {
    journal.append(TableStartEntry{module.name, table});
    const auto& callbacks = module.module->callbacks.at(table);
    RRepository repository(journal);
    auto error = error_of(callbacks.enumerate, repository);
    journal.check();

    RInstancesWrapper::Impl wrapping;
    RInstancesWrapper wrapper(wrapping);
    const auto wrap_error = error_of(callbacks.wrap, wrapper);
    if (error.empty()) error = wrap_error;
    journal.append(TableEndEntry{module.name, table, wrapping.layout, error});
}

void collect_all(const CollectOptions& options, const LogDir& dir, Journal& journal) {
    open_log({dir.path, dir.log(), options.log_level});
    const auto modules = load_modules(options.plugin);
    const auto plans = plan(modules, options);
    for (const auto& module : plans)
        journal.append(ModuleEntry{module.name, module.display, module.tables});
    for (const auto& module : plans) {
        for (const auto& table : module.tables) ask(module, table, journal);
    }
}

void complain(const std::string& what) {
    const auto line = what + '\n';
    // Nobody to tell if this fails too.
    if (::write(kComplaintFd, line.data(), line.size()) < 0) return;
}

}  // namespace

int collect_in_child(const CollectOptions& options) {
    ::fcntl(kComplaintFd, F_SETFD, FD_CLOEXEC);
    const LogDir dir{options.log_dir};
    try {
        Journal journal(dir.journal());
        std::string failure;
        try {
            collect_all(options, dir, journal);
        } catch (const std::exception& error) {
            failure = error.what();
        }
        journal.check();
        journal.append(EndEntry{failure});
        if (const auto reason = log_failure(); !reason.empty())
            complain(dir.log() + " is not complete: " + reason);
        return 0;
    } catch (const JournalFailure& failure) {
        complain(failure.reason);
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return 1;
}

}  // namespace qvhost
