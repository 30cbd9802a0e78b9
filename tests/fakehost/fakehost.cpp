#include "fakehost.h"

#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <variant>

#include "rinstance.h"
#include "rmodule.h"
#include "xmodule.h"

namespace fakehost {

std::vector<std::string> notes;
unsigned min_log_level = 4;
std::string log_dir;
int records_made = 0;
int records_until_failure = 0;

void reset() {
    notes.clear();
    min_log_level = 4;
    log_dir.clear();
    records_made = 0;
    records_until_failure = 0;
}

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '"' || c == '\\') {
            out += {'\\', c};
        } else if (byte < 0x20 || byte == 0x7f) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", byte);
            out += hex;
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace fakehost

namespace marlox::repository {

namespace {

std::string quoted(const std::string& text) { return '"' + fakehost::escaped(text) + '"'; }

}  // namespace

RModule::RModule() = default;
RModule::~RModule() = default;

struct RRepository::Impl {};
RRepository::RRepository(Impl& impl) : impl_(&impl) {}

struct RInstancesWrapper::Impl {};
RInstancesWrapper::RInstancesWrapper(Impl& impl) : impl_(&impl) {}

void RInstancesWrapper::SetColumnHeaders(const std::vector<std::string>& ids, unsigned width,
                                         unsigned count) {
    std::string note = "columns:";
    for (const auto& id : ids) note += " " + id;
    fakehost::notes.push_back(note + " / " + std::to_string(width) + " " + std::to_string(count));
}

void RInstancesWrapper::SetRowHeaders(const std::vector<std::string>& ids,
                                      const std::vector<unsigned>& widths, bool flag) {
    std::string note = "rows:";
    for (std::size_t i = 0; i < ids.size() || i < widths.size(); ++i) {
        note += " " + (i < ids.size() ? ids[i] : "(none)") + "=";
        note += i < widths.size() ? std::to_string(widths[i]) : "(none)";
    }
    fakehost::notes.push_back(note + (flag ? " / true" : " / false"));
}

struct RInstance::Impl {
    struct Property {
        std::string id, display, value;
    };
    std::string head;
    std::vector<Property> properties;

    void set(const std::string& id, const std::string& display, const std::string& value) {
        for (auto& property : properties) {
            if (property.id != id) continue;
            property.display = display;
            property.value = value;
            return;
        }
        properties.push_back({id, display, value});
    }
};

RInstance::RInstance(const std::string& tableId, const std::string& displayName, int index)
    : impl_(new Impl{tableId + " " + quoted(displayName) + " " + std::to_string(index) + ":", {}}) {
    ++fakehost::records_made;
}

RInstance::~RInstance() { delete impl_; }

void RInstance::AddProperty(const std::string& id, const std::string& display,
                            const std::string& value) {
    impl_->set(id, display, quoted(value));
}

void RInstance::AddProperty(const std::string& id, const std::string& display, int value) {
    impl_->set(id, display, std::to_string(value));
}

void RInstance::AddToRepository(RRepository&) const {
    if (fakehost::records_until_failure > 0 && --fakehost::records_until_failure == 0)
        throw std::runtime_error("the repository is full");
    std::string note = "add " + impl_->head;
    const char* separator = " ";
    for (const auto& [id, display, value] : impl_->properties) {
        note += separator + id + " " + quoted(display) + "=" + value;
        separator = ", ";
    }
    fakehost::notes.push_back(std::move(note));
}

}  // namespace marlox::repository

namespace fakehost {

marlox::repository::RRepository& repository() {
    static marlox::repository::RRepository::Impl impl;
    static marlox::repository::RRepository repository(impl);
    return repository;
}

marlox::repository::RInstancesWrapper& wrapper() {
    static marlox::repository::RInstancesWrapper::Impl impl;
    static marlox::repository::RInstancesWrapper wrapper(impl);
    return wrapper;
}

}  // namespace fakehost

namespace XModule {

struct Log::Impl {
    std::string head;
    std::ostringstream text;
};

unsigned Log::GetMinLogLevel() { return fakehost::min_log_level; }

Log::Log(unsigned level, const char* file, int) : impl_(new Impl) {
    impl_->head = "log " + std::to_string(level) + " " + file + ": ";
}

Log::~Log() {
    fakehost::notes.push_back(impl_->head + fakehost::escaped(impl_->text.str()));
    delete impl_;
}

std::ostream& Log::Stream() { return impl_->text; }

void GetLogDir(char* buffer, unsigned long size) {
    if (fakehost::log_dir.size() < size) std::strcpy(buffer, fakehost::log_dir.c_str());
}

}  // namespace XModule
