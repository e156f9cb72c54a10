// A node map's owner over plain memory, with a description that has every node type, for tests of the node
// layer.
#pragma once

#include "genicam/GenApiRI.h"
#include "genicam/XmlData.h"
#include "vx3/genicam/IGenIObj.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace VX3::Testing {

class MemoryOwner : public IGenIObj {
public:
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override {
        ++reads;
        if (result < 0 || address + length > memory.size())
            return result < 0 ? result : Status::NotFound;
        std::memcpy(buffer, memory.data() + address, length);
        return static_cast<StatusCode>(length);
    }
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override {
        ++writes;
        lastWriteLength = length;
        if (result < 0 || address + length > memory.size())
            return result < 0 ? result : Status::NotFound;
        std::memcpy(memory.data() + address, buffer, length);
        return static_cast<StatusCode>(length);
    }
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }

    std::vector<unsigned char> memory = std::vector<unsigned char>(4096);
    StatusCode result = Status::Ok; // a negative code is the answer to every access
    int reads = 0;
    int writes = 0;
    unsigned int lastWriteLength = 0;
};

inline const char* const EveryType = R"(<?xml version="1.0"?>
<RegisterDescription ModelName="M" VendorName="V" StandardNameSpace="None" SchemaMajorVersion="1"
  SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
  ProductGuid="1" VersionGuid="2" ToolTip="t" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root"><pFeature>Stepped</pFeature><pFeature>Rate</pFeature><pFeature>Mode</pFeature></Category>
<Integer Name="Stepped"><Visibility>Expert</Visibility><Streamable>Yes</Streamable><pValue>SteppedReg</pValue>
  <Min>0</Min><Max>100</Max><Inc>4</Inc><Unit>px</Unit><Representation>Linear</Representation></Integer>
<IntReg Name="SteppedReg"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Integer Name="Wide"><pValue>WideReg</pValue></Integer>
<IntReg Name="WideReg"><Address>0x18</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Integer Name="Odd"><pValue>WideReg</pValue><Min>-10</Min><Max>10</Max><Inc>7</Inc></Integer>
<IntReg Name="Fixed"><Address>0x20</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Float Name="Rate"><pValue>RateReg</pValue><Min>1.5</Min><Max>2.5</Max><Unit>Hz</Unit></Float>
<FloatReg Name="RateReg"><Address>0x28</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Endianess>LittleEndian</Endianess></FloatReg>
<Boolean Name="Flag"><pValue>FlagReg</pValue></Boolean>
<IntReg Name="FlagReg"><Address>0x30</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Command Name="Fire"><pValue>FireReg</pValue><CommandValue>7</CommandValue></Command>
<IntReg Name="FireReg"><Address>0x34</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Enumeration Name="Mode"><EnumEntry Name="Slow"><Value>3</Value></EnumEntry>
  <EnumEntry Name="Fast"><Value>9</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>
<IntReg Name="ModeReg"><Address>0x38</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<StringReg Name="Label"><Address>0x40</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
</StringReg>
<Register Name="Four"><Address>0x60</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
</Register>
<Register Name="Three"><Address>0x68</Address><Length>3</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
</Register>
<Port Name="Device"/>
</RegisterDescription>
)";

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

} // namespace VX3::Testing
