#include "core/DataDirectories.h"

#include "vx3/core/Utilities.h"

namespace VX3 {

std::vector<std::string> DataDirectories() {
    const std::string library = GetLibraryDirectory();
    return {library, library + "../share/vx3/", library + "../../share/vx3/",
            std::string(VX3_INSTALLED_DATA_DIR) + "/", std::string(VX3_SOURCE_DATA_DIR) + "/"};
}

} // namespace VX3
