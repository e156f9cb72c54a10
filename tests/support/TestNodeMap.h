// A node map over a MemoryPort, made of a few nodes written in a test.
#pragma once

#include <GenApi/GenApi.h>
#include <GenApi/vx3/Problems.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace VX3::Test {

// A device's registers as plain memory behind a GenApi port: counts the accesses and fails on demand.
class MemoryPort : public GenApi_3_2::IPort {
public:
    explicit MemoryPort(std::size_t size = 0x10000) : memory(size) {}

    GenApi_3_2::EAccessMode GetAccessMode() const override { return mode; }

    void Read(void* to, std::int64_t address, std::int64_t length) override {
        ++reads;
        if (onRead)
            onRead(address);
        std::memcpy(to, At(address, length), static_cast<std::size_t>(length));
    }

    void Write(const void* from, std::int64_t address, std::int64_t length) override {
        ++writes;
        if (onWrite)
            onWrite(address);
        std::memcpy(At(address, length), from, static_cast<std::size_t>(length));
    }

    // Big-endian, 4 bytes.
    void Put(std::size_t address, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            memory.at(address + i) = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
    std::uint32_t Word(std::size_t address) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value << 8 | memory.at(address + i);
        return value;
    }

    std::vector<std::uint8_t> memory;
    int reads = 0;
    int writes = 0;
    GenApi_3_2::EAccessMode mode = GenApi_3_2::RW;
    // Called before the transfer; what they throw is the access's failure.
    std::function<void(std::int64_t)> onRead;
    std::function<void(std::int64_t)> onWrite;

private:
    std::uint8_t* At(std::int64_t address, std::int64_t length) {
        if (address < 0 || length < 0 || static_cast<std::size_t>(address + length) > memory.size())
            throw std::out_of_range("no such address");
        return memory.data() + address;
    }
};

// "<IntReg Name=NAME>" of 4 big-endian bytes, with further elements.
inline std::string WordRegister(const std::string& name, unsigned address, const std::string& more = "") {
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more +
           "<Endianess>BigEndian</Endianess></IntReg>";
}

class TestNodeMap {
public:
    explicit TestNodeMap(const std::string& nodes, bool connect = true)
        : factory(GenApi_3_2::gcstring(Wrap(nodes).c_str())), map(factory.CreateNodeMap("Camera")) {
        if (connect)
            map->Connect(&port);
    }
    ~TestNodeMap() { dynamic_cast<GenApi_3_2::IDestroy*>(map)->Destroy(); }
    TestNodeMap(const TestNodeMap&) = delete;
    TestNodeMap& operator=(const TestNodeMap&) = delete;

    static std::string Wrap(const std::string& nodes) {
        return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<RegisterDescription ModelName=\"Test\" "
               "VendorName=\"Vx3\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
               "SchemaSubMinorVersion=\"0\" xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n" +
               nodes + "\n<Port Name=\"Device\"/></RegisterDescription>\n";
    }

    GenApi_3_2::INode& Node(const std::string& name) {
        GenApi_3_2::INode* node = map->GetNode(name.c_str());
        if (!node)
            throw std::runtime_error("no node " + name);
        return *node;
    }
    template <class T>
    T& As(const std::string& name) {
        return dynamic_cast<T&>(Node(name));
    }
    GenApi_3_2::IInteger& Integer(const std::string& name) { return As<GenApi_3_2::IInteger>(name); }
    GenApi_3_2::IEnumeration& Enumeration(const std::string& name) {
        return As<GenApi_3_2::IEnumeration>(name);
    }

    // The text of the problem of that node, empty when there is none.
    std::string ProblemOf(const std::string& node) {
        for (const auto& problem : GenApi_3_2::vx3::GetProblems(*map))
            if (problem.node == node)
                return std::to_string(problem.line) + ": " + problem.text;
        return "";
    }

    MemoryPort port;
    GenApi_3_2::CNodeMapFactory factory;
    GenApi_3_2::INodeMap* map;
};

// What `function` throws as GenericException; empty when it throws nothing.
template <class Function>
std::string FailureOf(Function&& function) {
    try {
        function();
    } catch (const GenICam_3_2::GenericException& failure) {
        return failure.GetDescription();
    }
    return "";
}

} // namespace VX3::Test
