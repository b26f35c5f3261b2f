#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// What is known of a host's adapters and the cameras behind them. Plain values: copies may go to any thread.
namespace commissioning {

/// IPv4 address or mask in host order; 0 stands for none.
using Address = std::uint32_t;

enum class LinkKind { Physical, Bridge, Vlan, Virtual, Wireless };

struct AdapterAddress {
    Address address = 0;
    Address mask = 0;
};

/// A link of the host, also one that no search can use.
struct Adapter {
    std::string name; ///< as the kernel names it
    int index = 0;    ///< the kernel's
    std::string mac;  ///< 12 upper-case hexadecimal digits; empty for a link without one
    LinkKind kind = LinkKind::Physical;
    bool isUp = false; ///< administrative state
    bool hasCarrier = false;
    bool canBroadcast = false;            ///< loopback and point-to-point links cannot, so no search leaves by them
    bool isPort = false;                  ///< of a bridge or bond, which has the addresses in its place
    unsigned mtu = 0;                     ///< bytes
    std::optional<unsigned> speed_Mbit_s; ///< where the driver knows it
    std::vector<AdapterAddress> addresses;
    int rpFilter = 0; ///< effective: the higher of the value for all and its own
};

enum class Mode { Static, Dhcp, Auto };

enum class Status { Ok, InUse, NotReachable, Unknown };

struct Process {
    int id = 0;
    std::string name;
};

/// Who holds control of a camera.
struct Holder {
    Address address = 0;
    std::uint16_t port = 0;
    std::optional<Process> process; ///< when it runs on this host and may be known
};

/// What a camera will use at its next start with a static address (GevPersistentIPAddress and its companions).
struct StoredAddresses {
    Address address = 0;
    Address mask = 0;
    Address gateway = 0;
};

struct Camera {
    std::string mac; ///< 12 upper-case hexadecimal digits
    std::string vendor;
    std::string model;
    std::string serial;
    std::string name;                  ///< user-defined
    std::vector<std::string> adapters; ///< names of those it was found through, sorted
    Address address = 0;
    Address mask = 0;
    Address gateway = 0;
    std::optional<Mode> mode; ///< what it is set to; none when it tells no mode
    std::uint32_t word = 0;   ///< the modes enabled, as it tells them (GEV_IP_CONFIG); mode is made of it
    std::vector<Mode> modes;  ///< those it supports
    Status status = Status::Unknown;
    std::string statusReason; ///< why the status is unknown, when the host is to blame
    std::optional<Holder> holder;
    std::optional<StoredAddresses> stored; ///< none when they could not be read
    bool hidden = false;                   ///< only a packet socket saw its answer
};

enum class Severity { Error, Warning, Info };

using Evidence = std::vector<std::pair<std::string, std::variant<std::int64_t, std::string>>>;

/// Something a search found out, with what it was found by and what helps.
struct Finding {
    std::string code; ///< stable, for programs
    Severity severity = Severity::Info;
    std::string adapter; ///< name; empty when it is about the host
    std::string camera;  ///< MAC; empty when it is about an adapter or the host
    Evidence evidence;
    std::string text;                  ///< one sentence
    std::vector<std::string> remedies; ///< commands that can be copied, the best first; each is complete by itself
};

struct Inventory {
    std::vector<Adapter> adapters;
    std::vector<Camera> cameras;
    std::vector<Finding> findings;
};

} // namespace commissioning
