#include "Report.h"

#include "Archive.h"
#include "EventText.h"
#include "ExitCode.h"
#include "FileWriting.h"
#include "HostText.h"
#include "Json.h"
#include "Pages.h"
#include "Redaction.h"
#include "Text.h"
#include "commissioning/AddressText.h"
#include "commissioning/CameraDump.h"
#include "commissioning/Journal.h"
#include "commissioning/Words.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <system_error>

using namespace commissioning;

namespace commandline {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t MaxBytes = 64u << 20;
constexpr std::size_t MaxLogBytes = 8u << 20; // of each file
constexpr std::chrono::seconds MaxTime{60};   // after which no further camera is begun

const char *const Readme = R"(Report of lanvanectl on cameras and their network

inventory.json   adapters, cameras and findings, as "lanvanectl doctor --json" prints them
findings.txt     the findings for people, with what helps
versions.txt     of lanvanectl, the kernel and the distribution
routes.txt       IPv4 routes of this host
sysctls.txt      settings of the kernel that decide what becomes of answers
counters.txt     what the kernel counts of datagrams
)";
const char *const ReadmeOfAll = R"(cameras/MAC/     of each camera:
  discovery.txt    its answers to a discovery, byte by byte
  registers.txt    its bootstrap registers
  description.xml  its GenICam description (or .zip), as it stores it
trace.log        what lanvane and lanvanectl logged last, trace.log.1 what was before
changes.jsonl    the journal of changes to cameras

It tells MAC addresses, serial numbers, names and IP addresses of cameras and of
this host. "lanvanectl report --redact" replaces them.
)";
const char *const ReadmeOfRedacted = R"(
MAC addresses, serial numbers, names of cameras and of this host, and IP addresses
are replaced, each by the same wherever it stands; addresses of one subnet still
share one. Left out, as they tell them all: what cameras say byte by byte, their
descriptions, the trace log and the journal of changes. Names of vendors, models,
adapters and programs are still there. Read it before you pass it on.
)";

std::string hexOf(const std::vector<std::uint8_t> &bytes) {
    constexpr std::size_t PerLine = 16;
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char digits[sizeof " 00"];
        std::snprintf(digits, sizeof digits, " %02X", bytes[i]);
        text += (i > 0 && i % PerLine == 0 ? "\n   " : "") + std::string(digits);
    }
    return text + "\n";
}

std::string registersText(const std::vector<RegisterDump> &registers) {
    std::string text;
    for (const RegisterDump &one : registers) {
        char heading[80];
        std::snprintf(heading, sizeof heading, "0x%04X %s:\n   ", one.address, one.name);
        text += heading + (one.bytes.empty() ? " not readable\n" : hexOf(one.bytes));
    }
    return text;
}

std::string acknowledgesText(const std::vector<Acknowledge> &acknowledges) {
    std::string text;
    for (const Acknowledge &one : acknowledges)
        text += "DISCOVERY_ACK from " + toText(one.sender) + " at the adapter with " + toText(one.adapter) +
                ", payload:\n   " + hexOf(one.bytes);
    return text;
}

bool isZip(const std::vector<std::uint8_t> &bytes) { return bytes.size() > 1 && bytes[0] == 'P' && bytes[1] == 'K'; }

class Report {
public:
    Report(const Arguments &arguments, Session &session, const Terminal &terminal)
        : m_Arguments(arguments), m_Session(session), m_Terminal(terminal) {}

    /// \returns what is said of it.
    std::string gather() {
        const std::string host = hostName();
        Inventory &inventory = m_Inventory;
        inventory = m_Session.inventory();
        std::string readme = Readme;
        if (m_Arguments.redact) {
            Redaction redaction(m_Session.diagnosis().observation, host);
            addHost([&](const std::string &text) { return redaction.hostText(text); });
            inventory = redaction.of(std::move(inventory));
            readme += ReadmeOfRedacted;
        } else {
            addHost([](const std::string &text) { return text; });
            addLogs();
            addCameras(inventory);
            readme += ReadmeOfAll;
        }
        add("inventory.json", printed(inventoryJson(inventory)));
        Arguments plain;
        plain.noColor = true;
        add("findings.txt", doctorPage(inventory, Terminal(plain)));
        std::sort(m_Remarks.begin(), m_Remarks.end());
        for (const std::string &remark : m_Remarks)
            readme += "\n" + harmless(remark);
        readme += m_Remarks.empty() ? "" : "\n";
        add("README.txt", readme);
        return readme;
    }
    /// As it stands in the report, once that is gathered.
    const Inventory &inventory() const { return m_Inventory; }
    std::string zip() const { return m_Archive.zip(); }

private:
    void add(const std::string &name, std::string content) {
        if (!m_Archive.add(name, std::move(content)))
            remark("Left out, as the report is full: " + name);
    }
    void remark(const std::string &text) {
        const std::lock_guard<std::mutex> lock(m_RemarkLock);
        m_Remarks.push_back(text);
    }

    template <class Edit> void addHost(Edit &&edit) {
        add("versions.txt", edit(versionsText()));
        add("routes.txt", edit(routesText()));
        add("sysctls.txt", edit(sysctlsText()));
        add("counters.txt", countersText());
    }

    void addLogs() {
        if (std::getenv("GENICAM_LOG_CONFIG"))
            remark("GENICAM_LOG_CONFIG is set: the trace log may be elsewhere.");
        const std::string journal = Journal::defaultPath();
        const std::string folder = journal.substr(0, journal.rfind('/') + 1);
        for (const char *name : {"trace.log", "trace.log.1", "changes.jsonl"}) {
            std::string text = endOf(folder + name, MaxLogBytes);
            if (!text.empty())
                add(name, std::move(text));
        }
    }

    void addCameras(const Inventory &inventory) {
        m_Terminal.progress("Reading the cameras...");
        for (const auto &[mac, heard] : acknowledges(m_Arguments.ask))
            add("cameras/" + mac + "/discovery.txt", acknowledgesText(heard));
        std::vector<Corvo::CQuorelGigEDeviceInfo> devices;
        for (const Camera &camera : inventory.cameras) {
            if (camera.status == Status::Ok || camera.status == Status::InUse)
                devices.push_back(m_Session.deviceOf(camera.mac));
            else
                remark("cameras/" + camera.mac + ": not read, as its state is " + toText(camera.status));
        }
        std::vector<char> isRead(devices.size());
        dumpCameras(devices, Clock::now() + MaxTime, [&](std::size_t index, const CameraDump &dump) {
            isRead[index] = 1;
            addDump("cameras/" + macOf(devices[index]), dump);
        });
        for (std::size_t i = 0; i < devices.size(); ++i) {
            if (!isRead[i])
                remark("cameras/" + macOf(devices[i]) + ": not read, as the others took too long");
        }
    }

    static std::string macOf(const Corvo::CQuorelGigEDeviceInfo &device) { return device.GetMacAddress().c_str(); }

    void addDump(const std::string &folder, const CameraDump &dump) {
        if (!dump.registers.empty())
            add(folder + "/registers.txt", registersText(dump.registers));
        if (!dump.description.empty())
            add(folder + (isZip(dump.description) ? "/description.zip" : "/description.xml"),
                {dump.description.begin(), dump.description.end()});
        else
            remark(folder + ": " + dump.problem);
    }

    const Arguments &m_Arguments;
    Session &m_Session;
    const Terminal &m_Terminal;
    Inventory m_Inventory;
    Archive m_Archive{MaxBytes};
    std::mutex m_RemarkLock;
    std::vector<std::string> m_Remarks;
};

std::string pathOf(const Arguments &arguments) {
    if (!arguments.file.empty())
        return arguments.file;
    std::string time = timeText(std::chrono::system_clock::now());
    time.erase(std::remove_if(time.begin(), time.end(), [](char c) { return c == ':' || c == '-'; }), time.end());
    return "lanvane-report-" + (arguments.redact ? "redacted" : hostName()) + "-" + time + ".zip";
}

} // namespace

int writeReport(const Arguments &arguments, Session &session, const Terminal &terminal) {
    const std::string path = pathOf(arguments);
    struct stat entry {};
    if (lstat(path.c_str(), &entry) == 0)
        throw std::system_error(EEXIST, std::generic_category(), path);
    session.search();
    const Gx::CStopScope stoppable(&session.interruption().token());
    Report report(arguments, session, terminal);
    const std::string readme = report.gather();
    if (session.interruption().isRequested())
        throw Cancelled();
    constexpr mode_t OwnersOnly = 0600;
    writeFile(path, report.zip(), OwnersOnly, Existing::Refuse);
    Json object = inventoryJson(report.inventory());
    object["report"] = path;
    terminal.print(arguments.json ? printed(object) : readme + "\nWritten: " + path + "\n");
    return ExitDone;
}

} // namespace commandline
