// A node map's owner over plain memory, with a description that has every node type, for tests of the node
// layer.
#pragma once

#include "genicam/GenApiRI.h"
#include "genicam/XmlData.h"
#include "vx3/genicam/IGenIObj.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace VX3::Test {

class MemoryOwner : public IGenIObj {
public:
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override {
        ++reads;
        return Copy(buffer, memory.data() + address, address + length, length);
    }
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override {
        ++writes;
        lastWriteLength = length;
        return Copy(memory.data() + address, buffer, address + length, length);
    }
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }
    bool IsWritable() const override { return writable; }
    bool IsReachable() const override { return reachable; }

    std::atomic<bool> reachable{true};
    bool writable = true;
    std::vector<unsigned char> memory = std::vector<unsigned char>(4096);
    StatusCode result = Status::Ok; // a negative code is the answer to every access
    int reads = 0;
    int writes = 0;
    unsigned int lastWriteLength = 0;

private:
    StatusCode Copy(unsigned char* to, const unsigned char* from, unsigned long long end,
                    unsigned int length) const {
        if (result < 0 || end > memory.size())
            return result < 0 ? result : Status::NotFound;
        std::memcpy(to, from, length);
        return static_cast<StatusCode>(length);
    }
};

inline std::string DescriptionOf(const std::string& nodes) {
    return R"(<?xml version="1.0"?>
<RegisterDescription ModelName="M" VendorName="V" StandardNameSpace="None" SchemaMajorVersion="1"
  SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
  ProductGuid="1" VersionGuid="2" ToolTip="t" xmlns="http://www.genicam.org/GenApi/Version_1_1">)" +
           nodes + "<Port Name=\"Device\"/></RegisterDescription>\n";
}

inline std::string RegisterNode(const std::string& type, const std::string& name, int address, int length,
                                const std::string& access = "RW", const std::string& more = "") {
    return "<" + type + " Name=\"" + name + "\">" + more + "<Address>" + std::to_string(address) +
           "</Address><Length>" + std::to_string(length) + "</Length><AccessMode>" + access +
           "</AccessMode><pPort>Device</pPort></" + type + ">\n";
}

inline const std::string LittleEndian = "<Endianess>LittleEndian</Endianess>";
inline const std::string Signed = "<Sign>Signed</Sign>" + LittleEndian;
inline const std::string Streamable = "<Streamable>Yes</Streamable>";

inline const std::string EveryType = DescriptionOf(
    R"(<Category Name="Root"><pFeature>Stepped</pFeature><pFeature>Rate</pFeature><pFeature>Mode</pFeature></Category>
<Integer Name="Stepped"><Visibility>Expert</Visibility><Streamable>Yes</Streamable><pValue>SteppedReg</pValue>
  <Min>0</Min><Max>100</Max><Inc>4</Inc><Unit>px</Unit><Representation>Linear</Representation></Integer>
<Integer Name="Wide"><pValue>WideReg</pValue></Integer>
<Integer Name="Odd"><pValue>WideReg</pValue><Min>-10</Min><Max>10</Max><Inc>7</Inc></Integer>
<Float Name="Rate"><Streamable>Yes</Streamable><pValue>RateReg</pValue><Min>1.5</Min><Max>2.5</Max><Inc>0.25</Inc>
  <Unit>Hz</Unit></Float>
<Boolean Name="Flag"><Streamable>Yes</Streamable><pValue>FlagReg</pValue></Boolean>
<Command Name="Fire"><pValue>FireReg</pValue><CommandValue>7</CommandValue></Command>
<Enumeration Name="Mode"><Streamable>Yes</Streamable><EnumEntry Name="Slow"><Value>3</Value></EnumEntry>
  <EnumEntry Name="Fast"><Value>9</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>)" +
    RegisterNode("IntReg", "SteppedReg", 0x10, 4, "RW", Signed) +
    RegisterNode("IntReg", "WideReg", 0x18, 8, "RW", Signed) +
    RegisterNode("IntReg", "Fixed", 0x20, 4, "RO", LittleEndian) +
    RegisterNode("FloatReg", "RateReg", 0x28, 8, "RW", LittleEndian) +
    RegisterNode("IntReg", "FlagReg", 0x30, 4, "RW", LittleEndian) +
    RegisterNode("IntReg", "FireReg", 0x34, 4, "WO", LittleEndian) +
    RegisterNode("IntReg", "ModeReg", 0x38, 4, "RW", LittleEndian) +
    RegisterNode("StringReg", "Label", 0x40, 16, "RW", Streamable) +
    RegisterNode("Register", "Four", 0x60, 4, "RW", Streamable) + RegisterNode("Register", "Three", 0x68, 3));

inline std::unique_ptr<IXmlData> Xml(const std::string& name, const std::string& text) {
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[text.size() + 1]);
    std::memcpy(bytes.get(), text.data(), text.size());
    return std::make_unique<XmlData>(name, std::move(bytes), static_cast<unsigned int>(text.size()));
}

// A description with every node type, connected to memory.
struct Camera {
    std::shared_ptr<MemoryOwner> owner = std::make_shared<MemoryOwner>();
    GenApiRI genApi{Xml("Camera.XML", EveryType), owner, nullptr};
    std::shared_ptr<GenICam::INodeMap> nodes = genApi.GetNodeMap();

    template <typename T>
    T& Get(const std::string& name) const {
        return dynamic_cast<T&>(*nodes->GetNode(name));
    }
};

} // namespace VX3::Test
