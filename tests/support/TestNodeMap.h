// A node map over a MemoryPort, made of a few nodes written in a test.
#pragma once

#include "support/MemoryPort.h"

#include <GenApi/GenApi.h>
#include <GenApi/vx3/Problems.h>

#include <stdexcept>
#include <string>

namespace VX3::Test {

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
    GenApi_3_2::IFloat& Float(const std::string& name) { return As<GenApi_3_2::IFloat>(name); }
    GenApi_3_2::IEnumeration& Enumeration(const std::string& name) {
        return As<GenApi_3_2::IEnumeration>(name);
    }
    GenApi_3_2::EAccessMode Mode(const std::string& name) { return Node(name).GetAccessMode(); }

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
