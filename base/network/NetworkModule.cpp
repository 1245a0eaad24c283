#include "base/network/NetworkModule.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace tesserine {
namespace {

std::filesystem::path moduleFile() {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    return program.parent_path().parent_path() / "lib/tesserine/tesserine-network.so";
}

/// Never closed again: threads and handlers of the libraries go on until the process ends.
const NetworkModule& load() {
    void* const file = ::dlopen(moduleFile().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const found = file == nullptr ? nullptr : ::dlsym(file, NetworkModule::symbol);
    if (found == nullptr) throw std::runtime_error(::dlerror());
    return *static_cast<const NetworkModule*>(found);
}

}  // namespace

const NetworkModule& networkModule() {
    static const NetworkModule& module = load();
    return module;
}

}  // namespace tesserine
