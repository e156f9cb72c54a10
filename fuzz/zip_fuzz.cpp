// Zip archives: any bytes must give a file within its limit, or a reason in words.
#include "platform/archive/ZipArchive.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const VX3::ZipLimits limits{64 * 1024, 256 * 1024};
    const VX3::ZipContent content = VX3::UnzipOnly(bytes, ".xml", limits);
    if (content.bytes.size() > limits.content || (!content.failure.empty() && !content.bytes.empty()))
        std::abort();
    return 0;
}
