// A GenTL producer made for tests: one interface with two cameras, and every fault that a settings file
// beside it asks for. The settings of "x.cti" stand in "x.cti.ini", a "key=value" a line; they are read by
// GCInitLib, and TestProducerSet changes them while it runs.
//
//   fail.FUNCTION=CODE      that function answers the code     fail.FUNCTION.N=CODE  from its Nth call on
//   hang.FUNCTION=MS        ... takes that long, until "release" is set
//   url.N, portname         what the remote device's port says of its description
//   description=TEXT        instead of the built-in one (a path); pad=N zero bytes behind it
//   cameras, interfaces     how many are reported;  devices.claimed: the count that is claimed
//   payload, minimum        of the stream info;     frames.ms: between two frames, -1 at once
//   incomplete=N            every Nth frame is;     twice=N: every Nth buffer's event comes twice
//   pace.us=N               a frame every N us that is not filled, and no call is counted: for benchmarks
//   odd.type=1              numbers come as INT32 and booleans as 4 bytes
#pragma once

#include "platform/gentl/GenTL.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace TestProducer {

using namespace GenTL;

// ---- settings and counters ----

class Settings {
public:
    void Load();
    void Set(const std::string& key, const std::string& value);
    std::string Text(const std::string& key, const std::string& otherwise = "") const;
    long long Number(const std::string& key, long long otherwise = 0) const;
    // Counts a call of that function, hangs where asked to, and gives the code to fail with.
    GC_ERROR Enter(const char* function);
    long long Calls(const std::string& function) const;
    bool IsHanging() const;
    // Microseconds between two frames of a benchmark; 0: none is run.
    std::atomic<long long> pace{0};
    bool copying = false; // of a benchmark: no buffer is given back

private:
    mutable std::mutex mutex_;
    std::condition_variable released_;
    int hanging_ = 0; // calls, now
    std::map<std::string, std::string> values_;
    std::map<std::string, long long> calls_;
};

Settings& TheSettings();

// ---- modules ----

struct Module {
    virtual ~Module() = default;
};

struct Event {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::pair<std::string, std::string>> queue; // id and value
    int kills = 0;
    bool closed = false;
    std::int32_t type = 0;
};

struct Camera;

struct Buffer {
    unsigned char* memory = nullptr;
    std::vector<unsigned char> own;
    std::size_t size = 0;
    void* userPointer = nullptr;
    enum class Where { Consumer, Input, Output } where = Where::Consumer;
    std::uint64_t frame = 0;
    bool newData = false;
    bool incomplete = false;
    std::size_t filled = 0;
};

struct Stream final : Module {
    explicit Stream(Camera& of) : camera(of) {}
    ~Stream() override;

    GC_ERROR Announce(void* memory, std::size_t size, void* userPointer, BUFFER_HANDLE* handle);
    GC_ERROR Revoke(BUFFER_HANDLE handle, void** memory, void** userPointer);
    GC_ERROR Queue(BUFFER_HANDLE handle);
    GC_ERROR Flush(std::int32_t operation);
    GC_ERROR Start();
    GC_ERROR Stop();
    GC_ERROR Wait(EVENT_NEW_BUFFER_DATA& data, std::uint64_t timeoutMs);
    GC_ERROR Info(BUFFER_HANDLE handle, std::int32_t command, std::int32_t* type, void* buffer,
                  std::size_t* size);
    std::uint64_t PayloadSize() const;

    Camera& camera;
    std::mutex mutex;
    std::condition_variable changed;
    std::condition_variable beat; // of the engine
    std::list<std::unique_ptr<Buffer>> buffers;
    std::set<const void*> announced; // every address that ever was
    std::deque<Buffer*> input;
    std::deque<Buffer*> output;
    std::deque<EVENT_NEW_BUFFER_DATA> repeated; // to be told again, though the buffer may be gone by then
    bool running = false;
    bool registered = false;
    int kills = 0;
    std::uint64_t frames = 0;
    std::uint64_t underruns = 0;
    std::thread engine;

private:
    Buffer* Find(BUFFER_HANDLE handle);
    void Fill(Buffer& buffer);
    void Run();
    void RunPaced(std::unique_lock<std::mutex>& lock);
};

struct Camera final : Module {
    explicit Camera(int number);
    std::string Id() const;
    std::string InfoText(std::int32_t command) const;
    std::uint32_t Register(std::size_t address) const;
    GC_ERROR Read(std::uint64_t address, void* buffer, std::size_t* size);
    GC_ERROR Write(std::uint64_t address, const void* buffer, std::size_t* size);
    void Describe();

    const int number;
    struct Port final : Module {
        explicit Port(Camera& of) : camera(of) {}
        Camera& camera;
    } port{*this};
    mutable std::mutex mutex;
    std::vector<unsigned char> registers;
    std::string description;
    std::atomic<bool> acquiring{false};
    std::atomic<bool> plugged{true};
    bool open = false;
    std::unique_ptr<Stream> stream;
    std::map<std::int32_t, std::unique_ptr<Event>> events;
};

// Where registers lie; 4 bytes each, little endian.
enum Address : std::uint32_t {
    Width = 0x100,
    Height = 0x104,
    PixelFormat = 0x108,
    PayloadSize = 0x10C,
    AcquisitionStart = 0x110,
    AcquisitionStop = 0x114,
    TLParamsLocked = 0x118,
    Temperature = 0x11C,
    RegisterEnd = 0x200,
    Description = 0x10000
};

struct Interface final : Module {
    bool open = false;
};

struct System final : Module {
    bool initialised = false;
    bool open = false;
    Interface interface;
    Interface second;
    std::unique_ptr<Camera> cameras[2];
    std::mutex mutex; // which modules there are

    void Reset();
};

System& TheSystem();

template <typename T>
T* As(void* handle);

// ---- answers ----

GC_ERROR GiveText(const std::string& text, std::int32_t* type, void* buffer, std::size_t* size);
GC_ERROR GiveNumber(std::uint64_t value, std::int32_t kind, std::int32_t* type, void* buffer,
                    std::size_t* size);

} // namespace TestProducer

// For the tests that load the producer too.
extern "C" {
__attribute__((visibility("default"))) void TestProducerSet(const char* key, const char* value);
__attribute__((visibility("default"))) long long TestProducerCalls(const char* function);
// 1 when that memory was ever announced on the stream of camera 0.
__attribute__((visibility("default"))) int TestProducerAnnounced(const void* memory);
// Fires an event of that type on camera 0.
__attribute__((visibility("default"))) void TestProducerFire(int type, const char* id, const char* value);
}
