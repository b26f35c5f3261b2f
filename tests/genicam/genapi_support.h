#pragma once

#include <GenApi/GenApi.h>

#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// Elements of registers.
#define PORT "<pPort>Device</pPort>"
#define REG "<AccessMode>RW</AccessMode><pPort>Device</pPort>"

namespace GenApiTest {

/// Memory behind a port, with a list of all accesses: "r100:4" is a read of 4 bytes at 0x100, "w100:0a0b" a write.
class RecordingPort : public GenApi::CPortImpl {
public:
    GenApi::EAccessMode GetAccessMode() const override { return mode; }
    void Read(void *buffer, int64_t address, int64_t length) override {
        log << 'r' << std::hex << address << ':' << std::dec << length << ' ';
        for (int64_t i = 0; i < length; ++i)
            static_cast<uint8_t *>(buffer)[i] = bytes[address + i];
    }
    void Write(const void *buffer, int64_t address, int64_t length) override {
        if (failsWrites)
            throw RUNTIME_EXCEPTION("The device does not answer");
        log << 'w' << std::hex << address << ':' << std::setfill('0');
        for (int64_t i = 0; i < length; ++i) {
            bytes[address + i] = static_cast<const uint8_t *>(buffer)[i];
            log << std::setw(2) << unsigned{bytes[address + i]};
        }
        log << ' ';
    }
    /// Bytes in hexadecimal.
    void Fill(int64_t address, const std::string &hex) {
        for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
            bytes[address++] = static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    std::string TakeLog() {
        const std::string taken = log.str();
        log.str("");
        return taken.substr(0, taken.find_last_not_of(' ') + 1);
    }

    GenApi::EAccessMode mode = GenApi::RW;
    bool failsWrites = false;
    std::map<int64_t, uint8_t> bytes;
    std::ostringstream log;
};

inline std::string Document(const std::string &nodes) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"M\" VendorName=\"V\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">" +
           nodes + "<Port Name=\"Device\"/></RegisterDescription>";
}

/// A node map over a recording port. Where the nodes have no "R" or "S", these are registers of one byte at 0 and 1.
class Camera {
public:
    explicit Camera(const std::string &nodes) : map("Device") {
        map._LoadXMLFromString(Document(nodes +
                                        "<IntReg Name='R'><Address>0</Address><Length>1</Length>" REG "</IntReg>"
                                        "<IntReg Name='S'><Address>1</Address><Length>1</Length>" REG "</IntReg>"));
        map._Connect(&port);
        if (map._GetNode("Swapping") != nullptr)
            map._Connect(&port, "Swapping");
    }
    GenApi::INode *operator[](const char *name) const { return map._GetNode(name); }

    RecordingPort port;
    GenApi::CNodeMapRef map;
};

/// The pairs of "A -> B, C -> D" and the like; without an arrow the second text is empty.
inline std::vector<std::pair<std::string, std::string>> Pairs(const std::string &text, const std::string &separator) {
    std::vector<std::pair<std::string, std::string>> pairs;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + separator.size()) {
        end = text.find(separator, start);
        const std::string pair = text.substr(start, end - start);
        const std::size_t arrow = pair.find(" -> ");
        pairs.emplace_back(pair.substr(0, arrow), arrow == std::string::npos ? "" : pair.substr(arrow + 4));
    }
    return pairs;
}

/// "AccessException" and the like, as the exception's full text names it.
inline std::string TypeOf(const GenICam::GenericException &e) {
    const std::string text = e.what();
    const std::size_t start = text.rfind(" (") + 2;
    return text.substr(start, text.find(" in ", start) - start);
}

} // namespace GenApiTest
