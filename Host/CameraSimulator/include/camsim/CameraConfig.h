#pragma once

#include "camsim/Address.h"
#include "gxapi/GvcpMessages.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace camsim {

/// What a camera does with the vendor command SETIPCONFIG (0x8004).
enum class VendorIpConfig {
    Supported,
    NotImplemented, ///< Answers 0x8001, whatever MAC the command names: a camera that does not know it cannot read it.
    Error,          ///< Answers 0x8FFF to its own MAC.
    Silent
};

/// When a camera answers a command that allows a broadcast acknowledge (flag 0x10) by broadcast.
enum class BroadcastAck {
    Never,
    WhenNeeded, ///< Instead of unicast, when the requester is outside the camera's subnet.
    Always      ///< Always, and by unicast as well when that is possible.
};

/// Which address a successful FORCEIP is acknowledged from.
enum class ForceIpAck { FromNewAddress, FromOldAddress };

/// What a camera that an application holds does with FORCEIP and SETIPCONFIG.
enum class WhileControlled { Accept, Refuse /* 0x8006 */, Ignore };

/// An application that holds the control channel privilege.
struct Holder {
    Endpoint application;
    std::uint32_t privilege = GEV_CONTROL_ACCESS; ///< GEV_EXCLUSIVE_CONTROL_ACCESS or GEV_CONTROL_ACCESS
    /// The application sends heartbeats; without them the privilege expires after the heartbeat timeout.
    bool keepsAlive = true;
};

/// A stretch of device memory besides the bootstrap registers, readable by READREG and READMEM.
struct MemoryRegion {
    std::uint32_t address = 0; ///< A multiple of 4.
    std::vector<std::uint8_t> bytes;
    bool writable = true;
};

/// A stretch of addresses in device memory.
struct AddressRange {
    std::uint32_t address = 0;
    std::uint32_t size = 0; ///< bytes
};

/// Everything that makes one camera different from another; plain data, a value.
struct CameraConfig {
    MacAddress mac = MacAddress::fromNumber(0x025AE3010203);
    // Texts; longer than the field is an error, exactly as long leaves it without terminator.
    std::string manufacturer = "Ostra";         ///< at most 32 bytes
    std::string model = "Virtual Camera";       ///< at most 32 bytes
    std::string deviceVersion = "1.0";          ///< at most 32 bytes
    std::string manufacturerInfo = "simulated"; ///< at most 48 bytes
    std::string serial = "000001";              ///< at most 16 bytes
    std::string userName;                       ///< at most 16 bytes; survives a power cycle when changed over the wire

    std::uint32_t gevVersion = 0x00020000;                      ///< major in the high half, minor in the low half
    std::uint32_t deviceMode = GEV_DEVICE_MODE_BIG_ENDIAN | 1u; ///< register 0x0004; character set 1 is UTF-8
    /// Register 0x0934. The holder's address and port can be read, and the user-defined name be written, where it says
    /// so; the bit of pending acknowledges is added for a camera that sends them.
    std::uint32_t capabilities = GEV_CAPABILITY_CONCATENATION | GEV_CAPABILITY_WRITEMEM |
                                 GEV_CAPABILITY_PRIMARY_APPLICATION | GEV_CAPABILITY_SERIAL_NUMBER |
                                 GEV_CAPABILITY_USER_DEFINED_NAME;

    /// Supported modes, register 0x0010 (masks GEV_IP_CONFIG_...).
    std::uint32_t ipOptions = GEV_IP_CONFIG_PERSISTENT_IP | GEV_IP_CONFIG_DHCP | GEV_IP_CONFIG_LLA;
    /// Enabled modes, register 0x0014; bits that are not supported are never stored.
    std::uint32_t ipEnabled = GEV_IP_CONFIG_DHCP | GEV_IP_CONFIG_LLA;
    IpSettings persistent;               ///< registers 0x064C, 0x065C, 0x066C
    std::optional<IpSettings> dhcpLease; ///< What the network's DHCP server would give; none means no server.
    /// Link-local address in 169.254.0.0/16; none derives one from the MAC.
    std::optional<Ipv4> linkLocal;
    /// Address the camera has at start as if somebody had forced it; lost when its IP cycle restarts.
    std::optional<IpSettings> forced;
    /// Time between the start of the IP cycle (power on, FORCEIP to 0.0.0.0) and the first address; silent meanwhile.
    std::chrono::milliseconds restartSilence{100};
    /// Have an address at once when the simulation starts, instead of going through the silence first.
    bool bootedAtStart = true;

    VendorIpConfig vendorIpConfig = VendorIpConfig::Supported;
    BroadcastAck broadcastAck = BroadcastAck::WhenNeeded;
    ForceIpAck forceIpAck = ForceIpAck::FromNewAddress;
    WhileControlled whileControlled = WhileControlled::Refuse;

    /// false: FORCEIP and the vendor command are acknowledged with success and change nothing.
    bool appliesBroadcasts = true;
    /// So many FORCEIP to 0.0.0.0, the command to restart the IP configuration, do nothing.
    std::uint64_t ignoredRestarts = 0;
    /// Time that a write of stored settings takes: it is acknowledged that late. 65535 ms at most.
    std::chrono::milliseconds flashTime{0};
    /// Whether a PENDING_ACK announces the late acknowledge.
    bool sendsPendingAck = true;

    std::optional<Holder> heldBy; ///< An application in control from the start; lost at a power cycle.
    bool heartbeatExpires = true; ///< false: the privilege is only given back by its holder.
    std::chrono::milliseconds heartbeatTimeout{3000}; ///< initial value of register 0x0938
    /// false: answers broadcasts but nothing that is sent to its own address, as behind a wrong switch configuration.
    bool reachable = true;
    /// READMEM and WRITEMEM counts that are no multiple of 4 are served; a strict camera answers 0x8002.
    bool anyMemoryCount = false;

    /// GenICam description, plain or zipped, as stored in the camera; empty means none. Zeros pad it to 4 bytes.
    std::vector<std::uint8_t> xml;
    std::uint32_t xmlAddress = 0x10000000;
    std::string xmlFileName = "camera.xml"; ///< ".zip" for zipped content
    /// Text of the first URL register (0x0200, at most 512 bytes); none means "Local:NAME;ADDRESS;LENGTH" of the above.
    std::optional<std::string> firstUrl;
    std::string secondUrl; ///< Text of the second URL register (0x0400), at most 512 bytes.

    std::vector<MemoryRegion> memory;   ///< Memory besides bootstrap registers and XML; must not overlap them.
    std::vector<AddressRange> readOnly; ///< Registers and memory that answer 0x8004 to writes besides the usual ones.
};

/// Throws std::invalid_argument naming the member when addresses, durations or the holder make no sense. Texts and
/// memory are checked when a Camera is made of the configuration.
void checkConfig(const CameraConfig &config);

/// The GenICam description a camera of the `gvcamsim` program has by default: identity, IP configuration and a few
/// image format features over the bootstrap registers and the memory of `defaultFeatureMemory()`.
std::vector<std::uint8_t> defaultXml();
/// Registers of the features in `defaultXml()` that are not bootstrap registers.
MemoryRegion defaultFeatureMemory();

/// A configuration with `defaultXml()` and `defaultFeatureMemory()`.
CameraConfig defaultCamera();

} // namespace camsim
