#include "camsim/CameraConfig.h"

namespace camsim {
namespace {

constexpr std::uint32_t featureMemoryAddress = 0xA000;

const char description[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription ModelName="VirtualCamera" VendorName="Ostra" ToolTip="Simulated camera"
    StandardNameSpace="GEV" SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0"
    MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="5B8E2B1C-0C55-4C44-9B0E-0A6C2E1F7D10" VersionGuid="0E6A4C3E-7C0F-4F0B-8C57-3B7E0C9A2D11"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root" NameSpace="Standard">
    <pFeature>DeviceControl</pFeature>
    <pFeature>ImageFormatControl</pFeature>
    <pFeature>AcquisitionControl</pFeature>
    <pFeature>TransportLayerControl</pFeature>
  </Category>
  <Category Name="DeviceControl" NameSpace="Standard">
    <pFeature>DeviceVendorName</pFeature>
    <pFeature>DeviceModelName</pFeature>
    <pFeature>DeviceVersion</pFeature>
    <pFeature>DeviceID</pFeature>
    <pFeature>DeviceUserID</pFeature>
  </Category>
  <Category Name="ImageFormatControl" NameSpace="Standard">
    <pFeature>Width</pFeature>
    <pFeature>Height</pFeature>
    <pFeature>PixelFormat</pFeature>
  </Category>
  <Category Name="AcquisitionControl" NameSpace="Standard">
    <pFeature>ExposureTimeRaw</pFeature>
    <pFeature>ExposureTime</pFeature>
  </Category>
  <Category Name="TransportLayerControl" NameSpace="Standard">
    <pFeature>GevVersionMajor</pFeature>
    <pFeature>GevVersionMinor</pFeature>
    <pFeature>GevDeviceModeIsBigEndian</pFeature>
    <pFeature>GevMACAddress</pFeature>
    <pFeature>GevSupportedIPConfigurationPersistentIP</pFeature>
    <pFeature>GevSupportedIPConfigurationDHCP</pFeature>
    <pFeature>GevSupportedIPConfigurationLLA</pFeature>
    <pFeature>GevCurrentIPConfiguration</pFeature>
    <pFeature>GevCurrentIPAddress</pFeature>
    <pFeature>GevCurrentSubnetMask</pFeature>
    <pFeature>GevCurrentDefaultGateway</pFeature>
    <pFeature>GevPersistentIPAddress</pFeature>
    <pFeature>GevPersistentSubnetMask</pFeature>
    <pFeature>GevPersistentDefaultGateway</pFeature>
    <pFeature>GevHeartbeatTimeout</pFeature>
  </Category>

  <StringReg Name="DeviceVendorName" NameSpace="Standard">
    <Address>0x48</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  </StringReg>
  <StringReg Name="DeviceModelName" NameSpace="Standard">
    <Address>0x68</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  </StringReg>
  <StringReg Name="DeviceVersion" NameSpace="Standard">
    <Address>0x88</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  </StringReg>
  <StringReg Name="DeviceID" NameSpace="Standard">
    <Address>0xD8</Address><Length>16</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  </StringReg>
  <StringReg Name="DeviceUserID" NameSpace="Standard">
    <Address>0xE8</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  </StringReg>

  <Integer Name="Width" NameSpace="Standard">
    <pValue>WidthReg</pValue><Min>16</Min><Max>1920</Max><Inc>16</Inc>
  </Integer>
  <Integer Name="Height" NameSpace="Standard">
    <pValue>HeightReg</pValue><Min>2</Min><Max>1200</Max><Inc>2</Inc>
  </Integer>
  <IntReg Name="WidthReg">
    <Address>0xA000</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>
  <IntReg Name="HeightReg">
    <Address>0xA004</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>
  <Enumeration Name="PixelFormat" NameSpace="Standard">
    <EnumEntry Name="Mono8" NameSpace="Standard"><Value>0x01080001</Value></EnumEntry>
    <EnumEntry Name="Mono16" NameSpace="Standard"><Value>0x01100007</Value></EnumEntry>
    <pValue>PixelFormatReg</pValue>
  </Enumeration>
  <IntReg Name="PixelFormatReg">
    <Address>0xA008</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>
  <Integer Name="ExposureTimeRaw" NameSpace="Custom">
    <pValue>ExposureTimeReg</pValue><Min>10</Min><Max>1000000</Max>
  </Integer>
  <Converter Name="ExposureTime" NameSpace="Standard">
    <FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / 10.0</FormulaFrom>
    <pValue>ExposureTimeReg</pValue><Unit>us</Unit>
  </Converter>
  <IntReg Name="ExposureTimeReg">
    <Address>0xA00C</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>

  <MaskedIntReg Name="GevVersionMajor" NameSpace="Standard">
    <Address>0x0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <LSB>15</LSB><MSB>0</MSB><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </MaskedIntReg>
  <MaskedIntReg Name="GevVersionMinor" NameSpace="Standard">
    <Address>0x0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <LSB>31</LSB><MSB>16</MSB><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </MaskedIntReg>
  <Boolean Name="GevDeviceModeIsBigEndian" NameSpace="Standard">
    <pValue>DeviceModeBigEndianReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue>
  </Boolean>
  <MaskedIntReg Name="DeviceModeBigEndianReg">
    <Address>0x4</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Bit>0</Bit><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </MaskedIntReg>
  <IntReg Name="GevMACAddress" NameSpace="Standard">
    <Address>0x8</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>MACAddress</Representation>
  </IntReg>
  <Boolean Name="GevSupportedIPConfigurationPersistentIP" NameSpace="Standard">
    <pValue>SupportedPersistentIpReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue>
  </Boolean>
  <Boolean Name="GevSupportedIPConfigurationDHCP" NameSpace="Standard">
    <pValue>SupportedDhcpReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue>
  </Boolean>
  <Boolean Name="GevSupportedIPConfigurationLLA" NameSpace="Standard">
    <pValue>SupportedLlaReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue>
  </Boolean>
  <MaskedIntReg Name="SupportedPersistentIpReg">
    <Address>0x10</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Bit>31</Bit><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </MaskedIntReg>
  <MaskedIntReg Name="SupportedDhcpReg">
    <Address>0x10</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Bit>30</Bit><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </MaskedIntReg>
  <MaskedIntReg Name="SupportedLlaReg">
    <Address>0x10</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Bit>29</Bit><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </MaskedIntReg>
  <IntReg Name="GevCurrentIPConfiguration" NameSpace="Standard">
    <Address>0x14</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>
  <IntReg Name="GevCurrentIPAddress" NameSpace="Standard">
    <Address>0x24</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation>
  </IntReg>
  <IntReg Name="GevCurrentSubnetMask" NameSpace="Standard">
    <Address>0x34</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation>
  </IntReg>
  <IntReg Name="GevCurrentDefaultGateway" NameSpace="Standard">
    <Address>0x44</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation>
  </IntReg>
  <IntReg Name="GevPersistentIPAddress" NameSpace="Standard">
    <Address>0x64C</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation>
  </IntReg>
  <IntReg Name="GevPersistentSubnetMask" NameSpace="Standard">
    <Address>0x65C</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation>
  </IntReg>
  <IntReg Name="GevPersistentDefaultGateway" NameSpace="Standard">
    <Address>0x66C</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation>
  </IntReg>
  <IntReg Name="GevHeartbeatTimeout" NameSpace="Standard">
    <Address>0x938</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>

  <Port Name="Device" NameSpace="Standard"/>
</RegisterDescription>
)";

} // namespace

std::vector<std::uint8_t> defaultXml() {
    std::vector<std::uint8_t> xml(description, description + sizeof description - 1);
    // A strict camera serves only whole words, so its file fills them; line ends may follow the root element.
    xml.resize((xml.size() + 3) / 4 * 4, '\n');
    return xml;
}

MemoryRegion defaultFeatureMemory() {
    return {featureMemoryAddress,
            {0x00, 0x00, 0x07, 0x80,  // Width 1920
             0x00, 0x00, 0x04, 0xB0,  // Height 1200
             0x01, 0x08, 0x00, 0x01,  // PixelFormat Mono8
             0x00, 0x01, 0x86, 0xA0}, // ExposureTimeRaw 100000 in 0.1 us
            true};
}

CameraConfig defaultCamera() {
    CameraConfig config;
    config.xml = defaultXml();
    config.memory.push_back(defaultFeatureMemory());
    return config;
}

} // namespace camsim
