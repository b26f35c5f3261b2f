// Lists the GigE Vision cameras on all host adapters and whether they can be opened.

#include "Base/GCException.h"
#include "MinimalCorvo/CorvoBase.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/TlFactory.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

using namespace Corvo;

namespace {

constexpr std::size_t COLUMNS = 8;
using Row = std::array<std::string, COLUMNS>;

const char *verdictText(EDeviceAccessiblityInfo verdict) {
    switch (verdict) {
    case Accessibility_Ok:
        return "ok";
    case Accessibility_Opened:
        return "in use";
    case Accessibility_OpenedExclusively:
        return "in exclusive use";
    case Accessibility_NotReachable:
        return "not reachable";
    case Accessibility_Unknown:
        break;
    }
    return "unknown";
}

std::string ipModes(const CQuorelGigEDeviceInfo &camera) {
    std::string text;
    for (const auto &[active, name] :
         {std::pair(camera.IsPersistentIpActive(), "static"), std::pair(camera.IsDhcpActive(), "DHCP"),
          std::pair(camera.IsAutoIpActive(), "auto")}) {
        if (active)
            text += (text.empty() ? "" : "+") + std::string(name);
    }
    return text;
}

/// Texts of a device may hold anything; what would drive the terminal becomes "?".
std::string printable(const char *text) {
    std::string result = text;
    std::replace_if(
        result.begin(), result.end(), [](char ch) { return (ch >= 0 && ch < ' ') || ch == '\x7F'; }, '?');
    return result;
}

Row describe(const CQuorelGigEDeviceInfo &camera, IGigETransportLayer &layer) {
    EDeviceAccessiblityInfo verdict = Accessibility_Unknown;
    layer.IsDeviceAccessible(camera, Control, &verdict);
    const String_t problem = layer.GetLastHostProblem();
    Row row = {camera.GetInterface().c_str(),
               camera.GetModelName().c_str(),
               camera.GetSerialNumber().c_str(),
               camera.GetMacAddress().c_str(),
               camera.GetIpAddress().c_str(),
               camera.GetSubnetMask().c_str(),
               ipModes(camera),
               verdictText(verdict) + std::string(problem.empty() ? "" : ": ") + problem.c_str()};
    for (std::string &cell : row)
        cell = printable(cell.c_str());
    return row;
}

void print(const std::vector<Row> &rows) {
    std::array<std::size_t, COLUMNS> widths{};
    for (const Row &row : rows) {
        for (std::size_t i = 0; i < COLUMNS; ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const Row &row : rows) {
        for (std::size_t i = 0; i < COLUMNS - 1; ++i)
            std::printf("%-*s  ", static_cast<int>(widths[i]), row[i].c_str());
        std::printf("%s\n", row.back().c_str());
    }
}

void listCameras() {
    CTlFactory &factory = CTlFactory::GetInstance();
    ITransportLayer *const pHeld = factory.CreateTl("QuorelGigE");
    auto &layer = dynamic_cast<IGigETransportLayer &>(*pHeld);
    DeviceInfoList cameras;
    layer.EnumerateAllDevices(cameras);
    const String_t problem = layer.GetLastHostProblem();
    if (!problem.empty())
        throw RUNTIME_EXCEPTION("the search failed: %s", problem.c_str());
    std::vector<Row> rows = {{"ADAPTER", "MODEL", "SERIAL", "MAC", "IP", "MASK", "IP MODE", "STATUS"}};
    for (const CDeviceInfo &camera : cameras)
        rows.push_back(describe(camera, layer));
    factory.ReleaseTl(pHeld);
    print(rows);
}

} // namespace

int main() {
    CorvoInitialize();
    int exitCode = 0;
    try {
        listCameras();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "list_cameras: %s\n", error.what());
        exitCode = 1;
    }
    CorvoTerminate();
    return exitCode;
}
