// One loaded producer: its entry points and its system module. Shared by everything that was made of it, so
// that it stays loaded while any of that lives; closed and unloaded with the last.
//
// Calls are made on threads of the producer's own (Ask), so that one that does not return costs its caller a
// bounded time; only the frame loop of a stream calls on the stream's thread.
#pragma once

#include "gentl/CallThreads.h"
#include "platform/gentl/GenTL.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Mutex.h"
#include "vx3/core/Status.h"
#include "vx3/gentl/Producers.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace VX3 {

class GenTLInterface;

class GenTLAPI {
public:
    explicit GenTLAPI(std::string file);
    ~GenTLAPI();
    GenTLAPI(const GenTLAPI&) = delete;
    GenTLAPI& operator=(const GenTLAPI&) = delete;

#define VX3_GENTL_MEMBER(name, parameters) GenTL::P##name p##name = nullptr;
    VX3_GENTL_FUNCTIONS(VX3_GENTL_MEMBER)
    void* library = nullptr;
    GenTL::TL_HANDLE transportHandle = nullptr;
    const std::string path;
    // Null where the producer does not have them.
    VX3_GENTL_LATER_FUNCTIONS(VX3_GENTL_MEMBER)
#undef VX3_GENTL_MEMBER

    // The job that loads it.
    std::shared_ptr<CallThreads::Task> loading;

    // Loads the library, initialises it and opens its system. Once, on a thread of its own.
    void Load() VX3_EXCLUDES(descriptionMutex_);
    // Who it says it is, or why it is not used. `loaded`: neither is known before.
    GenTLProducer Description(bool& loaded) const VX3_EXCLUDES(descriptionMutex_);
    // Resolves the entry points; the first that is missing, or null.
    const char* LoadFunctionPtr();
    // The file's name without its folder.
    std::string Name() const {
        return path.substr(path.rfind('/') + 1);
    }

    // Calls Function, a member of this class, with a debug line before it. An exception is an error.
    template <auto Function, typename... Args>
    GenTL::GC_ERROR Call(Args... args) const {
        Announce(NameOf(Function));
        return CallQuietly<Function>(args...);
    }
    // The same without the line.
    template <auto Function, typename... Args>
    GenTL::GC_ERROR CallQuietly(Args... args) const {
        if (this->*Function == nullptr)
            return GenTL::GC_ERR_NOT_IMPLEMENTED;
        try {
            return (this->*Function)(args...);
        } catch (...) {
            return GenTL::GC_ERR_ERROR;
        }
    }
    // See CallThreads::Ask.
    template <typename Job>
    auto Ask(const char* what, std::chrono::milliseconds bound, Job job,
             std::function<void(decltype(job())&)> late = {},
             CallThreads::Overdue overdue = CallThreads::Overdue::Blocks) {
        return threads_->Ask<decltype(job())>(what, bound, std::move(job), std::move(late), overdue);
    }
    // For calls that give something back: made even while another is overdue, but then hardly waited for.
    // False when it has not succeeded in time.
    template <typename Job>
    bool Close(const char* what, Job job) {
        return Ask(what, std::chrono::milliseconds(IsHung() ? 500 : 5000), std::move(job), {},
                   CallThreads::Overdue::Tolerated)
                   .value_or(GenTL::GC_ERR_TIMEOUT) == GenTL::GC_ERR_SUCCESS;
    }
    CallThreads& Threads() {
        return *threads_;
    }
    bool IsHung() const {
        return threads_->IsHung();
    }

    // The code in words, with what the producer says about the calling thread's last failure.
    std::string Explain(GenTL::GC_ERROR code) const;
    // One line at level Error: what failed and why.
    void LogFailure(const char* what, GenTL::GC_ERROR code) const;

    // The open interface of that id, which all who want it share: a producer opens each only once.
    std::shared_ptr<GenTLInterface> OpenInterface(const std::shared_ptr<GenTLAPI>& self,
                                                  const std::string& id) VX3_EXCLUDES(interfacesMutex_);

    // Updates, counts and ids of the list of interfaces belong together; held while they are asked for.
    Mutex listMutex;
    // Keeps what the producer may still write to until it is unloaded.
    void Keep(std::shared_ptr<void> memory) VX3_EXCLUDES(descriptionMutex_);

private:
    void Announce(const char* function) const;
    template <typename Pointer>
    static const char* NameOf(Pointer GenTLAPI::*function);
    std::string LoadLibrary();
    std::string OpenSystem();
    std::string SystemText(std::int32_t command) const;

    bool initialised_ = false;
    std::unique_ptr<CallThreads> threads_;
    mutable Mutex descriptionMutex_;
    GenTLProducer description_ VX3_GUARDED_BY(descriptionMutex_);
    bool loaded_ VX3_GUARDED_BY(descriptionMutex_) = false;
    std::vector<std::shared_ptr<void>> kept_ VX3_GUARDED_BY(descriptionMutex_);
    Mutex interfacesMutex_;
    std::map<std::string, std::weak_ptr<GenTLInterface>> interfaces_ VX3_GUARDED_BY(interfacesMutex_);
};

// Members of one type are told apart by their value, so the table is asked only once a call site.
template <typename Pointer>
const char* GenTLAPI::NameOf(Pointer GenTLAPI::*function) {
#define VX3_GENTL_NAME(name, parameters)                                                                     \
    if constexpr (std::is_same_v<Pointer, GenTL::P##name>)                                                   \
        if (function == &GenTLAPI::p##name)                                                                  \
            return #name;
    VX3_GENTL_FUNCTIONS(VX3_GENTL_NAME)
    VX3_GENTL_LATER_FUNCTIONS(VX3_GENTL_NAME)
#undef VX3_GENTL_NAME
    return "";
}

} // namespace VX3
