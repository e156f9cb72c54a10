// Producers in a folder of a test's own, each with its faults, and access to what they counted.
#pragma once

#include "gentl/GenTLInterfaceDev.h"
#include "gentl/GenTLRemotableDevice.h"
#include "gentl/MiscDeviceManager.h"
#include "support/TempDir.h"

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace VX3::Test {

using ProducerSettings = std::map<std::string, std::string>;

class ProducerLab {
public:
    // A copy, since each file is a producer of its own. The path.
    std::string Add(const std::string& name, const ProducerSettings& settings = {},
                    const char* from = VX3_TEST_PRODUCER) {
        const std::string path = folder_ / name;
        std::filesystem::copy_file(from, path);
        std::ofstream ini(path + ".ini");
        for (const auto& [key, value] : settings)
            ini << key << "=" << value << "\n";
        return path;
    }
    std::string Write(const std::string& name, const std::string& bytes) {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return folder_ / name;
    }
    // A manager of every producer in the folder.
    std::unique_ptr<MiscDeviceManager> Manager() const {
        return std::make_unique<MiscDeviceManager>("test",
                                                   MiscDeviceManager::GetAllEsoFiles(folder_.Path().c_str()));
    }
    const TempDir& Folder() const { return folder_; }

private:
    TempDir folder_;
};

// A producer that is loaded already.
class LoadedProducer {
public:
    explicit LoadedProducer(const std::string& path)
        : library_(::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        if (library_ == nullptr)
            throw std::runtime_error("the producer is not loaded");
        set_ = reinterpret_cast<decltype(set_)>(::dlsym(library_, "TestProducerSet"));
        calls_ = reinterpret_cast<decltype(calls_)>(::dlsym(library_, "TestProducerCalls"));
        announced_ = reinterpret_cast<decltype(announced_)>(::dlsym(library_, "TestProducerAnnounced"));
        fire_ = reinterpret_cast<decltype(fire_)>(::dlsym(library_, "TestProducerFire"));
    }
    ~LoadedProducer() { ::dlclose(library_); }
    LoadedProducer(const LoadedProducer&) = delete;
    LoadedProducer& operator=(const LoadedProducer&) = delete;

    void Set(const std::string& key, const std::string& value) { set_(key.c_str(), value.c_str()); }
    long long Calls(const char* function) const { return calls_(function); }
    // The memory was announced on the stream of the first camera.
    bool WasAnnounced(const void* memory) const { return announced_(memory) != 0; }
    void Fire(int type, const char* id, const char* value) { fire_(type, id, value); }

private:
    void* library_;
    void (*set_)(const char*, const char*) = nullptr;
    long long (*calls_)(const char*) = nullptr;
    int (*announced_)(const void*) = nullptr;
    void (*fire_)(int, const char*, const char*) = nullptr;
};

// One producer with the given faults, its manager, its interface, and its first camera.
class GenTLLab {
public:
    explicit GenTLLab(const ProducerSettings& settings = {})
        : path_(lab_.Add("test.cti", settings)), manager_(lab_.Manager()) {
        if (manager_->EnumDevices() < 1)
            throw std::runtime_error("the producer has no interface");
        interface_ = std::dynamic_pointer_cast<GenTLInterfaceDev>(manager_->GetDevice(0, IntfDevType::All));
        producer_ = std::make_unique<LoadedProducer>(path_);
        Look();
    }

    // A round of the interface's, and what it reports.
    SubDeviceEvents Look() { return interface_->UpdateSubDevicesA(interface_->EnumSubDevices(2000), true); }
    std::shared_ptr<GenTLRemotableDevice> Camera(std::size_t index = 0) {
        const auto cameras = interface_->SubDevices();
        return index < cameras.size() ? std::dynamic_pointer_cast<GenTLRemotableDevice>(cameras[index].lock())
                                      : nullptr;
    }
    GenTLInterfaceDev& Interface() { return *interface_; }
    LoadedProducer& Producer() { return *producer_; }
    const std::string& Path() const { return path_; }
    const TempDir& Folder() const { return lab_.Folder(); }
    MiscDeviceManager& Manager() { return *manager_; }
    // Everything of the consumer's goes; the test's own hold on the library stays.
    void End() {
        interface_.reset();
        manager_.reset();
    }

private:
    ProducerLab lab_;
    std::string path_;
    std::unique_ptr<MiscDeviceManager> manager_;
    std::shared_ptr<GenTLInterfaceDev> interface_;
    std::unique_ptr<LoadedProducer> producer_;
};

} // namespace VX3::Test
