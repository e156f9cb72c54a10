#include "grab/ImageWriter.h"

#include "base/ToolError.h"
#include "vx3/core/LastFailure.h"
#include "vx3/processing/SaveLoadImage.h"

#include <cstdio>
#include <utility>

namespace VX3::Tool {

namespace {

// Conversions of frames in flight: the worker makes a few per frame and gives them back at once.
constexpr unsigned long long ConversionPoolBytes = 64ULL * 1024 * 1024;

std::shared_ptr<IImagePool> ConversionPool() {
    return ImagePoolFactory::CreateRecycleImagePool(ConversionPoolBytes, "picture conversions");
}

std::uint64_t BytesOf(const IImage& image) {
    return image.GetImageInfo()->DataBuffNeeded();
}

} // namespace

ImageWriter::ImageWriter(const WriterOptions& options)
    : options_(options),
      maker_(options.picture, ConversionPool()),
      histogram_(ConversionPool()),
      worker_([this] { Work(); }) {}

ImageWriter::~ImageWriter() {
    Finish();
}

void ImageWriter::Push(std::shared_ptr<IImage> image, std::uint64_t index) {
    MutexLock lock(mutex_);
    const std::uint64_t bytes = BytesOf(*image);
    if (!queue_.empty() && waitingBytes_ + bytes > options_.queueBytes) {
        ++counts_.dropped;
        return;
    }
    waitingBytes_ += bytes;
    queue_.push_back({std::move(image), index});
    filled_.NotifyOne();
}

void ImageWriter::Finish() {
    {
        MutexLock lock(mutex_);
        finishing_ = true;
        filled_.NotifyOne();
    }
    if (worker_.joinable())
        worker_.join();
}

ImageWriter::Counts ImageWriter::GetCounts() const {
    MutexLock lock(mutex_);
    return counts_;
}

bool ImageWriter::Take(Item& item) {
    MutexLock lock(mutex_);
    while (queue_.empty()) {
        if (finishing_)
            return false;
        filled_.WaitFor(mutex_, std::chrono::milliseconds(500));
    }
    item = std::move(queue_.front());
    queue_.pop_front();
    waitingBytes_ -= BytesOf(*item.image);
    return true;
}

void ImageWriter::Work() {
    for (Item item; Take(item); item.image.reset()) {
        std::string failure;
        try {
            if (options_.histogram && !histogram_.Add(item.image))
                failure = "no histogram of this pixel format";
            if (options_.save)
                if (const std::string problem = Save(item); !problem.empty())
                    failure = problem;
        } catch (const std::exception& error) {
            failure = error.what();
        }
        Count(failure);
    }
}

void ImageWriter::Count(const std::string& failure) {
    MutexLock lock(mutex_);
    if (failure.empty()) {
        counts_.saved += options_.save ? 1 : 0;
        return;
    }
    if (++counts_.failed > 1)
        return;
    counts_.firstFailure = failure;
    Console::Instance().Say(Printable(failure)); // at once: the run may take hours yet
}

std::string ImageWriter::Save(const Item& item) {
    const std::shared_ptr<IImage> picture = maker_.Make(item.image);
    if (!picture)
        return "pixel format " + PixelFormat(item.image->GetImageInfo()->pixelFormat).ToString() +
               " cannot be shown this way; --format raw saves its bytes";
    const std::string path = PathOf(item);
    const auto status = static_cast<StatusCode>(SaveLoadImage::Save2File(picture, path, 1));
    if (!Failed(status))
        return {};
    const Failure last = LastFailure();
    return last.code == status && !last.text.empty() ? last.text : path + ": " + StatusWords(status);
}

std::string ImageWriter::PathOf(const Item& item) const {
    char number[24];
    std::snprintf(number, sizeof(number), "%06llu",
                  static_cast<unsigned long long>(options_.firstNumber + item.index - 1));
    const bool incomplete = item.image->GetImageInfo()->lostPackets != 0;
    return options_.directory + "/frame_" + number + (incomplete ? "_incomplete." : ".") +
           options_.picture.format;
}

} // namespace VX3::Tool
