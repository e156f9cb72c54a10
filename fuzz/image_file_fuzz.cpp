// Files as images: a name that describes the pixels, and the pixels. What loads has the size that its header
// says, holds the file's bytes, and comes back from a file that we write ourselves. Then it is worked on in
// memory that ends with its last pixel. The codecs of pictures are not ours: they get small ones of two
// well-tried kinds.
//
// Input: options, width, height, format and padding of the description beside the name, the name, the
// content.
#include "FuzzInput.h"
#include "processing/FileBytes.h"
#include "processing/ImageFileName.h"
#include "support/TempDir.h"
#include "vx3/processing/SaveLoadImage.h"

#include <array>
#include <opencv2/core.hpp>
#include <unistd.h>

using namespace VX3;
using namespace VX3::Fuzz;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Image = std::shared_ptr<IImage>;

constexpr PixelFormatValue Formats[] = {
#define FORMAT(name, ...) name,
    VX3_PIXEL_FORMAT_TABLE(FORMAT)
#undef FORMAT
};

// By its header, that is: what the codecs believe.
bool IsSmallPicture(const Bytes& content) {
    constexpr unsigned char Bmp[] = {'B', 'M'};
    constexpr unsigned char Png[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (content.size() < 32 || content.size() > 4096)
        return false;
    const unsigned char* at = content.data();
    if (std::memcmp(at, Bmp, sizeof(Bmp)) == 0)
        return at[18] < 128 && at[22] < 128 && (at[19] | at[20] | at[21] | at[23] | at[24] | at[25]) == 0;
    return std::memcmp(at, Png, sizeof(Png)) == 0 && at[19] < 128 && at[23] < 128 &&
           (at[16] | at[17] | at[18] | at[20] | at[21] | at[22]) == 0;
}

void CheckRaw(const Image& image, const Bytes& content, const ImageBaseInfo& said) {
    const ImageInfo& info = *image->GetImageInfo();
    Require(info.width == said.width && info.height == said.height && info.pixelFormat == said.format);
    const std::size_t held = std::min<std::size_t>(content.size(), info.ImageDataSize());
    Require(said.bigEndian != 0 || held == 0 ||
            std::memcmp(image->GetImageBuff(), content.data(), held) == 0);
}

void CheckSaved(const Image& image, const std::string& path, const std::shared_ptr<IImagePool>& pool) {
    const ImageInfo& info = *image->GetImageInfo();
    std::memset(image->GetImageBuff(), 0x5A, info.ImageDataSize()); // a short file leaves the rest as it is
    Require(SaveLoadImage::Save2File(image, path, 1) == 0);
    const std::string described = ImageFileName(path).WithDescription(info);
    const auto again = SaveLoadImage::LoadFromFile(described, nullptr, pool);
    ::unlink(described.c_str());
    Require(again != nullptr && again->GetImageInfo()->ImageDataSize() == info.ImageDataSize());
    Require(std::memcmp(again->GetImageBuff(), image->GetImageBuff(), info.ImageDataSize()) == 0);
}

// Every operation reads all pixels; their memory ends where the image does.
void Work(const ImageInfo& info, FuzzInput& in, const std::shared_ptr<IImagePool>& pool) {
    Bytes pixels(info.ImageDataSize(), 0x35);
    const auto image =
        SaveLoadImage::WrapFromBuffer(pixels.data(), info.width, info.height,
                                      static_cast<PixelFormatValue>(info.pixelFormat), info.paddingX);
    if (image == nullptr)
        return;
    const ROIRect roi{in.Take(), in.Take(), in.Take(), in.Take()};
    static_cast<void>(image->Unpack(pool));
    static_cast<void>(image->Unpack2Image8(in.Take(), pool));
    static_cast<void>(image->Map2RGB8(in.Take(), in.Take(), in.Take<std::uint16_t>(), pool));
    static_cast<void>(image->Shift(in.Take() % 16, pool));
    static_cast<void>(image->Split(0, pool));
    static_cast<void>(image->CreateHistogram(&roi, 0));
    static_cast<void>(
        image->CreateProfile(in.Take(), static_cast<ProfileType>(in.Take() & 1), in.Take() & 1));
    static_cast<void>(image->Copy(&roi, pool));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Test::TempDir directory;
    const Silence silence;
    FuzzInput in(data, size);
    FuzzInput choices = in; // the same bytes once more
    const unsigned options = in.Take();
    ImageBaseInfo base;
    base.width = in.Take();
    base.height = in.Take();
    base.format = in.OneOf(Formats);
    base.paddingX = in.Take() % 8U;
    base.bigEndian = (options & 1) != 0;
    std::string name = in.Line().substr(0, 200);
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == '\0'; }, '_');
    const std::string path = directory / ("_" + name);
    const Bytes content = in.Bytes(65536);
    const ImageFileName parsed(path);
    const ImageBaseInfo* beside = (options & 2) != 0 ? &base : nullptr;
    const ImageBaseInfo said = parsed.Describe(beside);
    // A name may claim gigabytes: nothing but this target's time is at stake.
    if (std::uint64_t{said.width} * said.height > 1U << 16 || said.height > 4096 || said.paddingX > 4096 ||
        (parsed.IsPicture() && !IsSmallPicture(content)))
        return 0;
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(1U << 26, "fuzz");
    if (!WriteWholeFile(path, content.data(), content.size()))
        return 0;
    const Image image = SaveLoadImage::LoadFromFile(path, beside, pool);
    ::unlink(path.c_str());
    if (image != nullptr) {
        if (!parsed.IsPicture())
            CheckRaw(image, content, said);
        Work(*image->GetImageInfo(), choices, pool);
        CheckSaved(image, directory / "y.raw", pool);
    }
    if (!content.empty() && beside != nullptr)
        if (const Image same = SaveLoadImage::LoadFromBuffer(content.data(), content.size(), beside, pool))
            CheckRaw(same, content, base);
    return 0;
}
