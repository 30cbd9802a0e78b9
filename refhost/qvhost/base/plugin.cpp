#include "qvhost/base/plugin.h"

#include <dlfcn.h>

#include <stdexcept>

namespace qvhost {

Plugin::Plugin(const std::filesystem::path& file) : handle_(::dlopen(file.c_str(), RTLD_NOW)) {
    if (!handle_) throw std::runtime_error(std::string("cannot load the plug-in: ") + ::dlerror());
    using AddModules = int(Modules&);
    auto* add_modules = reinterpret_cast<AddModules*>(::dlsym(handle_, "AddModules"));
    if (!add_modules) {
        ::dlclose(handle_);
        throw std::runtime_error(file.string() + ": no plug-in: it has no AddModules");
    }
    add_modules(modules_);
}

Plugin::~Plugin() {
    modules_.clear();
    ::dlclose(handle_);
}

void* Plugin::operation(const std::string& symbol) const {
    return ::dlsym(handle_, symbol.c_str());
}

}  // namespace qvhost
