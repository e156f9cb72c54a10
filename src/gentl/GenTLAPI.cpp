#include "gentl/GenTLAPI.h"

#include "gentl/GenTLInfo.h"
#include "gentl/GenTLInterface.h"
#include "gentl/ProducerFile.h"

#include <array>
#include <dlfcn.h>

namespace VX3 {

using std::chrono::milliseconds;

namespace {
constexpr milliseconds UnloadBound(5000);

// A producer that crashes takes the process with it: the last line of the log then names the call.
void AnnounceCall(const std::string& producer, const char* function) {
    CallThreads::NoteCall(function);
    VxLoggerLog(LogLevel::Debug, "SDK", "%s: %s", producer.c_str(), function);
}

// What a call that never returned may still touch.
void KeepForEver(const std::vector<std::shared_ptr<void>>& things) {
    static auto* const forEver = new std::vector<std::shared_ptr<void>>;
    static Mutex mutex;
    MutexLock lock(mutex);
    forEver->insert(forEver->end(), things.begin(), things.end());
}

} // namespace

GenTLAPI::GenTLAPI(std::string file)
    : path(std::move(file)), threads_(std::make_unique<CallThreads>(Name())) {}

// A producer that does not let itself be closed stays loaded: its threads may still run in its code. What
// closes it outlives this object then, so it has copies of what it needs.
GenTLAPI::~GenTLAPI() {
    if (library == nullptr)
        return;
    const auto close = [name = Name(), system = transportHandle, initialised = initialised_,
                        closeSystem = pTLClose, closeLibrary = pGCCloseLib] {
        if (system != nullptr) {
            AnnounceCall(name, "TLClose");
            (void)closeSystem(system);
        }
        if (initialised) {
            AnnounceCall(name, "GCCloseLib");
            (void)closeLibrary();
        }
        return true;
    };
    const auto closed = Ask("closing", UnloadBound, close);
    threads_.reset();
    if (!closed) {
        MutexLock lock(descriptionMutex_);
        KeepForEver(kept_);
        return;
    }
    CallThreads unloading(Name());
    unloading.Ask<int>("unloading", UnloadBound, [handle = library] { return ::dlclose(handle); });
}

void GenTLAPI::Load() {
    GenTLProducer description;
    description.path = path;
    description.failure = LoadLibrary();
    if (description.failure.empty())
        description.failure = OpenSystem();
    if (description.failure.empty()) {
        description.vendor = SystemText(GenTL::TL_INFO_VENDOR);
        description.model = SystemText(GenTL::TL_INFO_MODEL);
        description.version = SystemText(GenTL::TL_INFO_VERSION);
        description.tlType = SystemText(GenTL::TL_INFO_TLTYPE);
    } else {
        VxLoggerLog(LogLevel::Error, "SDK", "%s is not used: %s", path.c_str(), description.failure.c_str());
    }
    MutexLock lock(descriptionMutex_);
    description_ = std::move(description);
    loaded_ = true;
}

std::string GenTLAPI::SystemText(std::int32_t command) const {
    std::string text;
    (void)ReadText(text, [&](std::int32_t* type, void* buffer, std::size_t* size) {
        return Call<&GenTLAPI::pGCGetInfo>(command, type, buffer, size);
    });
    return CleanText(std::move(text));
}

GenTLProducer GenTLAPI::Description(bool& loaded) const {
    MutexLock lock(descriptionMutex_);
    loaded = loaded_;
    return description_;
}

void GenTLAPI::Keep(std::shared_ptr<void> memory) {
    MutexLock lock(descriptionMutex_);
    kept_.push_back(std::move(memory));
}

std::string GenTLAPI::LoadLibrary() {
    std::string reason = WhyNotLoadable(path);
    if (!reason.empty())
        return reason;
    VxLoggerLog(LogLevel::Debug, "SDK", "Ready to load library:%s...", path.c_str());
    CallThreads::NoteCall("dlopen");
    library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is this thread's own
    const char* error = library == nullptr ? ::dlerror() : nullptr;
    VxLoggerLog(LogLevel::Debug, "SDK", "load library with result %p", library);
    if (library == nullptr)
        return CleanText(error != nullptr ? error : "the loader refuses it");
    const char* missing = LoadFunctionPtr();
    return missing != nullptr ? std::string("it lacks the function ") + missing : std::string();
}

std::string GenTLAPI::OpenSystem() {
    const GenTL::GC_ERROR init = Call<&GenTLAPI::pGCInitLib>();
    // Another part of this process may have initialised it, and will close it.
    initialised_ = init == GenTL::GC_ERR_SUCCESS;
    if (!initialised_ && init != GenTL::GC_ERR_RESOURCE_IN_USE)
        return "GCInitLib failed: " + Explain(init);
    GenTL::TL_HANDLE system = nullptr;
    const GenTL::GC_ERROR open = Call<&GenTLAPI::pTLOpen>(&system);
    if (open != GenTL::GC_ERR_SUCCESS)
        return "TLOpen failed: " + Explain(open);
    if (system == nullptr)
        return "TLOpen gives no handle";
    transportHandle = system;
    return {};
}

const char* GenTLAPI::LoadFunctionPtr() {
    const char* missing = nullptr;
#define VX3_GENTL_RESOLVE(name, parameters)                                                                  \
    p##name = reinterpret_cast<GenTL::P##name>(::dlsym(library, #name));                                     \
    if (p##name == nullptr && missing == nullptr)                                                            \
        missing = #name;
    VX3_GENTL_FUNCTIONS(VX3_GENTL_RESOLVE)
#undef VX3_GENTL_RESOLVE
#define VX3_GENTL_RESOLVE(name, parameters)                                                                  \
    p##name = reinterpret_cast<GenTL::P##name>(::dlsym(library, #name));
    VX3_GENTL_LATER_FUNCTIONS(VX3_GENTL_RESOLVE)
#undef VX3_GENTL_RESOLVE
    return missing;
}

void GenTLAPI::Announce(const char* function) const {
    AnnounceCall(Name(), function);
}

std::string GenTLAPI::Explain(GenTL::GC_ERROR code) const {
    std::string text = StatusText(code);
    GenTL::GC_ERROR last = GenTL::GC_ERR_SUCCESS;
    std::array<char, 1024> words{};
    std::size_t size = words.size();
    if (CallQuietly<&GenTLAPI::pGCGetLastError>(&last, words.data(), &size) == GenTL::GC_ERR_SUCCESS &&
        last == code) {
        words.back() = '\0';
        if (words.front() != '\0')
            text += ": " + CleanText(words.data());
    }
    return text;
}

void GenTLAPI::LogFailure(const char* what, GenTL::GC_ERROR code) const {
    VxLoggerLog(LogLevel::Error, "SDK", "%s: %s failed: %s", Name().c_str(), what, Explain(code).c_str());
}

std::shared_ptr<GenTLInterface> GenTLAPI::OpenInterface(const std::shared_ptr<GenTLAPI>& self,
                                                        const std::string& id) {
    MutexLock lock(interfacesMutex_);
    if (auto open = interfaces_[id].lock())
        return open;
    auto opened = std::make_shared<GenTLInterface>(self, id);
    interfaces_[id] = opened;
    return opened;
}

} // namespace VX3
