// Where the library lies: its configuration, logs and producers are looked for beside it.
#include "vx3/core/Utilities.h"

#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <system_error>

namespace VX3 {

namespace {

const int g_insideLibrary = 0;

// The loader's name of a library may be relative to the directory the process had when it was loaded, so it
// is made absolute once, at first use. The program itself has no name there.
std::string FindModule() {
    std::error_code error;
    Dl_info info{};
    void* entry = nullptr;
    if (::dladdr1(&g_insideLibrary, &info, &entry, RTLD_DL_LINKMAP) != 0 && entry != nullptr) {
        const auto* map = static_cast<const link_map*>(entry);
        if (map->l_name != nullptr && map->l_name[0] != '\0') {
            const auto path = std::filesystem::absolute(map->l_name, error);
            return error ? std::string(map->l_name) : path.string();
        }
    }
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

} // namespace

std::string GetModuleFileName() {
    static const std::string name = FindModule();
    return name;
}

std::string GetLibraryDirectory() {
    return std::filesystem::path(GetModuleFileName()).parent_path().string() + "/";
}

std::string GetModuleFilePath(const std::string& p) {
    if (std::filesystem::path(p).has_root_directory())
        return p;
    return GetLibraryDirectory() + p;
}

} // namespace VX3
