#include "simulated/camera/PowerUp.h"

namespace VX3 {
namespace Simulated {

namespace {

const char* const Text = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Simulated" VendorName="VX3" ToolTip="A camera made of data"
    StandardNameSpace="GEV" SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0"
    MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="6f1a3a52-5c1e-4d6b-9d7e-1e2f3a4b5c6d" VersionGuid="0b7e8f21-9d4c-4a0f-8f5e-2a3b4c5d6e7f"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root" NameSpace="Standard">
  <pFeature>DeviceControl</pFeature><pFeature>ImageFormatControl</pFeature>
  <pFeature>AcquisitionControl</pFeature><pFeature>TransportLayerControl</pFeature>
</Category>
<Category Name="DeviceControl" NameSpace="Standard">
  <pFeature>DeviceVendorName</pFeature><pFeature>DeviceModelName</pFeature>
  <pFeature>DeviceSerialNumber</pFeature><pFeature>DeviceUserID</pFeature>
</Category>
<StringReg Name="DeviceVendorName" NameSpace="Standard">
  <Address>0x48</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
<StringReg Name="DeviceModelName" NameSpace="Standard">
  <Address>0x68</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
<StringReg Name="DeviceSerialNumber" NameSpace="Standard">
  <Address>0xD8</Address><Length>16</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
<StringReg Name="DeviceUserID" NameSpace="Standard">
  <Address>0xE8</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>

<Category Name="ImageFormatControl" NameSpace="Standard">
  <pFeature>Width</pFeature><pFeature>Height</pFeature><pFeature>OffsetX</pFeature><pFeature>OffsetY</pFeature>
  <pFeature>PixelFormat</pFeature>
</Category>
<Integer Name="Width" NameSpace="Standard">
  <Description>Pixels in a line</Description><pIsLocked>TLParamsLocked</pIsLocked>
  <pValue>WidthReg</pValue><Min>8</Min><Max>16384</Max><Inc>4</Inc></Integer>
<IntReg Name="WidthReg"><Address>0xA000</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Integer Name="Height" NameSpace="Standard">
  <Description>Lines in a frame</Description><pIsLocked>TLParamsLocked</pIsLocked>
  <pValue>HeightReg</pValue><Min>1</Min><Max>16384</Max></Integer>
<IntReg Name="HeightReg"><Address>0xA004</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Integer Name="OffsetX" NameSpace="Standard"><pValue>OffsetXReg</pValue><Min>0</Min><Max>4096</Max></Integer>
<IntReg Name="OffsetXReg"><Address>0xA00C</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Integer Name="OffsetY" NameSpace="Standard"><pValue>OffsetYReg</pValue><Min>0</Min><Max>4096</Max></Integer>
<IntReg Name="OffsetYReg"><Address>0xA010</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Enumeration Name="PixelFormat" NameSpace="Standard">
  <pIsLocked>TLParamsLocked</pIsLocked>
  <EnumEntry Name="Mono8" NameSpace="Standard"><Value>17301505</Value></EnumEntry>
  <EnumEntry Name="BayerRG8" NameSpace="Standard"><Value>17301513</Value></EnumEntry>
  <EnumEntry Name="Mono16" NameSpace="Standard"><Value>17825799</Value></EnumEntry>
  <EnumEntry Name="RGB8" NameSpace="Standard"><Value>35127316</Value></EnumEntry>
  <pValue>PixelFormatReg</pValue></Enumeration>
<IntReg Name="PixelFormatReg"><Address>0xA008</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>

<Category Name="AcquisitionControl" NameSpace="Standard">
  <pFeature>AcquisitionMode</pFeature><pFeature>AcquisitionStart</pFeature><pFeature>AcquisitionStop</pFeature>
  <pFeature>ExposureTimeAbs</pFeature><pFeature>Gain</pFeature>
</Category>
<Enumeration Name="AcquisitionMode" NameSpace="Standard">
  <EnumEntry Name="Continuous" NameSpace="Standard"><Value>0</Value></EnumEntry>
  <EnumEntry Name="SingleFrame" NameSpace="Standard"><Value>1</Value></EnumEntry>
  <pValue>AcquisitionModeReg</pValue></Enumeration>
<IntReg Name="AcquisitionModeReg"><Address>0xA014</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Command Name="AcquisitionStart" NameSpace="Standard">
  <pValue>AcquisitionStartReg</pValue><CommandValue>1</CommandValue></Command>
<IntReg Name="AcquisitionStartReg"><Address>0xA018</Address><Length>4</Length><AccessMode>WO</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Command Name="AcquisitionStop" NameSpace="Standard">
  <pValue>AcquisitionStopReg</pValue><CommandValue>1</CommandValue></Command>
<IntReg Name="AcquisitionStopReg"><Address>0xA01C</Address><Length>4</Length><AccessMode>WO</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Float Name="ExposureTimeAbs" NameSpace="Standard">
  <pValue>ExposureTimeReg</pValue><Min>10</Min><Max>1000000</Max><Unit>us</Unit></Float>
<FloatReg Name="ExposureTimeReg"><Address>0xA024</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Endianess>BigEndian</Endianess></FloatReg>
<Integer Name="Gain" NameSpace="Standard"><pValue>GainReg</pValue><Min>0</Min><Max>100</Max></Integer>
<IntReg Name="GainReg"><Address>0xA028</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>

<Category Name="TransportLayerControl" NameSpace="Standard">
  <pFeature>PayloadSize</pFeature><pFeature>GevSCPSPacketSize</pFeature><pFeature>TLParamsLocked</pFeature>
</Category>
<IntSwissKnife Name="PayloadSize" NameSpace="Standard">
  <pVariable Name="W">WidthReg</pVariable><pVariable Name="H">HeightReg</pVariable>
  <pVariable Name="F">PixelFormatReg</pVariable>
  <Formula>W * H * ((F &gt;&gt; 16) &amp; 0xFF) / 8</Formula></IntSwissKnife>
<Integer Name="GevSCPSPacketSize" NameSpace="Standard">
  <pValue>PacketSizeReg</pValue><Min>576</Min><Max>9000</Max><Inc>4</Inc></Integer>
<MaskedIntReg Name="PacketSizeReg"><Address>0xD04</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><LSB>31</LSB><MSB>16</MSB><Sign>Unsigned</Sign>
  <Endianess>BigEndian</Endianess></MaskedIntReg>
<Integer Name="TLParamsLocked" NameSpace="Standard"><Visibility>Invisible</Visibility>
  <pValue>ParamsLockedReg</pValue><Min>0</Min><Max>1</Max></Integer>
<IntReg Name="ParamsLockedReg"><Address>0xA020</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Port Name="Device" NameSpace="Standard"/>
</RegisterDescription>
)";

} // namespace

const char* OwnDescription() {
    return Text;
}

} // namespace Simulated
} // namespace VX3
