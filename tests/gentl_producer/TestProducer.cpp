#include "Entry.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <sstream>

namespace TestProducer {

// ---- settings ----

Settings& TheSettings() {
    // A thread may hang in it when the process ends: then it stays.
    struct Holder {
        ~Holder() {
            if (!settings->IsHanging())
                delete settings;
        }
        Settings* settings = new Settings;
    };
    static const Holder holder;
    return *holder.settings;
}

void Settings::Load() {
    Dl_info info{};
    ::dladdr(reinterpret_cast<void*>(&TheSettings), &info);
    std::ifstream file(std::string(info.dli_fname) + ".ini");
    const std::lock_guard<std::mutex> lock(mutex_);
    values_.clear();
    for (std::string line; std::getline(file, line);) {
        const auto equals = line.find('=');
        if (equals != std::string::npos)
            values_[line.substr(0, equals)] = line.substr(equals + 1);
    }
    const auto paced = values_.find("pace.us");
    copying = values_.count("revoke.busy") != 0;
    pace = paced == values_.end() ? 0 : std::stoll(paced->second);
}

void Settings::Set(const std::string& key, const std::string& value) {
    const std::lock_guard<std::mutex> lock(mutex_);
    values_[key] = value;
    released_.notify_all();
}

std::string Settings::Text(const std::string& key, const std::string& otherwise) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto value = values_.find(key);
    return value == values_.end() ? otherwise : value->second;
}

long long Settings::Number(const std::string& key, long long otherwise) const {
    const std::string text = Text(key);
    return text.empty() ? otherwise : std::stoll(text);
}

GC_ERROR Settings::Enter(const char* function) {
    if (pace != 0)
        return GC_ERR_SUCCESS;
    std::unique_lock<std::mutex> lock(mutex_);
    const long long count = ++calls_[function];
    if (values_.empty())
        return GC_ERR_SUCCESS;
    const auto number = [&](const std::string& key) {
        const auto value = values_.find(key);
        return value == values_.end() || value->second.empty() ? 0LL : std::stoll(value->second);
    };
    const std::string name(function);
    if (const long long ms = number("hang." + name)) {
        ++hanging_;
        released_.wait_for(lock, std::chrono::milliseconds(ms),
                           [&] { return values_.count("release") != 0; });
        --hanging_;
    }
    if (const long long code = number("fail." + name))
        return static_cast<GC_ERROR>(code);
    for (long long n = 1; n <= std::min(count, 9LL); ++n)
        if (const long long code = number("fail." + name + "." + std::to_string(n)))
            return static_cast<GC_ERROR>(code);
    return GC_ERR_SUCCESS;
}

bool Settings::IsHanging() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return hanging_ > 0;
}

long long Settings::Calls(const std::string& function) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto calls = calls_.find(function);
    return calls == calls_.end() ? 0 : calls->second;
}

// ---- answers ----

GC_ERROR GiveText(const std::string& text, std::int32_t* type, void* buffer, std::size_t* size) {
    if (size == nullptr)
        return GC_ERR_INVALID_PARAMETER;
    if (type != nullptr)
        *type = INFO_DATATYPE_STRING;
    if (buffer != nullptr && *size < text.size() + 1)
        return GC_ERR_BUFFER_TOO_SMALL; // the size stays as it is
    if (buffer != nullptr)
        std::memcpy(buffer, text.c_str(), text.size() + 1);
    *size = text.size() + 1;
    return GC_ERR_SUCCESS;
}

GC_ERROR GiveNumber(std::uint64_t value, std::int32_t kind, std::int32_t* type, void* buffer,
                    std::size_t* size) {
    std::size_t bytes = kind == INFO_DATATYPE_BOOL8                                   ? 1
                        : kind == INFO_DATATYPE_INT32 || kind == INFO_DATATYPE_UINT32 ? 4
                                                                                      : 8;
    if (TheSettings().pace == 0 && TheSettings().Number("odd.type") != 0 && kind != INFO_DATATYPE_PTR) {
        kind = INFO_DATATYPE_INT32;
        bytes = 4;
    }
    if (size == nullptr || type == nullptr)
        return GC_ERR_INVALID_PARAMETER;
    *type = kind;
    if (buffer != nullptr && *size < bytes)
        return GC_ERR_BUFFER_TOO_SMALL;
    if (buffer != nullptr)
        std::memcpy(buffer, &value, bytes);
    *size = bytes;
    return GC_ERR_SUCCESS;
}

// ---- the system ----

System& TheSystem() {
    static System system;
    return system;
}

void System::Reset() {
    open = interface.open = second.open = false;
    for (int i = 0; i < 2; ++i)
        cameras[i] = std::make_unique<Camera>(i);
}

GC_ERROR& LastCode() {
    thread_local GC_ERROR code = GC_ERR_SUCCESS;
    return code;
}

std::unique_ptr<Stream> TakeStream(Camera& camera) {
    const std::lock_guard<std::mutex> lock(TheSystem().mutex);
    return std::move(camera.stream);
}

template <typename T>
T* As(void* handle) {
    System& system = TheSystem();
    const std::lock_guard<std::mutex> lock(system.mutex);
    std::vector<Module*> known{&system, &system.interface, &system.second};
    for (const auto& camera : system.cameras)
        if (camera)
            for (Module* module : {static_cast<Module*>(camera.get()), static_cast<Module*>(&camera->port),
                                   static_cast<Module*>(camera->stream.get())})
                known.push_back(module);
    for (Module* module : known)
        if (module != nullptr && module == handle)
            return dynamic_cast<T*>(module);
    return nullptr;
}
template System* As<System>(void*);
template Interface* As<Interface>(void*);
template Camera* As<Camera>(void*);
template Camera::Port* As<Camera::Port>(void*);
template Stream* As<Stream>(void*);

// ---- cameras ----

namespace {

std::string Integer(const std::string& name, std::uint32_t address, const char* more = "") {
    std::ostringstream xml;
    xml << "<Integer Name=\"" << name << "\"><pValue>" << name << "Reg</pValue></Integer><IntReg Name=\""
        << name << "Reg\"><Address>" << address << "</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        << "<pPort>Device</pPort>" << more
        << "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>";
    return xml.str();
}

std::string Command(const std::string& name, std::uint32_t address) {
    return "<Command Name=\"" + name + "\"><pValue>" + name +
           "CReg</pValue><CommandValue>1</CommandValue></Command>" + "<IntReg Name=\"" + name +
           "CReg\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort><Cachable>NoCache</"
           "Cachable>"
           "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>";
}

std::string BuiltInDescription() {
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><RegisterDescription ModelName=\"Camera\" "
        "VendorName=\"Test\" ToolTip=\"t\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
        "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" "
        "SubMinorVersion=\"0\" ProductGuid=\"00000000-0000-0000-0000-000000000000\" "
        "VersionGuid=\"00000000-0000-0000-0000-000000000000\" "
        "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\"><Category Name=\"Root\">";
    for (const char* feature : {"Width", "Height", "PixelFormat", "PayloadSize", "TLParamsLocked",
                                "Temperature", "AcquisitionStart", "AcquisitionStop"})
        xml += "<pFeature>" + std::string(feature) + "</pFeature>";
    xml += "</Category>";
    const char* uncached = "<Cachable>NoCache</Cachable>";
    xml += Integer("Width", Width) + Integer("Height", Height) +
           Integer("PayloadSize", PayloadSize, uncached) +
           Integer("TLParamsLocked", TLParamsLocked, uncached) + Integer("Temperature", Temperature) +
           Command("AcquisitionStart", AcquisitionStart) + Command("AcquisitionStop", AcquisitionStop) +
           "<Enumeration Name=\"PixelFormat\"><EnumEntry Name=\"Mono8\"><Value>17301505</Value></EnumEntry>"
           "<pValue>PixelFormatReg</pValue></Enumeration><IntReg Name=\"PixelFormatReg\"><Address>" +
           std::to_string(PixelFormat) +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign>"
           "<Endianess>LittleEndian</Endianess></IntReg><Port Name=\"Device\"/></RegisterDescription>";
    return xml;
}

} // namespace

Camera::Camera(int of) : number(of), registers(RegisterEnd) {
    const std::uint32_t presets[][2] = {
        {Width, 64}, {Height, 48}, {PixelFormat, 0x01080001}, {Temperature, 42}};
    for (const auto& [address, value] : presets)
        std::memcpy(&registers[address], &value, sizeof(value));
    Describe();
}

void Camera::Describe() {
    const std::string path = TheSettings().Text("description");
    if (path.empty()) {
        description = BuiltInDescription();
    } else {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        description = bytes.str();
    }
    description.append(static_cast<std::size_t>(TheSettings().Number("pad")), '\0');
}

std::string Camera::Id() const {
    const auto length = static_cast<std::size_t>(TheSettings().Number("id.length"));
    std::string id = "camera-" + std::to_string(number);
    id.append(length > id.size() ? length - id.size() : 0, 'x');
    return id;
}

std::string Camera::InfoText(std::int32_t command) const {
    switch (command) {
    case DEVICE_INFO_ID:
        return Id();
    case DEVICE_INFO_VENDOR:
        return "Vendor";
    case DEVICE_INFO_MODEL:
        return "Model " + std::to_string(number);
    case DEVICE_INFO_TLTYPE:
        return "Custom";
    case DEVICE_INFO_DISPLAYNAME:
        return TheSettings().Text("displayname", "Test camera " + std::to_string(number));
    case DEVICE_INFO_SERIAL_NUMBER:
        return "SN" + std::to_string(number);
    case DEVICE_INFO_VERSION:
        return TheSettings().Text("version", "1.2");
    default:
        return {};
    }
}

std::uint32_t Camera::Register(std::size_t address) const {
    const std::lock_guard<std::mutex> lock(mutex);
    std::uint32_t value = 0;
    std::memcpy(&value, &registers[address], sizeof(value));
    return value;
}

GC_ERROR Camera::Read(std::uint64_t address, void* buffer, std::size_t* size) {
    if (!plugged)
        return GC_ERR_IO;
    if (address == PayloadSize) {
        const std::uint32_t payload = Register(Width) * Register(Height);
        std::memcpy(buffer, &payload, std::min(*size, sizeof(payload)));
        return GC_ERR_SUCCESS;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    if (address >= Description && address - Description < description.size()) {
        const std::size_t at = address - Description;
        *size = std::min(*size, description.size() - at);
        std::memcpy(buffer, description.data() + at, *size);
        return GC_ERR_SUCCESS;
    }
    if (address >= registers.size() || *size > registers.size() - address)
        return GC_ERR_INVALID_ADDRESS;
    std::memcpy(buffer, &registers[address], *size);
    *size = std::min(*size, static_cast<std::size_t>(TheSettings().Number("short", 1 << 20)));
    return GC_ERR_SUCCESS;
}

GC_ERROR Camera::Write(std::uint64_t address, const void* buffer, std::size_t* size) {
    if (!plugged)
        return GC_ERR_IO;
    if (address >= registers.size() || *size > registers.size() - address)
        return GC_ERR_INVALID_ADDRESS;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        std::memcpy(&registers[address], buffer, *size);
    }
    if (address == AcquisitionStart || address == AcquisitionStop)
        acquiring = address == AcquisitionStart;
    return GC_ERR_SUCCESS;
}

} // namespace TestProducer

using namespace TestProducer;

void TestProducerSet(const char* key, const char* value) {
    TheSettings().Set(key, value);
    if (std::string(key) == "unplug")
        TheSystem().cameras[std::stoi(value)]->plugged = false;
    if (std::string(key) == "plug")
        TheSystem().cameras[std::stoi(value)]->plugged = true;
}

long long TestProducerCalls(const char* function) {
    return TheSettings().Calls(function);
}

int TestProducerAnnounced(const void* memory) {
    Stream& stream = *TheSystem().cameras[0]->stream;
    const std::lock_guard<std::mutex> lock(stream.mutex);
    return stream.announced.count(memory) != 0 ? 1 : 0;
}

void TestProducerFire(int type, const char* id, const char* value) {
    Camera& camera = *TheSystem().cameras[0];
    const std::lock_guard<std::mutex> cameraLock(camera.mutex);
    const auto event = camera.events.find(type);
    if (event == camera.events.end())
        return;
    const std::lock_guard<std::mutex> lock(event->second->mutex);
    event->second->queue.emplace_back(id, value);
    event->second->changed.notify_all();
}
