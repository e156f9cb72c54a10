// The entry points of the test producer.
#include "Entry.h"

#include <algorithm>
#include <cstring>

using namespace TestProducer;

namespace {

std::string SystemText(std::int32_t command) {
    static const char* const texts[] = {"test-producer", "Vendor of tests", "Test producer", "",
                                        "Custom",        "test.cti",        "/test.cti",     "Test producer"};
    return command == TL_INFO_VERSION ? TheSettings().Text("producer.version", "3.1")
                                      : std::string(texts[command]);
}

GC_ERROR SystemInfo(std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size) {
    if (command >= TL_INFO_ID && command <= TL_INFO_DISPLAYNAME)
        return GiveText(SystemText(command), type, buffer, size);
    if (command == TL_INFO_GENTL_VER_MAJOR || command == TL_INFO_GENTL_VER_MINOR)
        return GiveNumber(command == TL_INFO_GENTL_VER_MAJOR ? 1 : 5, INFO_DATATYPE_UINT32, type, buffer,
                          size);
    return GC_ERR_NOT_IMPLEMENTED;
}

std::uint32_t CameraCount() {
    return static_cast<std::uint32_t>(TheSettings().Number("cameras", 2));
}

Camera* CameraAt(const char* id) {
    for (std::uint32_t i = 0; i < std::min(2U, CameraCount()); ++i)
        if (TheSystem().cameras[i]->Id() == id)
            return TheSystem().cameras[i].get();
    return nullptr;
}

Event* EventOf(EVENT_HANDLE handle) {
    for (const auto& camera : TheSystem().cameras)
        for (const auto& [type, event] : camera->events)
            if (event.get() == handle)
                return event.get();
    return nullptr;
}

std::mutex g_events; // registering and looking up

} // namespace

// ---- library and system ----

EXPORT GCInitLib() {
    TheSettings().Load();
    ENTRY(GCInitLib);
    if (TheSystem().initialised)
        return Fail(GC_ERR_RESOURCE_IN_USE);
    TheSystem().Reset();
    TheSystem().initialised = true;
    return GC_ERR_SUCCESS;
}
EXPORT GCCloseLib() {
    ENTRY(GCCloseLib);
    TheSystem().initialised = false;
    return GC_ERR_SUCCESS;
}
EXPORT GCGetInfo(std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size) {
    ENTRY(GCGetInfo);
    return SystemInfo(command, type, buffer, size);
}
EXPORT GCGetLastError(GC_ERROR* code, char* text, std::size_t* size) {
    *code = LastCode();
    return GiveText("the test wants it so", nullptr, text, size);
}
EXPORT TLOpen(TL_HANDLE* handle) {
    ENTRY(TLOpen);
    if (TheSystem().open)
        return Fail(GC_ERR_RESOURCE_IN_USE);
    TheSystem().open = true;
    *handle = &TheSystem();
    return GC_ERR_SUCCESS;
}
EXPORT TLClose(TL_HANDLE) {
    ENTRY(TLClose);
    TheSystem().open = false;
    return GC_ERR_SUCCESS;
}
EXPORT TLGetInfo(TL_HANDLE, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size) {
    ENTRY(TLGetInfo);
    return SystemInfo(command, type, buffer, size);
}
EXPORT TLUpdateInterfaceList(TL_HANDLE, bool8_t* changed, std::uint64_t) {
    ENTRY(TLUpdateInterfaceList);
    if (changed != nullptr)
        *changed = 0;
    return GC_ERR_SUCCESS;
}
EXPORT TLGetNumInterfaces(TL_HANDLE, std::uint32_t* count) {
    ENTRY(TLGetNumInterfaces);
    *count = static_cast<std::uint32_t>(TheSettings().Number("interfaces", 1));
    return GC_ERR_SUCCESS;
}
EXPORT TLGetInterfaceID(TL_HANDLE, std::uint32_t index, char* id, std::size_t* size) {
    ENTRY(TLGetInterfaceID);
    return index < 2 ? GiveText("interface-" + std::to_string(index), nullptr, id, size)
                     : Fail(GC_ERR_INVALID_INDEX);
}
EXPORT TLGetInterfaceInfo(TL_HANDLE, const char* id, std::int32_t command, std::int32_t* type, void* buffer,
                          std::size_t* size) {
    ENTRY(TLGetInterfaceInfo);
    const std::string text = command == INTERFACE_INFO_DISPLAYNAME ? "Test " + std::string(id) : id;
    return GiveText(text, type, buffer, size);
}
EXPORT TLOpenInterface(TL_HANDLE, const char* id, IF_HANDLE* handle) {
    ENTRY(TLOpenInterface);
    Interface& interface = std::string(id) == "interface-0" ? TheSystem().interface : TheSystem().second;
    if (interface.open)
        return Fail(GC_ERR_RESOURCE_IN_USE);
    interface.open = true;
    *handle = &interface;
    return GC_ERR_SUCCESS;
}

// ---- interface ----

EXPORT IFClose(IF_HANDLE handle) {
    ENTRY(IFClose);
    NEED(interface, As<Interface>(handle));
    interface->open = false;
    return GC_ERR_SUCCESS;
}
EXPORT IFGetInfo(IF_HANDLE, std::int32_t, std::int32_t*, void*, std::size_t*) {
    ENTRY(IFGetInfo);
    return GC_ERR_NOT_IMPLEMENTED;
}
EXPORT IFGetNumDevices(IF_HANDLE handle, std::uint32_t* count) {
    ENTRY(IFGetNumDevices);
    NEED(interface, As<Interface>(handle));
    *count = interface == &TheSystem().second
                 ? 0
                 : static_cast<std::uint32_t>(TheSettings().Number("devices.claimed", CameraCount()));
    return GC_ERR_SUCCESS;
}
EXPORT IFGetDeviceID(IF_HANDLE, std::uint32_t index, char* id, std::size_t* size) {
    ENTRY(IFGetDeviceID);
    return index < std::min(2U, CameraCount()) ? GiveText(TheSystem().cameras[index]->Id(), nullptr, id, size)
                                               : Fail(GC_ERR_INVALID_INDEX);
}
EXPORT IFUpdateDeviceList(IF_HANDLE handle, bool8_t* changed, std::uint64_t) {
    ENTRY(IFUpdateDeviceList);
    NEED(interface, As<Interface>(handle));
    if (changed != nullptr)
        *changed = 0;
    return GC_ERR_SUCCESS;
}
EXPORT IFGetDeviceInfo(IF_HANDLE, const char* id, std::int32_t command, std::int32_t* type, void* buffer,
                       std::size_t* size) {
    ENTRY(IFGetDeviceInfo);
    const Camera* const camera = CameraAt(id);
    if (camera == nullptr)
        return Fail(GC_ERR_INVALID_ID);
    const std::string text = camera->InfoText(command);
    return text.empty() ? Fail(GC_ERR_NOT_AVAILABLE) : GiveText(text, type, buffer, size);
}
EXPORT IFOpenDevice(IF_HANDLE, const char* id, std::int32_t access, DEV_HANDLE* handle) {
    ENTRY(IFOpenDevice);
    const std::string refused = TheSettings().Text("access.refused");
    Camera* const camera = CameraAt(id);
    if (camera == nullptr)
        return Fail(GC_ERR_INVALID_ID);
    if (camera->open)
        return Fail(GC_ERR_RESOURCE_IN_USE);
    if (refused.find(std::to_string(access)) != std::string::npos)
        return Fail(GC_ERR_NOT_IMPLEMENTED);
    camera->open = true;
    camera->Describe();
    TheSettings().Set("access.taken", std::to_string(access));
    *handle = camera;
    return GC_ERR_SUCCESS;
}

// ---- device ----

EXPORT DevGetPort(DEV_HANDLE handle, PORT_HANDLE* port) {
    ENTRY(DevGetPort);
    NEED(camera, As<Camera>(handle));
    *port = &camera->port;
    return GC_ERR_SUCCESS;
}
EXPORT DevGetNumDataStreams(DEV_HANDLE, std::uint32_t* count) {
    ENTRY(DevGetNumDataStreams);
    *count = static_cast<std::uint32_t>(TheSettings().Number("streams", 1));
    return GC_ERR_SUCCESS;
}
EXPORT DevGetDataStreamID(DEV_HANDLE, std::uint32_t index, char* id, std::size_t* size) {
    ENTRY(DevGetDataStreamID);
    return GiveText("stream-" + std::to_string(index), nullptr, id, size);
}
EXPORT DevOpenDataStream(DEV_HANDLE handle, const char*, DS_HANDLE* stream) {
    ENTRY(DevOpenDataStream);
    NEED(camera, As<Camera>(handle));
    if (camera->stream)
        return Fail(GC_ERR_RESOURCE_IN_USE);
    auto made = std::make_unique<Stream>(*camera);
    *stream = made.get();
    const std::lock_guard<std::mutex> lock(TheSystem().mutex);
    camera->stream = std::move(made);
    return GC_ERR_SUCCESS;
}
EXPORT DevGetInfo(DEV_HANDLE, std::int32_t, std::int32_t*, void*, std::size_t*) {
    ENTRY(DevGetInfo);
    return GC_ERR_NOT_IMPLEMENTED;
}
EXPORT DevClose(DEV_HANDLE handle) {
    ENTRY(DevClose);
    NEED(camera, As<Camera>(handle));
    TakeStream(*camera).reset();
    camera->open = false;
    camera->acquiring = false;
    const std::lock_guard<std::mutex> lock(g_events);
    camera->events.clear();
    return GC_ERR_SUCCESS;
}

// ---- ports ----

EXPORT GCReadPort(PORT_HANDLE handle, std::uint64_t address, void* buffer, std::size_t* size) {
    ENTRY(GCReadPort);
    NEED(port, As<Camera::Port>(handle));
    return port->camera.Read(address, buffer, size);
}
EXPORT GCWritePort(PORT_HANDLE handle, std::uint64_t address, const void* buffer, std::size_t* size) {
    ENTRY(GCWritePort);
    NEED(port, As<Camera::Port>(handle));
    return port->camera.Write(address, buffer, size);
}
EXPORT GCGetPortURL(PORT_HANDLE, char*, std::size_t*) {
    ENTRY(GCGetPortURL);
    return GC_ERR_NOT_IMPLEMENTED;
}
EXPORT GCGetPortInfo(PORT_HANDLE, std::int32_t command, std::int32_t* type, void* buffer, std::size_t* size) {
    ENTRY(GCGetPortInfo);
    return command == PORT_INFO_PORTNAME
               ? GiveText(TheSettings().Text("portname", "Device"), type, buffer, size)
               : GC_ERR_NOT_IMPLEMENTED;
}
EXPORT GCGetNumPortURLs(PORT_HANDLE handle, std::uint32_t* count) {
    ENTRY(GCGetNumPortURLs);
    *count = 0;
    if (As<Camera::Port>(handle) == nullptr)
        return GC_ERR_SUCCESS;
    for (*count = 1; !TheSettings().Text("url." + std::to_string(*count)).empty();)
        ++*count;
    return GC_ERR_SUCCESS;
}
EXPORT GCGetPortURLInfo(PORT_HANDLE handle, std::uint32_t index, std::int32_t command, std::int32_t* type,
                        void* buffer, std::size_t* size) {
    ENTRY(GCGetPortURLInfo);
    NEED(port, As<Camera::Port>(handle));
    if (command != URL_INFO_URL)
        return GC_ERR_NOT_AVAILABLE;
    char url[100];
    std::snprintf(url, sizeof(url), "Local:camera.xml;%X;%zX?SchemaVersion=1.1.0",
                  static_cast<unsigned>(Description), port->camera.description.size());
    return GiveText(TheSettings().Text("url." + std::to_string(index), url), type, buffer, size);
}
EXPORT GCReadPortStacked(PORT_HANDLE, PORT_REGISTER_STACK_ENTRY*, std::size_t*) {
    ENTRY(GCReadPortStacked);
    return GC_ERR_NOT_IMPLEMENTED;
}
EXPORT GCWritePortStacked(PORT_HANDLE, PORT_REGISTER_STACK_ENTRY*, std::size_t*) {
    ENTRY(GCWritePortStacked);
    return GC_ERR_NOT_IMPLEMENTED;
}

// ---- events ----

EXPORT GCRegisterEvent(EVENTSRC_HANDLE source, std::int32_t type, EVENT_HANDLE* handle) {
    ENTRY(GCRegisterEvent);
    if (Stream* const stream = As<Stream>(source)) {
        if (type != EVENT_NEW_BUFFER)
            return GC_ERR_NOT_IMPLEMENTED;
        const std::lock_guard<std::mutex> lock(stream->mutex);
        if (stream->registered)
            return Fail(GC_ERR_RESOURCE_IN_USE);
        stream->registered = true;
        stream->kills = 0;
        *handle = stream;
        return GC_ERR_SUCCESS;
    }
    NEED(camera, As<Camera>(source));
    if (TheSettings().Number("events") == 0)
        return GC_ERR_INVALID_PARAMETER; // as some do
    const std::lock_guard<std::mutex> lock(g_events);
    auto& event = camera->events[type];
    event = std::make_unique<Event>();
    event->type = type;
    *handle = event.get();
    return GC_ERR_SUCCESS;
}
EXPORT GCUnregisterEvent(EVENTSRC_HANDLE source, std::int32_t type) {
    ENTRY(GCUnregisterEvent);
    if (Stream* const stream = As<Stream>(source)) {
        const std::lock_guard<std::mutex> lock(stream->mutex);
        stream->registered = false;
        stream->changed.notify_all();
        return GC_ERR_SUCCESS;
    }
    NEED(camera, As<Camera>(source));
    const std::lock_guard<std::mutex> lock(g_events);
    camera->events.erase(type);
    return GC_ERR_SUCCESS;
}
EXPORT EventGetData(EVENT_HANDLE handle, void* buffer, std::size_t* size, std::uint64_t timeoutMs) {
    ENTRY(EventGetData);
    if (Stream* const stream = As<Stream>(handle)) {
        *size = sizeof(EVENT_NEW_BUFFER_DATA);
        return stream->Wait(*static_cast<EVENT_NEW_BUFFER_DATA*>(buffer), timeoutMs);
    }
    Event* event = nullptr;
    {
        const std::lock_guard<std::mutex> lock(g_events);
        event = EventOf(handle);
    }
    if (event == nullptr)
        return GC_ERR_INVALID_HANDLE;
    std::unique_lock<std::mutex> lock(event->mutex);
    if (!event->changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                 [&] { return !event->queue.empty() || event->kills > 0; }))
        return GC_ERR_TIMEOUT;
    if (event->kills > 0) {
        --event->kills;
        return GC_ERR_ABORT;
    }
    // id, NUL, value, NUL: of this producer's own making
    std::string bytes = event->queue.front().first + '\0' + event->queue.front().second + '\0';
    event->queue.pop_front();
    *size = std::min(*size, bytes.size());
    std::memcpy(buffer, bytes.data(), *size);
    return GC_ERR_SUCCESS;
}
EXPORT EventGetDataInfo(EVENT_HANDLE handle, const void* data, std::size_t, std::int32_t command,
                        std::int32_t* type, void* buffer, std::size_t* size) {
    ENTRY(EventGetDataInfo);
    const std::string id = static_cast<const char*>(data);
    if (command == EVENT_DATA_VALUE)
        return GiveText(static_cast<const char*>(data) + id.size() + 1, type, buffer, size);
    Event* event = nullptr;
    {
        const std::lock_guard<std::mutex> lock(g_events);
        event = EventOf(handle);
    }
    if (event != nullptr && event->type == EVENT_ERROR)
        return GiveNumber(static_cast<std::uint64_t>(std::stoll(id)), INFO_DATATYPE_INT32, type, buffer,
                          size);
    return GiveText(id, type, buffer, size);
}
EXPORT EventGetInfo(EVENT_HANDLE, std::int32_t, std::int32_t*, void*, std::size_t*) {
    ENTRY(EventGetInfo);
    return GC_ERR_NOT_IMPLEMENTED;
}
EXPORT EventFlush(EVENT_HANDLE) {
    ENTRY(EventFlush);
    return GC_ERR_NOT_IMPLEMENTED;
}
EXPORT EventKill(EVENT_HANDLE handle) {
    ENTRY(EventKill);
    if (Stream* const stream = As<Stream>(handle)) {
        const std::lock_guard<std::mutex> lock(stream->mutex);
        ++stream->kills;
        stream->changed.notify_all();
        return GC_ERR_SUCCESS;
    }
    const std::lock_guard<std::mutex> eventsLock(g_events);
    NEED(event, EventOf(handle));
    const std::lock_guard<std::mutex> lock(event->mutex);
    ++event->kills;
    event->changed.notify_all();
    return GC_ERR_SUCCESS;
}
