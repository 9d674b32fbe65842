// How a plug-in is loaded from its file.
#include "host/Plugin.h"

#include <algorithm>
#include <dlfcn.h>

namespace vxhost
{

namespace
{

constexpr const char *kEntrySymbol = "main";

std::string LoaderError()
{
    const char *text =
        ::dlerror(); // NOLINT(concurrency-mt-unsafe): per thread in every C library we build on
    std::string error = text == nullptr ? "unknown reason" : text;
    std::ranges::replace(error, '\n', ' ');
    return error;
}

} // namespace

std::unique_ptr<Plugin> Plugin::Load(const std::string &path, std::string *error)
{
    void *loaded = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) {
        *error = "cannot be loaded, " + LoaderError() + ": name a plug-in that is whole";
        return nullptr;
    }
    const std::shared_ptr<void> library(loaded, ::dlclose);
    auto entry = reinterpret_cast<VXMainProc>(::dlsym(loaded, kEntrySymbol));
    if (entry == nullptr) {
        *error = std::string("not a plug-in, it exports no \"") + kEntrySymbol + "\": name another";
        return nullptr;
    }
    std::unique_ptr<Plugin> plugin = FromEntry(entry);
    plugin->library_ = library;
    return plugin;
}

} // namespace vxhost
