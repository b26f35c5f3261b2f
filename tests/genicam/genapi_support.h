#pragma once

#include <GenApi/GenApi.h>

#include <cstdio>
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
        char text[64];
        std::snprintf(text, sizeof text, "r%llx:%lld ", static_cast<unsigned long long>(address),
                      static_cast<long long>(length));
        log += text;
        for (int64_t i = 0; i < length; ++i)
            static_cast<uint8_t *>(buffer)[i] = bytes[address + i];
    }
    void Write(const void *buffer, int64_t address, int64_t length) override {
        if (failsWrites)
            throw RUNTIME_EXCEPTION("The device does not answer");
        char text[64];
        std::snprintf(text, sizeof text, "w%llx:", static_cast<unsigned long long>(address));
        log += text;
        for (int64_t i = 0; i < length; ++i) {
            bytes[address + i] = static_cast<const uint8_t *>(buffer)[i];
            std::snprintf(text, sizeof text, "%02x", bytes[address + i]);
            log += text;
        }
        log += ' ';
    }
    /// Bytes in hexadecimal.
    void Fill(int64_t address, const std::string &hex) {
        for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
            bytes[address++] = static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    std::string TakeLog() {
        std::string taken;
        taken.swap(log);
        return taken.substr(0, taken.find_last_not_of(' ') + 1);
    }

    GenApi::EAccessMode mode = GenApi::RW;
    bool failsWrites = false;
    std::map<int64_t, uint8_t> bytes;
    std::string log;
};

inline std::string Document(const std::string &nodes) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"M\" VendorName=\"V\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">" +
           nodes + "<Port Name=\"Device\"/></RegisterDescription>";
}

/// A node map over a recording port.
class Camera {
public:
    explicit Camera(const std::string &nodes) : map("Device") {
        map._LoadXMLFromString(Document(nodes));
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
