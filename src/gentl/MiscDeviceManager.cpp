#include "gentl/MiscDeviceManager.h"

#include "gentl/GenTLInfo.h"
#include "gentl/GenTLInterfaceDev.h"
#include "gentl/ProducerFile.h"
#include "gentl/ProducerRegistry.h"
#include "vx3/core/Utilities.h"

#include <algorithm>

namespace VX3 {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr milliseconds FirstRoundBound(5000);
constexpr milliseconds RoundBound(2000);
constexpr std::uint64_t InterfaceListWaitMs = 1000;
constexpr std::uint32_t MaxInterfaces = 256;

using Interfaces = std::vector<std::shared_ptr<GenTLInterfaceDev>>;

// The interfaces that a producer reports now: known ones as they are, new ones opened. False when it cannot
// say.
bool ListInterfaces(const std::shared_ptr<GenTLAPI>& producer, const Interfaces& known, Interfaces& listed) {
    MutexLock lock(producer->listMutex);
    GenTL::bool8_t changed = 0;
    const auto system = producer->transportHandle;
    const auto updated =
        producer->Call<&GenTLAPI::pTLUpdateInterfaceList>(system, &changed, InterfaceListWaitMs);
    if (updated != GenTL::GC_ERR_SUCCESS && updated != GenTL::GC_ERR_TIMEOUT)
        producer->LogFailure("TLUpdateInterfaceList", updated);
    std::uint32_t count = 0;
    const auto counted = producer->Call<&GenTLAPI::pTLGetNumInterfaces>(system, &count);
    if (counted != GenTL::GC_ERR_SUCCESS) {
        producer->LogFailure("TLGetNumInterfaces", counted);
        return false;
    }
    for (std::uint32_t index = 0; index < std::min(count, MaxInterfaces); ++index) {
        std::string id;
        const auto code = ReadText(id, [&](std::int32_t*, void* buffer, std::size_t* size) {
            return producer->Call<&GenTLAPI::pTLGetInterfaceID>(system, index, static_cast<char*>(buffer),
                                                                size);
        });
        if (code != GenTL::GC_ERR_SUCCESS)
            producer->LogFailure("TLGetInterfaceID", code);
        if (code == GenTL::GC_ERR_INVALID_INDEX) // there are fewer than it claims
            break;
        if (code != GenTL::GC_ERR_SUCCESS)
            continue;
        const auto same = std::find_if(known.begin(), known.end(),
                                       [&](const auto& interface) { return interface->UniqueName() == id; });
        if (same != known.end()) {
            listed.push_back(*same);
            continue;
        }
        std::string name;
        (void)ReadText(name, [&](std::int32_t* type, void* buffer, std::size_t* size) {
            return producer->Call<&GenTLAPI::pTLGetInterfaceInfo>(
                system, id.c_str(), std::int32_t{GenTL::INTERFACE_INFO_DISPLAYNAME}, type, buffer, size);
        });
        const auto interface = std::make_shared<GenTLInterfaceDev>(
            producer, id.c_str(), CleanText(name.empty() ? id : name).c_str());
        (void)interface->Connect(); // it is open already; most have no features
        listed.push_back(interface);
    }
    return true;
}

} // namespace

// What one question for interfaces gives; written by its job, read when that has ended.
struct MiscDeviceManager::Round {
    Interfaces known;
    Interfaces listed;
    bool heard = false;
};

struct MiscDeviceManager::Producer {
    std::shared_ptr<GenTLAPI> api;
    Interfaces known;                        // as the manager lists them
    Interfaces listed;                       // as the producer has last told
    std::shared_ptr<CallThreads::Task> task; // of the round that runs, or null
    std::shared_ptr<Round> round;

    bool IsUsable() const;
    void BeginRound();
    void Collect();
};

MiscDeviceManager::MiscDeviceManager(const char* name) : MiscDeviceManager(name, DefaultFiles()) {}

MiscDeviceManager::MiscDeviceManager(const char* name, const std::vector<std::string>& producerFiles)
    : ManagerAbs(IntfDevType::Misc, name), firstRoundEnd_(steady_clock::now() + FirstRoundBound) {
    Load(producerFiles);
}

MiscDeviceManager::~MiscDeviceManager() = default;

std::vector<std::string> MiscDeviceManager::GetAllEsoFiles(const char* directory) {
    return ProducerFilesIn(directory != nullptr ? directory : "");
}

std::vector<std::string> MiscDeviceManager::DefaultFiles() {
    std::vector<std::string> files = GetAllEsoFiles((GetLibraryDirectory() + "extend").c_str());
    for (std::string& file : ProducerFilesOfEnvironment())
        files.push_back(std::move(file));
    return files;
}

void MiscDeviceManager::Load(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        auto api = ProducerRegistry::Instance().Get(file);
        const bool twice = std::any_of(producers_.begin(), producers_.end(),
                                       [&](const auto& producer) { return producer->api == api; });
        if (!api || twice)
            continue;
        producers_.push_back(std::make_shared<Producer>());
        producers_.back()->api = std::move(api);
    }
    // Other families are listed meanwhile, and one that takes long does not keep those that are loaded from
    // being asked.
    for (const auto& producer : producers_)
        producer->BeginRound();
}

// The registry remembers why.
void MiscDeviceManager::DropRefused() {
    producers_.erase(std::remove_if(producers_.begin(), producers_.end(),
                                    [](const auto& producer) {
                                        bool loaded = false;
                                        return !producer->api->Description(loaded).failure.empty() && loaded;
                                    }),
                     producers_.end());
}

// ---- enumeration ----

bool MiscDeviceManager::Producer::IsUsable() const {
    bool loaded = false;
    return api->Description(loaded).failure.empty() && loaded;
}

// One that was left alone for taking too long goes on by itself; its answer is taken when it has come.
void MiscDeviceManager::Producer::BeginRound() {
    Collect();
    if (task || api->IsHung())
        return;
    round = std::make_shared<Round>();
    round->known = known;
    const auto ask = [producer = api, current = round] {
        CallThreads::Join(producer->loading);
        bool loaded = false;
        if (producer->Description(loaded).failure.empty())
            current->heard = ListInterfaces(producer, current->known, current->listed);
    };
    task = api->Threads().Begin("listing interfaces", ask, {}, CallThreads::Overdue::Tolerated);
}

void MiscDeviceManager::Producer::Collect() {
    if (!task || !CallThreads::HasEnded(*task))
        return;
    if (round->heard)
        listed = std::move(round->listed);
    task.reset();
    round.reset();
}

StatusCode MiscDeviceManager::EnumDevices() {
    const auto deadline = firstRound_ ? firstRoundEnd_ : steady_clock::now() + RoundBound;
    if (!firstRound_) // the first began with loading
        for (const auto& producer : producers_)
            producer->BeginRound();
    firstRound_ = false;
    for (const auto& producer : producers_)
        producer->api->Threads().Wait(producer->api->loading, deadline);
    DropRefused();
    std::vector<std::shared_ptr<IDevice>> devices;
    for (const auto& producer : producers_) {
        if (producer->IsUsable())
            producer->api->Threads().Wait(producer->task, deadline);
        producer->Collect();
        if (!producer->api->IsHung()) // nothing behind one that hangs can be used
            devices.insert(devices.end(), producer->listed.begin(), producer->listed.end());
    }
    if (devices.empty())
        return 0;
    for (const auto& producer : producers_)
        producer->known = producer->listed;
    return UpdateDevices(devices, IntfDevType::All);
}

} // namespace VX3
