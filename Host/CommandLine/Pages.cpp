#include "Pages.h"

#include "Table.h"
#include "Text.h"
#include "commissioning/AddressText.h"
#include "commissioning/Survey.h"
#include "commissioning/Words.h"

#include <algorithm>
#include <set>

using namespace commissioning;

namespace commandline {

namespace {

std::string joined(const std::vector<std::string> &texts) {
    std::string all;
    for (const std::string &text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

std::string modeText(const std::optional<Mode> &mode) { return mode ? toText(*mode) : "-"; }

std::string statusText(const Camera &camera) { return camera.hidden ? "hidden" : toText(camera.status); }

std::string findingText(const Finding &finding, const Terminal &terminal) {
    std::string text = terminal.coloured(finding.severity, toText(finding.severity)) + " [" + finding.code + "] " +
                       harmless(finding.text) + "\n";
    for (const std::string &remedy : finding.remedies)
        text += "    " + harmless(remedy) + "\n";
    return text;
}

std::string settingsText(const Settings &settings) {
    std::string text = modeText(settings.mode);
    if (settings.address != 0)
        text += " " + toText(AdapterAddress{settings.address, settings.mask});
    if (settings.gateway != 0)
        text += " gateway " + toText(settings.gateway);
    return text + (settings.name.empty() ? "" : " \"" + settings.name + "\"");
}

std::string stateText(ChangeState state) {
    if (state == ChangeState::Unchanged)
        return "already so";
    if (state == ChangeState::Unconfirmed)
        return "sent, not confirmed";
    std::string text = stateWord(state);
    std::replace(text.begin(), text.end(), '-', ' ');
    return text;
}

/// Those that need attention, for a listing that is about cameras.
std::string warnings(const Inventory &inventory, const Terminal &terminal) {
    std::string text;
    for (const Finding &finding : inventory.findings) {
        if (finding.severity != Severity::Info)
            text +=
                terminal.coloured(finding.severity, toText(finding.severity)) + ": " + harmless(finding.text) + "\n";
    }
    return text.empty() ? "" : "\n" + text + "\"lanvanectl doctor\" says what helps.\n";
}

/// What may have kept the answers of cameras whose change could not be confirmed from this host.
std::string hints(const Outcome &outcome, const Inventory &inventory, const Terminal &terminal) {
    static const std::set<std::string> codes = {"hidden", "answers-filtered", "answers-blocked", "no-answer"};
    const auto isOpen = [](const Finding &finding) {
        return [&finding](const ChangeRecord &record) {
            return record.state == ChangeState::Unconfirmed && (finding.camera.empty() || finding.camera == record.mac);
        };
    };
    std::string text;
    for (const Finding &finding : inventory.findings) {
        if (codes.count(finding.code) != 0 && !finding.remedies.empty() &&
            std::any_of(outcome.changes.begin(), outcome.changes.end(), isOpen(finding)))
            text += "\n" + findingText(finding, terminal);
    }
    return text;
}

} // namespace

std::string listPage(const Inventory &inventory, const Terminal &terminal) {
    Table table({"ADAPTER", "MAC", "MODEL", "SERIAL", "NAME", "STATUS", "MODE", "ADDRESS"}, {0, 2, 3, 4});
    for (const Camera &camera : inventory.cameras)
        table.add({joined(camera.adapters), macText(camera.mac), camera.model, camera.serial, camera.name,
                   statusText(camera), modeText(camera.mode), toText(AdapterAddress{camera.address, camera.mask})});
    const auto adapters = std::count_if(inventory.adapters.begin(), inventory.adapters.end(), isUsable);
    const std::string cameras = inventory.cameras.empty() ? "No camera was found.\n" : table.text(terminal.width());
    return cameras + "\n" + counted(inventory.cameras.size(), "camera") + ", " +
           counted(static_cast<std::size_t>(adapters), "usable adapter") + "\n" + warnings(inventory, terminal);
}

std::string showPage(const Camera &camera, const Inventory &inventory, const Terminal &terminal) {
    std::string text;
    const auto line = [&text](const char *label, const std::string &value) {
        constexpr std::size_t Column = 18;
        std::string start = std::string(label) + ":";
        start.resize(std::max(Column, start.size() + 1), ' ');
        text += start + harmless(value.empty() ? "-" : value) + "\n";
    };
    std::vector<std::string> modes;
    std::transform(camera.modes.begin(), camera.modes.end(), std::back_inserter(modes),
                   [](Mode mode) { return toText(mode); });
    line("MAC", macText(camera.mac));
    line("Vendor", camera.vendor);
    line("Model", camera.model);
    line("Serial number", camera.serial);
    line("Name", camera.name);
    line("Adapter", joined(camera.adapters));
    line("Status", statusText(camera) + (camera.statusReason.empty() ? "" : ": " + camera.statusReason));
    line("Held by", camera.holder ? holderText(*camera.holder) : "");
    line("Mode", modeText(camera.mode) + " (supports " + joined(modes) + ")");
    line("Address", toText(AdapterAddress{camera.address, camera.mask}));
    line("Gateway", toText(camera.gateway));
    line("Stored address", camera.stored ? toText(AdapterAddress{camera.stored->address, camera.stored->mask}) : "");
    line("Stored gateway", camera.stored ? toText(camera.stored->gateway) : "");
    for (const Finding &finding : inventory.findings) {
        if (finding.camera == camera.mac)
            text += "\n" + findingText(finding, terminal);
    }
    return text;
}

std::string doctorPage(const Inventory &inventory, const Terminal &terminal) {
    std::string text;
    for (const Finding &finding : inventory.findings)
        text += findingText(finding, terminal) + "\n";
    const auto countOf = [&](Severity severity) {
        const auto count = std::count_if(inventory.findings.begin(), inventory.findings.end(),
                                         [&](const Finding &finding) { return finding.severity == severity; });
        return static_cast<std::size_t>(count);
    };
    return text + counted(inventory.cameras.size(), "camera") + "; " + counted(countOf(Severity::Error), "error") +
           ", " + counted(countOf(Severity::Warning), "warning") + "\n";
}

std::string changesPage(const Outcome &outcome, const Inventory &inventory, const Terminal &terminal) {
    std::string text;
    for (const ChangeRecord &record : outcome.changes) {
        text += macText(record.mac) + ": " +
                terminal.coloured(isFine(record.state) ? Severity::Info : Severity::Error, stateText(record.state));
        text += harmless(": " + settingsText(record.before));
        if (record.changed)
            text += harmless(" -> " + (record.after ? settingsText(*record.after) : "unknown"));
        text += "\n";
        for (const std::string &more : {record.error, record.remark})
            text += more.empty() ? "" : "    " + harmless(more) + "\n";
    }
    text += hints(outcome, inventory, terminal);
    return text.empty() && outcome.error.empty() ? "Nothing to do.\n" : text;
}

} // namespace commandline
