// Puts pictures side by side on one sheet, half their size: contact_sheet SHEET.png PICTURE...
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>
#include <vx3/core/Status.h>
#include <vx3/image/IImage.h>
#include <vx3/processing/SaveLoadImage.h>

// Copies every second pixel of every second line of a BGR8 picture to (x, y) of a BGR8 sheet.
static void Place(const VX3::IImage& picture, VX3::IImage& sheet, unsigned int x, unsigned int y) {
    const VX3::ImageInfo& from = *picture.GetImageInfo();
    const VX3::ImageInfo& to = *sheet.GetImageInfo();
    for (unsigned int line = 0; line < from.height / 2 && y + line < to.height; ++line) {
        const unsigned char* source = picture.GetImageBuff(static_cast<int>(2 * line));
        unsigned char* target = sheet.GetImageBuff(static_cast<int>(y + line)) + 3 * static_cast<size_t>(x);
        const unsigned int width = std::min(from.width / 2, to.width - x);
        for (unsigned int column = 0; column < width; ++column)
            std::copy_n(source + 6 * static_cast<size_t>(column), 3,
                        target + 3 * static_cast<size_t>(column));
    }
}

int main(int argc, char** argv) {
    std::vector<std::shared_ptr<VX3::IImage>> pictures;
    unsigned int cellWidth = 0;
    unsigned int cellHeight = 0;
    for (int i = 2; i < argc; ++i) {
        std::shared_ptr<VX3::IImage> picture = VX3::SaveLoadImage::LoadFromFile(argv[i], nullptr, nullptr);
        if (!picture || picture->GetImageInfo()->pixelFormat != VX3::BGR8) {
            std::fprintf(stderr, "%s: not a colour or grey picture\n", argv[i]);
            continue;
        }
        cellWidth = std::max(cellWidth, picture->GetImageInfo()->width / 2 + 4);
        cellHeight = std::max(cellHeight, picture->GetImageInfo()->height / 2 + 4);
        pictures.push_back(std::move(picture));
    }
    if (pictures.empty()) {
        std::fprintf(stderr, "usage: contact_sheet SHEET.png PICTURE...\n");
        return 2;
    }
    const auto columns =
        static_cast<unsigned int>(std::ceil(std::sqrt(static_cast<double>(pictures.size()))));
    const auto rows = (static_cast<unsigned int>(pictures.size()) + columns - 1) / columns;
    VX3::ImageBaseInfo base;
    base.width = columns * cellWidth;
    base.height = rows * cellHeight;
    base.format = VX3::BGR8;
    const VX3::ImageInfo info = VX3::ImageInfoCreator::CreateImageInfo(base);
    const std::shared_ptr<VX3::IImage> sheet = VX3::ImageCreator::Create(&info, nullptr, nullptr);
    if (!sheet)
        return 1;
    std::fill_n(sheet->GetImageBuff(), info.ImageDataSize(), static_cast<unsigned char>(64));
    for (unsigned int i = 0; i < pictures.size(); ++i)
        Place(*pictures[i], *sheet, i % columns * cellWidth, i / columns * cellHeight);
    const auto status = static_cast<VX3::StatusCode>(VX3::SaveLoadImage::Save2File(sheet, argv[1], 0));
    if (VX3::Failed(status))
        std::fprintf(stderr, "%s: %s\n", argv[1], VX3::StatusText(status).c_str());
    return VX3::Failed(status) ? 1 : 0;
}
