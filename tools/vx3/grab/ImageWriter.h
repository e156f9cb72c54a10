// Saves frames on a thread of its own, so that a slow disk or codec never holds the stream's delivery. Frames
// wait in a queue bounded in bytes; what finds it full is not saved, and counted.
#pragma once

#include "grab/HistogramSum.h"
#include "grab/PictureMaker.h"
#include "vx3/core/Mutex.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <thread>

namespace VX3::Tool {

struct WriterOptions {
    std::string directory = ".";
    std::uint64_t firstNumber = 1; // of the files
    bool save = true;
    bool histogram = false;
    std::uint64_t queueBytes = 512ULL * 1024 * 1024;
    PictureOptions picture;
};

class ImageWriter {
public:
    struct Counts {
        std::uint64_t saved = 0;
        std::uint64_t dropped = 0; // found the queue full
        std::uint64_t failed = 0;  // could not be converted or written
        std::string firstFailure;
    };

    explicit ImageWriter(const WriterOptions& options);
    ~ImageWriter();
    ImageWriter(const ImageWriter&) = delete;
    ImageWriter& operator=(const ImageWriter&) = delete;

    // Any thread; never waits for the disk. `index`, from 1, numbers the file.
    void Push(std::shared_ptr<IImage> image, std::uint64_t index) VX3_EXCLUDES(mutex_);
    // Saves what waits and ends the thread.
    void Finish() VX3_EXCLUDES(mutex_);
    Counts GetCounts() const VX3_EXCLUDES(mutex_);
    // After Finish.
    const HistogramSum& Histogram() const { return histogram_; }

private:
    struct Item {
        std::shared_ptr<IImage> image;
        std::uint64_t index = 0;
    };

    void Work() VX3_EXCLUDES(mutex_);
    bool Take(Item& item) VX3_EXCLUDES(mutex_);
    void Count(const std::string& failure) VX3_EXCLUDES(mutex_);
    // Why it could not be saved; empty on success.
    std::string Save(const Item& item);
    std::string PathOf(const Item& item) const;

    const WriterOptions options_;
    const PictureMaker maker_;
    HistogramSum histogram_; // the worker's until Finish
    mutable Mutex mutex_;
    CondVar filled_;
    std::deque<Item> queue_ VX3_GUARDED_BY(mutex_);
    std::uint64_t waitingBytes_ VX3_GUARDED_BY(mutex_) = 0;
    bool finishing_ VX3_GUARDED_BY(mutex_) = false;
    Counts counts_ VX3_GUARDED_BY(mutex_);
    std::thread worker_;
};

} // namespace VX3::Tool
