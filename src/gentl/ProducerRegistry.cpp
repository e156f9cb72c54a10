#include "gentl/ProducerRegistry.h"

#include <chrono>
#include <filesystem>
#include <system_error>

namespace VX3 {

namespace {
constexpr std::chrono::milliseconds CloseBound(10000);
} // namespace

// Never destroyed: producers that clients hold may end after everything static has.
ProducerRegistry& ProducerRegistry::Instance() {
    static auto* const registry = new ProducerRegistry;
    return *registry;
}

ProducerRegistry::Entry& ProducerRegistry::EntryOf(const std::string& path) {
    for (Entry& entry : entries_)
        if (entry.path == path)
            return entry;
    entries_.emplace_back();
    entries_.back().path = path;
    return entries_.back();
}

std::shared_ptr<GenTLAPI> ProducerRegistry::Get(const std::string& file) {
    std::error_code error;
    const auto canonical = std::filesystem::canonical(file, error);
    const std::string path = error ? file : canonical.string();
    {
        const auto deadline = std::chrono::steady_clock::now() + CloseBound;
        MutexLock lock(mutex_);
        Entry& entry = EntryOf(path);
        while (entry.closing && std::chrono::steady_clock::now() < deadline)
            closed_.WaitUntil(mutex_, deadline);
        if (auto known = entry.producer.lock())
            return known;
        if (entry.closing)
            return nullptr;
        std::shared_ptr<GenTLAPI> producer(new GenTLAPI(file),
                                           [this, path](GenTLAPI* ending) { End(ending, path); });
        // The job has a share: a producer that does not return is never unloaded under its feet.
        producer->loading = producer->Threads().Begin("loading", [producer] { producer->Load(); });
        entry.producer = producer;
        entry.refused = GenTLProducer();
        return producer;
    }
}

void ProducerRegistry::End(GenTLAPI* producer, const std::string& path) {
    bool loaded = false;
    {
        MutexLock lock(mutex_);
        Entry& entry = EntryOf(path);
        entry.closing = true;
        entry.refused = producer->Description(loaded);
        if (entry.refused.failure.empty())
            entry.refused = GenTLProducer();
    }
    delete producer;
    MutexLock lock(mutex_);
    EntryOf(path).closing = false;
    closed_.NotifyAll();
}

std::vector<GenTLProducer> ProducerRegistry::Describe() const {
    std::vector<GenTLProducer> producers;
    MutexLock lock(mutex_);
    for (const Entry& entry : entries_) {
        bool loaded = false;
        const auto producer = entry.producer.lock();
        GenTLProducer description = producer ? producer->Description(loaded) : entry.refused;
        if (producer && !loaded) {
            description.path = producer->path;
            description.failure = "it does not return from being loaded";
        }
        if (!description.path.empty())
            producers.push_back(std::move(description));
    }
    return producers;
}

std::vector<GenTLProducer> GenTLProducers() {
    return ProducerRegistry::Instance().Describe();
}

} // namespace VX3
