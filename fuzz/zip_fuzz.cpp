// Zip archives: any bytes must give a file within its limit, or a reason in words.
#include "FuzzInput.h"
#include "platform/archive/ZipArchive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const VX3::ZipLimits limits{64 * 1024, 256 * 1024};
    const VX3::ZipContent content = VX3::UnzipOnly(bytes, ".xml", limits);
    VX3::Fuzz::Require(content.bytes.size() <= limits.content);
    VX3::Fuzz::Require(content.failure.empty() || content.bytes.empty());
    return 0;
}
