// Sequences of C calls over the virtual cameras: a byte chooses the function, the next ones its arguments
// among live handles, destroyed ones, foreign pointers and null. Whatever the order, nothing may crash, hang
// or leak, and when everything is destroyed the tables of handles are empty.
#include "FuzzInput.h"
#include "capi/Handles.h"
#include "vx3/genicam/IGenIObj.h"

#include <array>
#include <atomic>
#include <chrono>
#include <thread>
#include <tuple>

using namespace VX3;
using namespace VX3::Fuzz;

namespace {

Manager* g_manager;
Device* g_device; // of the virtual interface: making one takes half a second
std::atomic<unsigned> g_callbackDoes;

// Handles that calls gave, destroyed ones included: a stale one is as good as any.
template <typename Record>
std::vector<Record*> g_handles;

alignas(16) std::array<unsigned char, 64> g_foreign;

template <typename T>
T* Buffer() {
    static std::array<T, 16400> buffer{};
    return buffer.data();
}

template <typename T>
T Draw(FuzzInput& in) {
    using Plain = std::remove_pointer_t<T>;
    if constexpr (std::is_same_v<T, Manager*> || std::is_same_v<T, Device*> ||
                  std::is_same_v<T, SubDevice*> || std::is_same_v<T, Image*>) {
        const auto& all = g_handles<Plain>;
        const unsigned choice = in.Take();
        if (choice >= 0xF8 || all.empty())
            return (choice & 1) != 0 ? reinterpret_cast<T>(g_foreign.data()) : nullptr;
        return all[all.size() - 1 - choice % all.size()];
    } else if constexpr (std::is_same_v<T, StreamImageCallback>) {
        g_callbackDoes = in.Take();
        return [](Image* image, SubDevice* camera, unsigned int stream, unsigned int, void*) {
            const ImageDescription description = Image_GetImageInfo(image);
            if (const unsigned char* pixels = Image_GetImageBuff(image); description.dataSize != 0)
                Touch(pixels + description.dataSize - 1);
            const unsigned does = g_callbackDoes % 8;
            if (does < 2)
                does == 0 ? SubDevice_StopStreamByIndex(camera, stream)
                          : SubDevice_CloseStreamByIndex(camera, stream);
            else if (does < 4)
                does == 2 ? static_cast<void>(SubDevice_DisConnect(camera)) : SubDevice_Destory(camera);
            Image_Recycle(image);
        };
    } else if constexpr (std::is_same_v<T, const char*>) {
        return in.OneOf(std::array<T, 12>{"Width", "FrameTime", "PixelFormat", "AcquisitionStart",
                                          "DeviceVendorName", "AcquisitionFrameRate", "TLParamsLocked",
                                          "AcquisitionMode", "HeightMax", "Mono8", "Absent", nullptr});
    } else if constexpr (std::is_pointer_v<T>) {
        if constexpr (std::is_void_v<Plain>)
            return nullptr;
        else
            return in.Take() >= 0xF8 ? nullptr : Buffer<std::remove_const_t<Plain>>();
    } else if constexpr (std::is_same_v<T, bool>) {
        return (in.Take() & 1) != 0;
    } else if constexpr (std::is_same_v<T, unsigned int> || std::is_same_v<T, std::size_t>) {
        return in.OneOf(std::array{0U, 0U, 0U, 1U, 2U, 7U, 300U, 16384U});
    } else {
        return in.Take<T>();
    }
}

template <typename Result, typename... Arguments>
void Call(Result (*function)(Arguments...), FuzzInput& in) {
    const std::tuple<Arguments...> arguments{Draw<Arguments>(in)...}; // in order
    if constexpr (std::is_pointer_v<Result> && std::is_class_v<std::remove_pointer_t<Result>>) {
        if (Result handle = std::apply(function, arguments))
            g_handles<std::remove_pointer_t<Result>>.push_back(handle);
    } else {
        static_cast<void>(std::apply(function, arguments));
    }
}

template <auto... Functions>
void CallOneOf(FuzzInput& in) {
    static constexpr void (*Calls[])(FuzzInput&) = {[](FuzzInput& input) { Call(Functions, input); }...};
    in.OneOf(Calls)(in);
}

// Bounded or tamed forms of what would wait, fill disks or send packets.
Manager* CreateManager(bool none) {
    return Manager_Create(none ? 0 : VX3_FAMILY_VIRTUAL);
}
Device* AbsentDevice(Manager* manager, bool byName) {
    return byName ? Manager_GetDeviceByName(manager, "Absent")
                  : Manager_GetDeviceByIndex(manager, 7, VX3_FAMILY_ALL);
}
Device* SameDevice() {
    auto record = std::make_shared<Device>();
    record->device = CApi::PinDevice(g_device);
    return CApi::GetTables().devices.Add(std::move(record));
}
void DestroyDevice(Device* device) {
    if (device != g_device)
        Device_Destory(device);
}
Image* Snap(SubDevice* camera, unsigned int index, bool wait) {
    return SubDevice_SnapA(camera, index, wait ? 3 : 0);
}
int Save(Image* image, unsigned int mode) {
    return Save2File(image, "/dev/null", mode);
}
int Nodes(SubDevice* camera, bool room, unsigned int* count) {
    std::array<NodeRecord, 32> records{};
    const int result = GetNodes(camera, records.data(), room ? 32 : 3, count);
    Require(result != 0 || *count <= records.size());
    FreeNodes(records.data(), records.size());
    return result;
}

SubDevice* Find(Manager* manager, const char* text) {
    return Manager_FindSubDevice(manager, text, 3);
}
int Wait(Device* device, bool more) {
    return Device_WaitForRound(device, more ? 2 : 1, 3);
}
int Convert(Image* image, unsigned int room, size_t* length) {
    constexpr std::array<uint32_t, 4> Formats{0x01080001, 0x02180014, 0x02180015, 0x01100003};
    const int result = Image_ConvertToBuffer(image, Formats[room % 4], Buffer<unsigned char>(), room, length);
    Require(result != 0 || length == nullptr || *length <= room);
    return result;
}

#define GETTERS(prefix) prefix##_Int, prefix##_Double, prefix##_Bool, prefix##_Chars, prefix##_Buffer
#define SETTERS(prefix) GETTERS(prefix), prefix##_Command
#define LIMITS(type) GetNodeMaxValue_##type, GetNodeMinValue_##type, GetNodeIncValue_##type
// The road to images; three times in the table, so that it is found early.
#define ROAD                                                                                                 \
    Device_GetSubDeviceByIndex, SubDevice_Connect, SubDevice_OpenStreamByIndex,                              \
        SubDevice_StartStreamByIndex, Snap, Image_GetImageInfo, Image_GetImageBuff, Save,                    \
        SubDevice_StopStreamByIndex, SubDevice_CloseStreamByIndex

void CallAny(FuzzInput& in) {
    CallOneOf<ROAD, ROAD, ROAD, SDKVersion, SDKBuildVersion, CreateManager, Manager_Destory,
              Manager_DeviceTypeSupportedCount, Manager_DeviceTypeSupportedByIndex, Manager_EnumDevices,
              Manager_GetDevices, AbsentDevice, Manager_DeviceName, SameDevice, DestroyDevice,
              Device_GetDeviceName, Device_Connect, Device_DisConnect, Device_GetSubDeviceCount,
              SubDevice_GetSubDeviceName, SubDevice_Destory, SubDevice_DisConnect, Remote_StartLocalStream,
              Remote_StopLocalStream, SubDevice_GetStreamStatisticsByIndex, Image_Recycle, Nodes, GetNodeType,
              GetNodeIsStreamable, GetNodeAccessMode, LIMITS(Int), LIMITS(Double), GETTERS(GetNodeValue),
              SETTERS(SetNodeValue), SETTERS(AutoSetNodeValue), SETTERS(SetNodeValueAllDev),
              SubDevice_GetXmlName, SubDevice_GetXmlDataSize, SubDevice_GetXmlData, Stream_GetXmlName,
              Stream_GetXmlDataSize, Stream_GetXmlData, GETTERS(Stream_GetNodeValue),
              SETTERS(Stream_SetNodeValue), SETTERS(Stream_AutoSetNodeValue),
              SETTERS(Stream_SetNodeValueAllDev), SDKStatusText, SDKLastFailure, Find, Wait, Convert,
              Device_FinishedRounds, Image_GetFrameInformation, GetNodeEntryCount, GetNodeEntry,
              GetNodeValue_Entry, SetNodeValue_Entry, SubDevice_ConnectMonitor, SetParamSyncEnabled,
              Stream_SetParamSyncEnabled>(in);
}

// Tiny frames as fast as they can be made.
void ResetCamera(SubDevice* camera) {
    SubDevice_DisConnect(camera);
    const std::uint32_t tiny[] = {16, 16, 0};
    const auto pinned = CApi::PinCamera(camera);
    auto* ports = dynamic_cast<IGenIObj*>(pinned.get());
    Require(ports != nullptr);
    for (unsigned int i = 0; i < 3; ++i)
        (void)ports->WritePort(0x01000000 + 4 * i, reinterpret_cast<const unsigned char*>(&tiny[i]), 4);
}

template <typename Record>
void DestroyAll(void (*destroy)(Record*)) {
    for (Record* handle : g_handles<Record>)
        destroy(handle);
    g_handles<Record>.clear();
    g_handles<Record>.shrink_to_fit();
}

void LetGo() {
    for (unsigned int i = 0; i < 2; ++i) {
        SubDevice* camera = Device_GetSubDeviceByIndex(g_device, i);
        ResetCamera(camera);
        SubDevice_Destory(camera);
    }
    DestroyAll(Image_Recycle);
    DestroyAll(SubDevice_Destory);
    DestroyAll(DestroyDevice);
    DestroyAll(Manager_Destory);
    SetParamSyncEnabled(false);
    Stream_SetParamSyncEnabled(false);
    const CApi::Tables& tables = CApi::GetTables();
    // A callback that closed its own stream may be on its last lines still.
    for (int i = 0; i < 2000 && !tables.images.All().empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    Require(tables.images.All().empty() && tables.subDevices.All().empty());
    Require(tables.devices.All().size() == 1 && tables.managers.All().size() == 1);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const Silence silence;
    g_manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    g_device = Manager_GetDeviceByIndex(g_manager, 0, VX3_FAMILY_ALL);
    Require(Device_GetSubDeviceCount(g_device) == 2);
    LetGo();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    FuzzInput in(data, size);
    g_handles<Device>.push_back(g_device);
    for (int calls = 0; !in.Empty() && calls < 100; ++calls)
        CallAny(in);
    LetGo();
    return 0;
}
