#pragma once

/// \file
/// GigE Vision Control Protocol (GVCP) wire records, message codes and bootstrap register addresses.
///
/// The records are packed and byte exact: a record can be laid over a datagram whose length has been checked. Every
/// multi-byte field is big-endian on the wire. Names of codes and registers are those of the GigE Vision standard.
/// This header stands alone, so that a peer (the camera simulator) can use the records without the library.

#include <cstddef>
#include <cstdint>

/// UDP port on which a GigE Vision device receives GVCP commands.
constexpr std::uint16_t GVCP_PORT = 3956;
/// Largest GVCP payload (bytes after the 8-byte header) that fits an unfragmented 576-byte IPv4 datagram.
constexpr std::size_t GVCP_MAX_PAYLOAD = 540;
/// First byte of every command.
constexpr std::uint8_t GVCP_KEY = 0x42;
/// Request id of connectionless commands.
constexpr std::uint16_t GVCP_BROADCAST_REQ_ID = 0xFFFF;

/// Bits of GVCP_REQUEST_HEADER::Flags.
enum _GEV_COMMAND_FLAGS : std::uint8_t {
    GEV_COMMAND_FLAG_ANSWER = 0x01,                  ///< An acknowledge is requested (any command).
    GEV_DISCOVERY_COMMAND_FLAG_BROADCAST_ACK = 0x10, ///< The acknowledge may be sent as a broadcast.
    GEV_ACTION_COMMAND_SCHEDULED_FLAG = 0x80,        ///< ACTION_CMD carries an action time.
    GEV_PACKETRESEND_COMMAND_FLAG_EXTENDED_ID = 0x10 ///< PACKETRESEND_CMD carries 64-bit block ids.
};

/// Values of GVCP_REQUEST_HEADER::Command and GVCP_RESPONSE_HEADER::Acknowledge.
enum _GEV_MESSAGE_TAGS : std::uint16_t {
    TAG_DISCOVERY_CMD = 0x0002,
    TAG_DISCOVERY_ACK = 0x0003,
    TAG_FORCEIP_CMD = 0x0004,
    TAG_FORCEIP_ACK = 0x0005,
    TAG_PACKETRESEND_CMD = 0x0040,
    TAG_READREG_CMD = 0x0080,
    TAG_READREG_ACK = 0x0081,
    TAG_WRITEREG_CMD = 0x0082,
    TAG_WRITEREG_ACK = 0x0083,
    TAG_READMEM_CMD = 0x0084,
    TAG_READMEM_ACK = 0x0085,
    TAG_WRITEMEM_CMD = 0x0086,
    TAG_WRITEMEM_ACK = 0x0087,
    TAG_PENDING_ACK = 0x0089, ///< In place of an acknowledge that takes the device longer.
    TAG_EVENT_CMD = 0x00C0,
    TAG_EVENT_ACK = 0x00C1,
    TAG_EVENTDATA_CMD = 0x00C2,
    TAG_EVENTDATA_ACK = 0x00C3,
    TAG_SHUTDOWN_CMD = 0x00FE,
    TAG_SHUTDOWN_ACK = 0x00FF,
    TAG_ACTION_CMD = 0x0100,
    TAG_ACTION_ACK = 0x0101,
    TAG_SETIPCONFIG_CMD = 0x8004, ///< Vendor command: store a persistent IP configuration, addressed by MAC.
    TAG_SETIPCONFIG_ACK = 0x8005
};

/// Values of the control channel privilege register (CCP). 0 means that nobody holds the device.
enum _GEV_CONTROL_ACCESS_PRIVILEDGES : std::uint32_t { GEV_EXCLUSIVE_CONTROL_ACCESS = 1, GEV_CONTROL_ACCESS = 2 };

/// Addresses in the bootstrap register space; all registers are 32 bits wide and big-endian on the wire.
enum _GEV_BOOTSTRAP_REGISTERS : std::uint32_t {
    GEV_REG_VERSION = 0x0000,
    GEV_REG_DEVICE_MODE = 0x0004,
    GEV_REG_DEVICE_MAC_HIGH = 0x0008,
    GEV_REG_DEVICE_MAC_LOW = 0x000C,
    GEV_REG_NETWORK_INTERFACE_CAPABILITY = 0x0010,    ///< Supported IP configuration modes (GEV_IP_CONFIG).
    GEV_REG_NETWORK_INTERFACE_CONFIGURATION = 0x0014, ///< Enabled IP configuration modes (GEV_IP_CONFIG).
    GEV_REG_CURRENT_IP_ADDRESS = 0x0024,
    GEV_REG_CURRENT_SUBNET_MASK = 0x0034,
    GEV_REG_CURRENT_DEFAULT_GATEWAY = 0x0044,
    GEV_REG_MANUFACTURER_NAME = 0x0048,
    GEV_REG_MODEL_NAME = 0x0068,
    GEV_REG_DEVICE_VERSION = 0x0088,
    GEV_REG_MANUFACTURER_INFORMATION = 0x00A8,
    GEV_REG_SERIAL_NUMBER = 0x00D8,
    GEV_REG_USER_DEFINED_NAME = 0x00E8,
    GEV_REG_FIRST_URL = 0x0200,  ///< 512 bytes of text.
    GEV_REG_SECOND_URL = 0x0400, ///< 512 bytes of text.
    GEV_REG_NUMBER_OF_NETWORK_INTERFACES = 0x0600,
    GEV_REG_PERSISTENT_IP_ADDRESS = 0x064C,
    GEV_REG_PERSISTENT_SUBNET_MASK = 0x065C,
    GEV_REG_PERSISTENT_DEFAULT_GATEWAY = 0x066C,
    GEV_REG_NUMBER_OF_MESSAGE_CHANNELS = 0x0900,
    GEV_REG_NUMBER_OF_STREAM_CHANNELS = 0x0904,
    GEV_REG_GVCP_CAPABILITY = 0x0934,
    GEV_REG_HEARTBEAT_TIMEOUT = 0x0938, ///< ms
    GEV_REG_TIMESTAMP_TICK_FREQUENCY_HIGH = 0x093C,
    GEV_REG_TIMESTAMP_TICK_FREQUENCY_LOW = 0x0940,
    GEV_REG_TIMESTAMP_CONTROL = 0x0944, ///< 2 latches the timestamp, 1 resets it; reads 0
    GEV_REG_TIMESTAMP_VALUE_HIGH = 0x0948,
    GEV_REG_TIMESTAMP_VALUE_LOW = 0x094C,
    GEV_REG_PENDING_TIMEOUT = 0x0958, ///< ms; a command may take as long
    GEV_REG_CONTROL_CHANNEL_PRIVILEGE = 0x0A00,
    GEV_REG_PRIMARY_APPLICATION_PORT = 0x0A04,       ///< UDP port of the application in control, 0 for none
    GEV_REG_PRIMARY_APPLICATION_IP_ADDRESS = 0x0A14, ///< its IPv4 address, 0 for none
    GEV_REG_MESSAGE_CHANNEL_PORT = 0x0B00,
    GEV_REG_MESSAGE_CHANNEL_DESTINATION = 0x0B10,
    GEV_REG_MESSAGE_CHANNEL_TIMEOUT = 0x0B14, ///< ms
    GEV_REG_MESSAGE_CHANNEL_RETRY_COUNT = 0x0B18
};

/// Registers of stream channel 0; channel n stands GEV_STREAM_CHANNEL_STRIDE * n further on.
enum _GEV_STREAMING_CHANNEL_REGISTERS : std::uint32_t {
    GEV_REG_STREAM_CHANNEL_PORT = 0x0D00,
    GEV_REG_STREAM_CHANNEL_DESTINATION = 0x0D18,
    GEV_STREAM_CHANNEL_STRIDE = 0x40
};
using GEV_STREAMING_CHANNEL_REGISTERS = _GEV_STREAMING_CHANNEL_REGISTERS;

/// Host-order bits of the GVCP capability register.
enum _GEV_GVCP_CAPABILITIES : std::uint32_t {
    GEV_CAPABILITY_CONCATENATION = 1u << 0, ///< Several registers per READREG or WRITEREG.
    GEV_CAPABILITY_WRITEMEM = 1u << 1,
    GEV_CAPABILITY_EVENT = 1u << 3,
    GEV_CAPABILITY_EVENTDATA = 1u << 4,
    GEV_CAPABILITY_PENDING_ACK = 1u << 5,
    GEV_CAPABILITY_PRIMARY_APPLICATION = 1u << 27, ///< Port and address of the application in control can be read.
    GEV_CAPABILITY_SERIAL_NUMBER = 1u << 30,
    GEV_CAPABILITY_USER_DEFINED_NAME = 1u << 31
};

/// Host-order bit of the device mode register: the device is big-endian.
constexpr std::uint32_t GEV_DEVICE_MODE_BIG_ENDIAN = 1u << 31;

/// Enabled or supported IP configuration modes. One big-endian 32-bit word on the wire; this is the host-order view.
struct GEV_IP_CONFIG {
    std::uint32_t PersistentIP : 1; ///< bit 0
    std::uint32_t DHCP : 1;         ///< bit 1
    std::uint32_t LLA : 1;          ///< bit 2, link-local address (Auto IP)
    std::uint32_t Reserved : 29;
};
static_assert(sizeof(GEV_IP_CONFIG) == 4, "one register");

/// Masks of GEV_IP_CONFIG for code that handles the raw host-order word.
enum _GEV_IP_CONFIG_MASKS : std::uint32_t {
    GEV_IP_CONFIG_PERSISTENT_IP = 1u << 0,
    GEV_IP_CONFIG_DHCP = 1u << 1,
    GEV_IP_CONFIG_LLA = 1u << 2
};

#pragma pack(push, 1)

struct GVCP_REQUEST_HEADER {
    std::uint8_t FortyTwo;
    std::uint8_t Flags;
    std::uint16_t Command;
    std::uint16_t Length; ///< payload bytes after this header
    std::uint16_t ReqId;
};

struct GVCP_RESPONSE_HEADER {
    std::uint16_t Status; ///< GEV_STATUS
    std::uint16_t Acknowledge;
    std::uint16_t Length; ///< payload bytes after this header
    std::uint16_t AckId;
};

struct GEV_IPV4_VIEW {
    std::uint8_t Zero[12];
    std::uint32_t Address;
};

/// Address field of 16 bytes; IPv4 uses the last four, the others are zero.
union GEV_IP_ADDRESS {
    GEV_IPV4_VIEW IPv4;
    std::uint8_t IPv6[16];
};

/// MAC address field: the first two octets stand in the low half of High, the last four in Low.
struct GEV_MAC_ADDRESS {
    std::uint32_t High;
    std::uint32_t Low;
};

struct GEV_VERSION {
    std::uint16_t Minor; ///< low half of the host-order word
    std::uint16_t Major; ///< high half of the host-order word
};

struct GEV_DEVICE_MODE {
    std::uint32_t CharacterSetIndex : 8;
    std::uint32_t Reserved : 23;
    std::uint32_t Endianess : 1; ///< 1: big-endian device
};

/// Text fields of the device; zero padded, without terminator when the text fills the field.
struct GV_DEVICE_DESCRIPTION {
    char ManufacturerName[32];
    char ModelName[32];
    char DeviceVersion[32];
    char ManufacturerInformation[48];
    char SerialNumber[16];
    char UserDefinedName[16];
};

/// Payload of DISCOVERY_ACK and start of the bootstrap register space.
///
/// As delivered by Gx::Enumerator the words before Description are in host order, IPv4 addresses included.
struct GEV_DISCOVERY_INFO {
    GEV_VERSION SpecVersion;
    GEV_DEVICE_MODE DeviceMode;
    GEV_MAC_ADDRESS DeviceMacAddress;
    GEV_IP_CONFIG IPConfigOptions;
    GEV_IP_CONFIG IPConfigCurrent;
    GEV_IP_ADDRESS CurrentIP;
    GEV_IP_ADDRESS CurrentSubnetMask;
    GEV_IP_ADDRESS DefaultGateway;
    GV_DEVICE_DESCRIPTION Description;
};

struct GVCP_DISCOVERY_RESPONSE {
    GVCP_RESPONSE_HEADER Header;
    GEV_DISCOVERY_INFO Info;
};

struct _GVCP_FORCEIP_REQUEST {
    GVCP_REQUEST_HEADER Header;
    GEV_MAC_ADDRESS MacAddress;
    GEV_IP_ADDRESS StaticIp;
    GEV_IP_ADDRESS StaticSubnetMask;
    GEV_IP_ADDRESS StaticDefaultGateway;
};

struct _GVCP_SETIPCONFIG_REQUEST {
    GVCP_REQUEST_HEADER Header;
    GEV_MAC_ADDRESS MacAddress;
    std::uint32_t IPConfiguration; ///< GEV_IP_CONFIG as a big-endian word
    GEV_IP_ADDRESS PersistantIP;
    GEV_IP_ADDRESS PersistantSubNetMask;
    GEV_IP_ADDRESS PersistantDefaultGateway;
    char UserDefinedName[16];
};

/// FORCEIP_ACK, SETIPCONFIG_ACK and ACTION_ACK are a bare header.
using GVCP_FORCEIP_RESPONSE = GVCP_RESPONSE_HEADER;
using GVCP_SETIPCONFIG_RESPONSE = GVCP_RESPONSE_HEADER;

/// READREG_CMD is a header and the addresses of registers, READREG_ACK a header and their values, WRITEREG_CMD a header
/// and items of address and data; each address, value and datum is a big-endian 32-bit word.
using GVCP_READREG_REQUEST = GVCP_REQUEST_HEADER;
using GVCP_READREG_RESPONSE = GVCP_RESPONSE_HEADER;
using GVCP_WRITEREG_REQUEST = GVCP_REQUEST_HEADER;

struct GVCP_READMEM_REQUEST {
    GVCP_REQUEST_HEADER Header;
    std::uint32_t Address;
    std::uint16_t Reserved;
    std::uint16_t Count; ///< bytes to read
};

/// READMEM_ACK and WRITEMEM_CMD start with the address; the data follow at offset 12.
struct GVCP_READMEM_RESPONSE {
    GVCP_RESPONSE_HEADER Header;
    std::uint32_t Address;
};

struct GVCP_WRITEMEM_REQUEST {
    GVCP_REQUEST_HEADER Header;
    std::uint32_t Address;
};

/// One item of the payload of WRITEREG_CMD.
struct GVCP_WRITEREG_ITEM {
    std::uint32_t Address;
    std::uint32_t Data;
};

/// WRITEREG_ACK and WRITEMEM_ACK: the index of the item or byte that failed, or the count written.
struct GVCP_WRITE_RESPONSE {
    GVCP_RESPONSE_HEADER Header;
    std::uint16_t Reserved;
    std::uint16_t Index;
};

struct GVCP_PENDING_RESPONSE {
    GVCP_RESPONSE_HEADER Header;
    std::uint16_t Reserved;
    std::uint16_t TimeToCompletion; ///< ms from the sending of this message until the acknowledge is due
};

struct _GVCP_ACTION_CMD {
    GVCP_REQUEST_HEADER Header;
    std::uint32_t DeviceKey;
    std::uint32_t GroupKey;
    std::uint32_t GroupMask;
    std::int64_t ActionTime; ///< scheduled form only
};

#pragma pack(pop)

static_assert(sizeof(GVCP_REQUEST_HEADER) == 8 && offsetof(GVCP_REQUEST_HEADER, Flags) == 1 &&
              offsetof(GVCP_REQUEST_HEADER, Command) == 2 && offsetof(GVCP_REQUEST_HEADER, Length) == 4 &&
              offsetof(GVCP_REQUEST_HEADER, ReqId) == 6);
static_assert(sizeof(GVCP_RESPONSE_HEADER) == 8 && offsetof(GVCP_RESPONSE_HEADER, Acknowledge) == 2 &&
              offsetof(GVCP_RESPONSE_HEADER, Length) == 4 && offsetof(GVCP_RESPONSE_HEADER, AckId) == 6);
static_assert(sizeof(GEV_IP_ADDRESS) == 16 && offsetof(GEV_IPV4_VIEW, Address) == 12);
static_assert(sizeof(GEV_MAC_ADDRESS) == 8 && offsetof(GEV_MAC_ADDRESS, Low) == 4);
static_assert(sizeof(GV_DEVICE_DESCRIPTION) == 176 && offsetof(GV_DEVICE_DESCRIPTION, ModelName) == 32 &&
              offsetof(GV_DEVICE_DESCRIPTION, DeviceVersion) == 64 &&
              offsetof(GV_DEVICE_DESCRIPTION, ManufacturerInformation) == 96 &&
              offsetof(GV_DEVICE_DESCRIPTION, SerialNumber) == 144 &&
              offsetof(GV_DEVICE_DESCRIPTION, UserDefinedName) == 160);
static_assert(sizeof(GEV_DISCOVERY_INFO) == 248 && offsetof(GEV_DISCOVERY_INFO, DeviceMode) == 4 &&
              offsetof(GEV_DISCOVERY_INFO, DeviceMacAddress) == 8 &&
              offsetof(GEV_DISCOVERY_INFO, IPConfigOptions) == 16 &&
              offsetof(GEV_DISCOVERY_INFO, IPConfigCurrent) == 20 && offsetof(GEV_DISCOVERY_INFO, CurrentIP) == 24 &&
              offsetof(GEV_DISCOVERY_INFO, CurrentSubnetMask) == 40 &&
              offsetof(GEV_DISCOVERY_INFO, DefaultGateway) == 56 && offsetof(GEV_DISCOVERY_INFO, Description) == 72);
static_assert(sizeof(GVCP_DISCOVERY_RESPONSE) == 256);
static_assert(sizeof(_GVCP_FORCEIP_REQUEST) == 64 && offsetof(_GVCP_FORCEIP_REQUEST, MacAddress) == 8 &&
              offsetof(_GVCP_FORCEIP_REQUEST, StaticIp) == 16 &&
              offsetof(_GVCP_FORCEIP_REQUEST, StaticSubnetMask) == 32 &&
              offsetof(_GVCP_FORCEIP_REQUEST, StaticDefaultGateway) == 48);
static_assert(sizeof(_GVCP_SETIPCONFIG_REQUEST) == 84 && offsetof(_GVCP_SETIPCONFIG_REQUEST, MacAddress) == 8 &&
              offsetof(_GVCP_SETIPCONFIG_REQUEST, IPConfiguration) == 16 &&
              offsetof(_GVCP_SETIPCONFIG_REQUEST, PersistantIP) == 20 &&
              offsetof(_GVCP_SETIPCONFIG_REQUEST, PersistantSubNetMask) == 36 &&
              offsetof(_GVCP_SETIPCONFIG_REQUEST, PersistantDefaultGateway) == 52 &&
              offsetof(_GVCP_SETIPCONFIG_REQUEST, UserDefinedName) == 68);
static_assert(sizeof(GVCP_READMEM_REQUEST) == 16 && offsetof(GVCP_READMEM_REQUEST, Address) == 8 &&
              offsetof(GVCP_READMEM_REQUEST, Count) == 14);
static_assert(sizeof(GVCP_READMEM_RESPONSE) == 12 && sizeof(GVCP_WRITEMEM_REQUEST) == 12 &&
              sizeof(GVCP_WRITEREG_ITEM) == 8 && sizeof(GVCP_WRITE_RESPONSE) == 12);
static_assert(sizeof(GVCP_PENDING_RESPONSE) == 12 && offsetof(GVCP_PENDING_RESPONSE, TimeToCompletion) == 10);
static_assert(sizeof(_GVCP_ACTION_CMD) == 28 && offsetof(_GVCP_ACTION_CMD, GroupKey) == 12 &&
              offsetof(_GVCP_ACTION_CMD, GroupMask) == 16 && offsetof(_GVCP_ACTION_CMD, ActionTime) == 20);
