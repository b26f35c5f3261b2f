#include "camsim/Scene.h"

#include "TextValues.h"
#include "camsim/Camera.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>
#include <istream>
#include <iterator>
#include <limits>
#include <utility>

namespace camsim {
namespace {

constexpr std::size_t maxCount = 65536;

/// A camera description while it is read; `count` cameras come of it.
struct CameraText {
    CameraConfig config = defaultCamera();
    std::uint64_t count = 1;
};

template <typename Target> struct Key {
    const char *name;
    const char *value; ///< what stands after "=" in the help
    const char *help;
    void (*set)(Target &, const std::string &);
};

using CameraKey = Key<CameraText>;
using FaultKey = Key<FaultConfig>;

std::vector<std::uint8_t> readFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file || bytes.empty())
        throw std::invalid_argument("cannot read '" + path + "', or it is empty");
    return bytes;
}

void setXml(CameraText &camera, const std::string &value) {
    if (value == "none") {
        camera.config.xml.clear();
        return;
    }
    camera.config.xml = readFile(value);
    camera.config.xmlFileName = value.substr(value.find_last_of('/') + 1);
}

IpSettings toUsableSettings(const std::string &value) {
    const IpSettings settings = toIpSettings(value);
    if (!settings.isUsable())
        throw std::invalid_argument("'" + value + "' is no address that a host can have");
    return settings;
}

Holder toHolder(const std::string &value) {
    const auto words = splitWords(value);
    const auto colon = words.empty() ? std::string::npos : words[0].find(':');
    if (colon == std::string::npos || words.size() > 2)
        throw std::invalid_argument("'" + value + "' is not of the form ADDRESS:PORT [control|exclusive]");
    Holder holder;
    holder.application = {Ipv4::parse(words[0].substr(0, colon)),
                          static_cast<std::uint16_t>(toNumber(words[0].substr(colon + 1), 65535))};
    if (words.size() == 2)
        holder.privilege = toChoice<std::uint32_t>(
            words[1], {{"control", GEV_CONTROL_ACCESS}, {"exclusive", GEV_EXCLUSIVE_CONTROL_ACCESS}});
    return holder;
}

std::uint32_t toIpModes(const std::string &value) {
    std::uint32_t modes = 0;
    for (const std::string &name : splitAt(value, '+'))
        modes |= toChoice<std::uint32_t>(
            name,
            {{"persistent", GEV_IP_CONFIG_PERSISTENT_IP}, {"dhcp", GEV_IP_CONFIG_DHCP}, {"lla", GEV_IP_CONFIG_LLA}});
    return modes;
}

std::uint16_t toCommand(const std::string &name) {
    if (!name.empty() && std::isdigit(static_cast<unsigned char>(name[0])) != 0)
        return static_cast<std::uint16_t>(toNumber(name, 0xFFFF));
    return toChoice<std::uint16_t>(name, {{"discovery", TAG_DISCOVERY_CMD},
                                          {"forceip", TAG_FORCEIP_CMD},
                                          {"readreg", TAG_READREG_CMD},
                                          {"writereg", TAG_WRITEREG_CMD},
                                          {"readmem", TAG_READMEM_CMD},
                                          {"writemem", TAG_WRITEMEM_CMD},
                                          {"setipconfig", TAG_SETIPCONFIG_CMD}});
}

using Text = const std::string &;

const CameraKey cameraKeys[] = {
    {"mac", "XX:XX:XX:XX:XX:XX", "Ethernet address",
     [](CameraText &c, Text v) { c.config.mac = MacAddress::parse(v); }},
    {"ip", "ADDRESS/PREFIX [via GATEWAY]", "persistent address, enabled",
     [](CameraText &c, Text v) {
         c.config.persistent = toUsableSettings(v);
         c.config.ipEnabled |= GEV_IP_CONFIG_PERSISTENT_IP;
     }},
    {"persistent", "ADDRESS/PREFIX [via GATEWAY]", "persistent address, whether enabled or not",
     [](CameraText &c, Text v) { c.config.persistent = toIpSettings(v); }},
    {"dhcp", "ADDRESS/PREFIX [via GATEWAY]", "what the DHCP server gives; without it there is no server",
     [](CameraText &c, Text v) { c.config.dhcpLease = toIpSettings(v); }},
    {"link-local", "ADDRESS", "in 169.254.0.0/16; by default made of the MAC",
     [](CameraText &c, Text v) { c.config.linkLocal = Ipv4::parse(v); }},
    {"forced", "ADDRESS/PREFIX [via GATEWAY]", "temporary address at the start",
     [](CameraText &c, Text v) { c.config.forced = toIpSettings(v); }},
    {"options", "MODE[+MODE...]", "supported IP modes of persistent, dhcp, lla",
     [](CameraText &c, Text v) { c.config.ipOptions = toIpModes(v); }},
    {"enabled", "MODE[+MODE...]", "enabled IP modes", [](CameraText &c, Text v) { c.config.ipEnabled = toIpModes(v); }},
    {"silence", "MS", "length of the IP configuration cycle",
     [](CameraText &c, Text v) { c.config.restartSilence = toMilliseconds(v); }},
    {"booted", "yes|no", "has an address at once, or goes through the IP cycle first",
     [](CameraText &c, Text v) { c.config.bootedAtStart = toBool(v); }},
    {"manufacturer", "TEXT", "at most 32 bytes", [](CameraText &c, Text v) { c.config.manufacturer = v; }},
    {"model", "TEXT", "at most 32 bytes", [](CameraText &c, Text v) { c.config.model = v; }},
    {"version", "TEXT", "at most 32 bytes", [](CameraText &c, Text v) { c.config.deviceVersion = v; }},
    {"info", "TEXT", "manufacturer information, at most 48 bytes",
     [](CameraText &c, Text v) { c.config.manufacturerInfo = v; }},
    {"serial", "TEXT", "at most 16 bytes", [](CameraText &c, Text v) { c.config.serial = v; }},
    {"name", "TEXT", "user-defined name, at most 16 bytes", [](CameraText &c, Text v) { c.config.userName = v; }},
    {"gev-version", "NUMBER", "register 0x0000, for instance 0x00010002",
     [](CameraText &c, Text v) { c.config.gevVersion = toWord(v); }},
    {"device-mode", "NUMBER", "register 0x0004, bit 31 for a big-endian device",
     [](CameraText &c, Text v) { c.config.deviceMode = toWord(v); }},
    {"capabilities", "NUMBER", "register 0x0934, bit 0 concatenation, 1 WRITEMEM, 27 holder, 30 serial number, 31 name",
     [](CameraText &c, Text v) { c.config.capabilities = toWord(v); }},
    {"vendor-config", "supported|not-implemented|error|silent", "the vendor IP-configuration command",
     [](CameraText &c, Text v) {
         c.config.vendorIpConfig = toChoice<VendorIpConfig>(v, {{"supported", VendorIpConfig::Supported},
                                                                {"not-implemented", VendorIpConfig::NotImplemented},
                                                                {"error", VendorIpConfig::Error},
                                                                {"silent", VendorIpConfig::Silent}});
     }},
    {"broadcast-ack", "never|when-needed|always", "acknowledge by broadcast when a command allows it",
     [](CameraText &c, Text v) {
         c.config.broadcastAck = toChoice<BroadcastAck>(v, {{"never", BroadcastAck::Never},
                                                            {"when-needed", BroadcastAck::WhenNeeded},
                                                            {"always", BroadcastAck::Always}});
     }},
    {"force-ip-ack", "new|old", "address that acknowledges FORCEIP",
     [](CameraText &c, Text v) {
         c.config.forceIpAck =
             toChoice<ForceIpAck>(v, {{"new", ForceIpAck::FromNewAddress}, {"old", ForceIpAck::FromOldAddress}});
     }},
    {"while-controlled", "accept|refuse|ignore", "FORCEIP and the vendor command while an application has control",
     [](CameraText &c, Text v) {
         c.config.whileControlled = toChoice<WhileControlled>(v, {{"accept", WhileControlled::Accept},
                                                                  {"refuse", WhileControlled::Refuse},
                                                                  {"ignore", WhileControlled::Ignore}});
     }},
    {"applies", "yes|no", "no: acknowledges FORCEIP and the vendor command but stays as it is",
     [](CameraText &c, Text v) { c.config.appliesBroadcasts = toBool(v); }},
    {"ignored-restarts", "N|all", "so many commands to restart the IP configuration do nothing",
     [](CameraText &c, Text v) {
         constexpr auto all = std::numeric_limits<std::uint64_t>::max();
         c.config.ignoredRestarts = v == "all" ? all : toNumber(v, all);
     }},
    {"flash", "MS", "a write of stored settings takes so long",
     [](CameraText &c, Text v) { c.config.flashTime = std::chrono::milliseconds(toNumber(v, 65535)); }},
    {"pending-ack", "yes|no", "announces an acknowledge that takes so long, or is just late",
     [](CameraText &c, Text v) { c.config.sendsPendingAck = toBool(v); }},
    {"held-by", "ADDRESS:PORT [control|exclusive]", "an application has control from the start",
     [](CameraText &c, Text v) { c.config.heldBy = toHolder(v); }},
    {"heartbeat", "MS", "heartbeat timeout",
     [](CameraText &c, Text v) { c.config.heartbeatTimeout = toMilliseconds(v); }},
    {"heartbeat-expires", "yes|no", "control ends without heartbeats",
     [](CameraText &c, Text v) { c.config.heartbeatExpires = toBool(v); }},
    {"reachable", "yes|no", "no: answers broadcasts only",
     [](CameraText &c, Text v) { c.config.reachable = toBool(v); }},
    {"any-memory-count", "yes|no", "serve memory accesses that are no multiple of 4 bytes",
     [](CameraText &c, Text v) { c.config.anyMemoryCount = toBool(v); }},
    {"xml", "FILE|none", "GenICam description, plain or zipped", setXml},
    {"xml-address", "NUMBER", "where it stands in the camera's memory",
     [](CameraText &c, Text v) { c.config.xmlAddress = toWord(v); }},
    {"url", "TEXT", "first URL register, as it is", [](CameraText &c, Text v) { c.config.firstUrl = v; }},
    {"url2", "TEXT", "second URL register", [](CameraText &c, Text v) { c.config.secondUrl = v; }},
    {"count", "N", "that many cameras; MAC, addresses, serial and name count up",
     [](CameraText &c, Text v) {
         c.count = toNumber(v, maxCount);
         if (c.count == 0)
             throw std::invalid_argument("there must be at least one");
     }},
};

const FaultKey faultKeys[] = {
    {"loss-to-camera", "PERCENT", "commands lost", [](FaultConfig &f, Text v) { f.lossToCamera = toPercent(v); }},
    {"loss-from-camera", "PERCENT", "acknowledges lost",
     [](FaultConfig &f, Text v) { f.lossFromCamera = toPercent(v); }},
    {"wrong-id", "PERCENT", "request id plus 1", [](FaultConfig &f, Text v) { f.wrongId = toPercent(v); }},
    {"wrong-code", "PERCENT", "acknowledge code 0x7FFF", [](FaultConfig &f, Text v) { f.wrongCode = toPercent(v); }},
    {"short", "PERCENT", "acknowledges cut", [](FaultConfig &f, Text v) { f.shortAck = toPercent(v); }},
    {"long", "PERCENT", "random bytes appended", [](FaultConfig &f, Text v) { f.longAck = toPercent(v); }},
    {"stale-id", "PERCENT", "first a copy with the request id minus 1",
     [](FaultConfig &f, Text v) { f.staleId = toPercent(v); }},
    {"garbage", "PERCENT", "first a random datagram", [](FaultConfig &f, Text v) { f.garbage = toPercent(v); }},
    {"duplicate", "PERCENT", "acknowledges sent twice", [](FaultConfig &f, Text v) { f.duplicate = toPercent(v); }},
    {"reorder", "PERCENT", "acknowledges sent after the next one",
     [](FaultConfig &f, Text v) { f.reorder = toPercent(v); }},
    {"delay", "MS[-MS]", "delay of every acknowledge, or its range",
     [](FaultConfig &f, Text v) {
         const auto dash = v.find('-');
         f.delayMin = toMilliseconds(v.substr(0, dash));
         f.delayMax = dash == std::string::npos ? f.delayMin : toMilliseconds(v.substr(dash + 1));
     }},
    {"silent-after", "N", "silence for good after N commands",
     [](FaultConfig &f, Text v) { f.silentAfter = toNumber(v, FaultConfig::unlimited); }},
    {"deaf-after", "N", "an outage starts with the command after N of them",
     [](FaultConfig &f, Text v) { f.deafAfter = toNumber(v, FaultConfig::unlimited); }},
    {"outage", "MS", "its length; nothing is heard meanwhile",
     [](FaultConfig &f, Text v) { f.outage = toMilliseconds(v); }},
    {"limit", "N", "only the first N commands are exposed to faults",
     [](FaultConfig &f, Text v) { f.limit = toNumber(v, FaultConfig::unlimited); }},
    {"commands", "NAME[+NAME...]", "only these: discovery, forceip, readreg, writereg, readmem, writemem, setipconfig",
     [](FaultConfig &f, Text v) {
         f.commands.clear();
         for (const std::string &name : splitAt(v, '+'))
             f.commands.push_back(toCommand(name));
     }},
};

template <typename Target, std::size_t N>
void setKey(const Key<Target> (&keys)[N], Target &target, const std::string &name, const std::string &value) {
    const auto key = std::find_if(std::begin(keys), std::end(keys), [&](const auto &k) { return name == k.name; });
    if (key == std::end(keys))
        throw SceneError("unknown key '" + name + "'");
    try {
        key->set(target, value);
    } catch (const std::invalid_argument &error) {
        throw SceneError(name + ": " + error.what() + " (expected " + name + "=" + key->value + ")");
    }
}

template <typename Target, std::size_t N> std::string helpOf(const Key<Target> (&keys)[N]) {
    std::string help;
    for (const auto &key : keys)
        help += std::string("    ") + key.name + "=" + key.value + "\n        " + key.help + "\n";
    return help;
}

std::pair<std::string, std::string> splitPair(const std::string &text) {
    const auto equals = text.find('=');
    if (equals == std::string::npos)
        throw SceneError("'" + text + "' is not of the form key=value");
    return {trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1))};
}

template <typename Target, std::size_t N>
void setAll(const Key<Target> (&keys)[N], Target &target, const std::string &text) {
    for (const std::string &item : splitAt(text, ',')) {
        const auto [name, value] = splitPair(item);
        setKey(keys, target, name, value);
    }
}

void countUp(IpSettings &settings, std::uint32_t step) {
    const IpSettings first = settings;
    settings.address.value += step;
    if (!first.inSubnet(settings.address) || (first.isUsable() && !settings.isUsable()))
        throw SceneError("count: the addresses run out of the subnet of " + first.address.toString() + "/" +
                         std::to_string(first.prefixLength()));
}

/// The camera `step` places after the described one.
CameraConfig variation(CameraConfig config, std::uint32_t step) {
    config.mac = MacAddress::fromNumber(config.mac.toNumber() + step);
    if (config.persistent.address)
        countUp(config.persistent, step);
    for (std::optional<IpSettings> *settings : {&config.dhcpLease, &config.forced})
        if (*settings)
            countUp(**settings, step);
    if (config.linkLocal)
        config.linkLocal->value += step;
    config.serial = countedUp(config.serial, step);
    config.userName = countedUp(config.userName, step);
    return config;
}

std::vector<CameraConfig> expand(const CameraText &text) {
    std::vector<CameraConfig> cameras;
    for (std::uint32_t i = 0; i < text.count; ++i) {
        cameras.push_back(variation(text.config, i));
        try {
            const Camera checked(cameras.back(), {});
        } catch (const std::invalid_argument &error) {
            throw SceneError(error.what());
        }
    }
    return cameras;
}

void checkFaults(const FaultConfig &faults) {
    try {
        faults.check();
    } catch (const std::invalid_argument &error) {
        throw SceneError(error.what());
    }
}

/// Reads a scene line by line; a camera is complete when the next section starts.
class SceneReader {
public:
    void line(const std::string &text) {
        if (text.empty() || text[0] == '#' || text[0] == ';')
            return;
        if (text[0] == '[') {
            startSection(text);
            return;
        }
        const auto [name, value] = splitPair(text);
        if (camera_)
            setKey(cameraKeys, *camera_, name, value);
        else if (inFaults_)
            setKey(faultKeys, scene_.faults, name, value);
        else
            throw SceneError("a [camera] or [faults] line must come first");
    }

    Scene finish() {
        finishCamera();
        checkFaults(scene_.faults);
        return std::move(scene_);
    }

private:
    void startSection(const std::string &text) {
        finishCamera();
        inFaults_ = text == "[faults]";
        if (text == "[camera]")
            camera_.emplace();
        else if (!inFaults_)
            throw SceneError("'" + text + "' is no section; expected [camera] or [faults]");
    }

    void finishCamera() {
        if (!camera_)
            return;
        const auto cameras = expand(*camera_);
        scene_.cameras.insert(scene_.cameras.end(), cameras.begin(), cameras.end());
        camera_.reset();
    }

    Scene scene_;
    std::optional<CameraText> camera_;
    bool inFaults_ = false;
};

} // namespace

Scene readScene(std::istream &text, const std::string &name) {
    SceneReader reader;
    std::size_t number = 0;
    try {
        for (std::string line; std::getline(text, line);) {
            ++number;
            reader.line(trimmed(line));
        }
        return reader.finish();
    } catch (const SceneError &error) {
        throw SceneError(name + ":" + std::to_string(number) + ": " + error.what());
    }
}

Scene loadScene(const std::string &path) {
    std::ifstream file(path);
    if (!file)
        throw SceneError("cannot read the scene file '" + path + "'");
    return readScene(file, path);
}

std::vector<CameraConfig> parseCameras(const std::string &text) {
    CameraText camera;
    setAll(cameraKeys, camera, text);
    return expand(camera);
}

FaultConfig parseFaults(const std::string &text) {
    FaultConfig faults;
    setAll(faultKeys, faults, text);
    checkFaults(faults);
    return faults;
}

std::string cameraKeysHelp() { return helpOf(cameraKeys); }
std::string faultKeysHelp() { return helpOf(faultKeys); }

} // namespace camsim
