#include "NetworkManager.h"

#include "ChildProcess.h"

#include <sstream>
#include <vector>

namespace commissioning {

namespace {

/// Fields stand between colons; a backslash takes away what is special about the next character.
std::vector<std::string> fieldsOf(const std::string &line) {
    std::vector<std::string> fields(1);
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == ':')
            fields.emplace_back();
        else if (line[i] != '\\' || ++i < line.size())
            fields.back() += line[i];
    }
    return fields;
}

} // namespace

std::map<std::string, std::string> parseManagedConnections(std::string_view text) {
    std::map<std::string, std::string> connections;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> fields = fieldsOf(line);
        if (fields.size() == 3 && fields[1].rfind("unmanaged", 0) != 0 &&
            fields[1].find("externally") == std::string::npos)
            connections[fields[0]] = fields[2];
    }
    return connections;
}

std::map<std::string, std::string> managedConnections() {
    const auto text =
        outputOf({"nmcli", "--terse", "--fields", "DEVICE,STATE,CONNECTION", "device"}, std::chrono::seconds(1));
    return parseManagedConnections(text.value_or(""));
}

} // namespace commissioning
