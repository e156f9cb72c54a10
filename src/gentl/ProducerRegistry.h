// The producers of this process: each file is loaded once, however many managers want it, and again only
// after the last of them let it go.
#pragma once

#include "gentl/GenTLAPI.h"
#include "vx3/core/Mutex.h"
#include "vx3/gentl/Producers.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class ProducerRegistry {
public:
    static ProducerRegistry& Instance();

    // The producer of that file, loaded or being loaded; a job on its threads loads it where it is new. Null
    // when an earlier one of that file does not end.
    std::shared_ptr<GenTLAPI> Get(const std::string& file) VX3_EXCLUDES(mutex_);
    std::vector<GenTLProducer> Describe() const VX3_EXCLUDES(mutex_);

private:
    struct Entry {
        std::string path; // without links, the same for the same file
        std::weak_ptr<GenTLAPI> producer;
        bool closing = false;
        GenTLProducer refused; // of one that was let go again
    };

    Entry& EntryOf(const std::string& path) VX3_REQUIRES(mutex_);
    void End(GenTLAPI* producer, const std::string& path) VX3_EXCLUDES(mutex_);

    mutable Mutex mutex_;
    CondVar closed_;
    std::list<Entry> entries_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
