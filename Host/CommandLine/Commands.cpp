#include "Commands.h"

#include "ExitCode.h"
#include "JournalCommands.h"
#include "PlanCommands.h"
#include "Table.h"
#include "Text.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Parsing.h"
#include "commissioning/Rescue.h"
#include "commissioning/Saving.h"
#include "commissioning/Search.h"
#include "commissioning/Selection.h"
#include "commissioning/SmallChanges.h"
#include "commissioning/WantedAddresses.h"
#include "commissioning/Words.h"

#include <algorithm>
#include <map>

using namespace commissioning;

namespace commandline {

namespace {

ChangeRecord unchanged(const Camera &camera) {
    ChangeRecord record;
    record.mac = camera.mac;
    record.before = settingsOf(camera);
    record.after = record.before;
    return record;
}

ChangeRecord refused(const Camera &camera, const std::string &reason) {
    ChangeRecord record = unchanged(camera);
    record.error = reason;
    record.state = ChangeState::Refused;
    return record;
}

ChangeRecord wouldChange(const Camera &camera, const Settings &after, Path path = Path::None) {
    ChangeRecord record = unchanged(camera);
    record.changed = true;
    record.after = after;
    record.path = path;
    record.state = ChangeState::WouldChange;
    return record;
}

/// What a camera will have; with another mode than a static one its addresses are not known before.
Settings afterwards(const Camera &camera, std::optional<Mode> mode, Address address, Address mask, Address gateway) {
    if (mode != Mode::Static)
        return {mode, 0, 0, 0, camera.name};
    return {mode, address, mask, gateway, camera.name};
}

/// The commands on single cameras. Each gives the record of what it did, or would do.
class Changer {
public:
    Changer(const Arguments &arguments, Session &session)
        : m_Arguments(arguments), m_Session(session), m_Context(session.context()) {}

    ChangeRecord change(const Camera &camera) {
        if (const std::string twin = refusalOfTwin(camera.mac, m_Session.inventory().findings); !twin.empty())
            return refused(camera, twin);
        m_Session.interaction().start(camera.mac);
        return dispatch(camera);
    }

    /// \param address that is free.
    ChangeRecord rescueTo(const Camera &camera, const Adapter &adapter, Address address, Address mask) {
        const Mode mode = m_Arguments.mode.value_or(Mode::Static);
        const RescuePlan plan{m_Session.deviceOf(camera.mac), adapter.name, address, mask, mode};
        const AddressSurroundings around = m_Session.surroundingsOf(camera);
        std::string reason = refusalOfTwin(camera.mac, m_Session.inventory().findings);
        if (reason.empty())
            reason = refusalOf(plan, around);
        if (!reason.empty())
            return refused(camera, reason);
        if (m_Arguments.dryRun)
            return wouldChange(camera, afterwards(camera, mode, address, mask, 0));
        m_Session.interaction().start(camera.mac, TemporaryAddress{camera.mac, address, mask, 0});
        return finished(camera, probed(rescue(m_Context, plan, around)));
    }

private:
    ChangeRecord dispatch(const Camera &camera) {
        switch (m_Arguments.command) {
        case Command::Set:
            return set(camera);
        case Command::Force:
            return force(camera);
        case Command::Restart:
            return restart(camera);
        case Command::Name:
            return name(camera);
        default:
            return refused(camera, "This command changes no camera.");
        }
    }

    /// A camera that has got its address and still does not answer is not rescued.
    Result probed(Result result) const {
        if (!result.success || !result.now)
            return result;
        probe(m_Context.layer, *result.now);
        if (cameraOf(Corvo::CQuorelGigEDeviceInfo(*result.now)).status != Status::NotReachable)
            return result;
        result.success = false;
        result.text = "The camera was changed, but does not answer when it is addressed.";
        return result;
    }

    ChangeRecord finished(const Camera &camera, Result result) {
        const bool isDenied = !result.success && m_Session.interaction().wasDenied();
        result.refused = result.refused || (isDenied && result.path == Path::None);
        if (isDenied && !result.refused)
            result.text += " The camera is controlled by another application.";
        if (const auto &temporary = m_Session.interaction().temporaryAddress(); temporary && !result.now)
            result.text += " It may have the temporary address " + toText(temporary->address) + ".";
        return recordOf(camera, result, m_Session.interaction().lastFailure());
    }

    /// Who answers at the address that a camera would get. One that was not found may be behind any adapter.
    std::string refusalByOthers(const Camera &camera, Address address) {
        PlannedChange change;
        change.camera = camera;
        change.addressing = true;
        change.after.address = address;
        if (camera.adapters.empty()) {
            for (const Adapter &adapter : m_Session.inventory().adapters)
                change.camera.adapters.push_back(adapter.name);
        }
        return commissioning::refusalByOthers(address, camera.mac, m_Session.findTaken({{change}, {}}));
    }

    Change wanted(const Camera &camera) const {
        Change change;
        change.device = m_Session.deviceOf(camera.mac);
        const Adapter *adapter = m_Session.adapterOf(camera, m_Arguments.address.value_or(0));
        change.adapter = adapter ? adapter->name : "";
        change.mode = m_Arguments.mode;
        const StoredAddresses stored = knownAddresses(camera);
        const bool isStatic = change.mode == Mode::Static;
        const StoredAddresses wanted =
            isStatic ? wantedAddresses(camera, adapter, {m_Arguments.address, m_Arguments.mask, m_Arguments.gateway})
                     : stored;
        change.address = wanted.address;
        change.mask = wanted.mask;
        change.gateway = wanted.gateway;
        change.modeDiffers = camera.mode != change.mode;
        if (isStatic) {
            // What could not be read may be anything.
            change.addressDiffers =
                !camera.stored || stored.address != change.address || camera.address != change.address;
            change.maskDiffers = stored.mask != change.mask;
            change.gatewayDiffers = stored.gateway != change.gateway;
        }
        return change;
    }

    ChangeRecord set(const Camera &camera) {
        const Change change = wanted(camera);
        if (!change.modeDiffers && !change.hasAddressChanges())
            return unchanged(camera);
        std::string reason = refusalOf(change, m_Session.surroundingsOf(camera, change.address));
        if (reason.empty() && change.mode == Mode::Static)
            reason = refusalByOthers(camera, change.address);
        if (!reason.empty())
            return refused(camera, reason);
        if (m_Arguments.dryRun)
            return wouldChange(camera, afterwards(camera, change.mode, change.address, change.mask, change.gateway));
        if (change.mode == Mode::Static)
            m_Session.interaction().start(camera.mac,
                                          TemporaryAddress{camera.mac, change.address, change.mask, change.gateway});
        return finished(camera, configure(m_Context, change));
    }

    ChangeRecord force(const Camera &camera) {
        const Address address = *m_Arguments.address;
        const AdapterAddress *subnet = subnetOf(m_Session.adapterOf(camera, address), address);
        const Address mask = m_Arguments.mask.value_or(subnet ? subnet->mask : camera.mask);
        const Address gateway = m_Arguments.gateway.value_or(0);
        const auto &adapters = m_Session.inventory().adapters;
        std::string reason = refusalOfHolder(m_Session.deviceOf(camera.mac));
        if (std::none_of(adapters.begin(), adapters.end(), isUsable))
            reason = "There is no adapter that it could be sent by.";
        if (reason.empty())
            reason = refusalOfAddress(address, mask, camera.mac, m_Session.surroundingsOf(camera, address));
        if (reason.empty())
            reason = refusalOfGateway(gateway, address, mask);
        if (reason.empty())
            reason = refusalByOthers(camera, address);
        if (!reason.empty())
            return refused(camera, reason);
        if (m_Arguments.dryRun)
            return wouldChange(camera, {camera.mode, address, mask, gateway, camera.name}, Path::Force);
        return finished(
            camera, forceAddressTo(m_Context, m_Session.deviceOf(camera.mac), {camera.mac, address, mask, gateway}));
    }

    ChangeRecord restart(const Camera &camera) {
        const auto device = m_Session.deviceOf(camera.mac);
        const std::string reason = refusalOfHolder(device);
        if (!reason.empty())
            return refused(camera, reason);
        return m_Arguments.dryRun ? wouldChange(camera, settingsOf(camera))
                                  : finished(camera, commissioning::restart(m_Context, device));
    }

    ChangeRecord name(const Camera &camera) {
        if (camera.name == m_Arguments.name)
            return unchanged(camera);
        const std::string reason = refusalOfHolder(m_Session.deviceOf(camera.mac));
        if (!reason.empty())
            return refused(camera, reason);
        Settings after = settingsOf(camera);
        after.name = m_Arguments.name;
        if (m_Arguments.dryRun)
            return wouldChange(camera, after);
        return finished(camera, rename(m_Context, m_Session.deviceOf(camera.mac), m_Arguments.name));
    }

    const Arguments &m_Arguments;
    Session &m_Session;
    Context m_Context;
};

Outcome outcomeOf(std::vector<ChangeRecord> changes) {
    Outcome outcome;
    outcome.changes = std::move(changes);
    outcome.exitCode = exitCodeOf(outcome.changes);
    if (outcome.changes.size() == 1)
        outcome.error = outcome.changes.front().error;
    return outcome;
}

std::string describe(const Camera &camera) {
    return macText(camera.mac) + "  " + camera.model + "  " + camera.serial + "  " + toText(camera.address) + "  " +
           camera.name;
}

/// The one camera that a text names, else why there is none.
const Camera *findCamera(const std::string &text, const Session &session, std::string *pError) {
    const std::vector<const Camera *> cameras = camerasNamed(text, session.inventory());
    if (cameras.size() == 1)
        return cameras.front();
    *pError = cameras.empty() ? "There is no camera '" + text + "'." : "'" + text + "' is ambiguous. It could be:";
    for (const Camera *camera : cameras)
        *pError += "\n  " + harmless(describe(*camera));
    return nullptr;
}

Outcome changeOne(const Arguments &arguments, Session &session) {
    std::string error;
    const Camera *camera = findCamera(arguments.cameras.front(), session, &error);
    Camera unlisted;
    unlisted.mac = macFrom(arguments.cameras.front());
    const bool isUnknown = camerasNamed(arguments.cameras.front(), session.inventory()).empty();
    if (isUnknown && arguments.command == Command::Force && !unlisted.mac.empty()) {
        unlisted.adapters = arguments.adapters;
        camera = &unlisted;
    }
    if (!camera)
        return {ExitNotFound, {}, error};
    return outcomeOf({Changer(arguments, session).change(*camera)});
}

// Rescue

/// \returns what is wrong; empty when all were found.
std::string camerasToRescue(const Arguments &arguments, const Session &session, std::vector<const Camera *> *pCameras) {
    std::string error;
    for (const std::string &text : arguments.cameras) {
        const Camera *camera = findCamera(text, session, &error);
        if (!camera)
            return error;
        if (std::find(pCameras->begin(), pCameras->end(), camera) == pCameras->end())
            pCameras->push_back(camera);
    }
    for (const Camera &camera : session.inventory().cameras) {
        if (arguments.allCameras && needsRescue(camera, session.inventory()))
            pCameras->push_back(&camera);
    }
    return error;
}

/// One camera that is to be rescued, and the address it gets.
struct Rescue {
    const Camera *camera;
    const Adapter *adapter;
    AdapterAddress subnet;
    std::optional<Address> address;
};

std::optional<AdapterAddress> ownSubnet(const Camera &camera, const Adapter &adapter, Session &session) {
    Neighbourhood known;
    return subnetToStayIn(camera, adapter, session.surroundingsOf(camera), &known,
                          [&] { return session.interruption().isRequested(); });
}

std::vector<Rescue> planRescue(const std::vector<const Camera *> &cameras, Session &session) {
    std::vector<Rescue> rescues;
    std::map<const Adapter *, std::vector<std::size_t>> byAdapter;
    for (const Camera *camera : cameras) {
        const Adapter *adapter = session.adapterOf(*camera);
        rescues.push_back({camera, adapter, {}, {}});
        if (!adapter || !homeSubnet(*adapter))
            continue;
        if (const auto subnet = ownSubnet(*camera, *adapter, session))
            rescues.back() = {camera, adapter, *subnet, camera->address};
        else
            byAdapter[adapter].push_back(rescues.size() - 1);
    }
    FreeAddresses &free = session.freeAddresses();
    for (const auto &[adapter, indices] : byAdapter) {
        std::vector<Address> presents;
        for (const std::size_t index : indices)
            presents.push_back(cameras[index]->address);
        const AdapterAddress &subnet = *homeSubnet(*adapter);
        const auto taken = free.take(*adapter, subnet, presents, [&] { return session.interruption().isRequested(); });
        for (std::size_t i = 0; i < indices.size(); ++i) {
            rescues[indices[i]].subnet = subnet;
            rescues[indices[i]].address = taken[i];
        }
    }
    return rescues;
}

std::string rescueTable(const std::vector<Rescue> &rescues, const Arguments &arguments, int width) {
    Table table({"CAMERA", "MODEL", "NAME", "ADDRESS NOW", "ADAPTER", "NEW ADDRESS", "THEN"}, {1, 2, 4});
    for (const Rescue &rescue : rescues)
        table.add({macText(rescue.camera->mac), rescue.camera->model, rescue.camera->name,
                   toText(rescue.camera->address), rescue.adapter ? rescue.adapter->name : "",
                   rescue.address ? toText(AdapterAddress{*rescue.address, rescue.subnet.mask}) : "none is free",
                   toText(arguments.mode.value_or(Mode::Static))});
    return table.text(width);
}

Outcome rescueThem(const Arguments &arguments, Session &session, const Terminal &terminal) {
    std::vector<const Camera *> cameras;
    const std::string error = camerasToRescue(arguments, session, &cameras);
    if (!error.empty())
        return {ExitNotFound, {}, error};
    if (cameras.empty())
        return {};
    terminal.progress("Looking for free addresses...");
    const std::vector<Rescue> rescues = planRescue(cameras, session);
    if (arguments.allCameras && !arguments.dryRun && !arguments.yes) {
        const std::string question = rescueTable(rescues, arguments, terminal.width()) + "Change these cameras?";
        if (!terminal.confirms(question, [&] { return session.interruption().isRequested(); }))
            return {ExitRefused, {}, Terminal::disagreement()};
    }
    Changer changer(arguments, session);
    std::vector<ChangeRecord> records;
    for (const Rescue &rescue : rescues) {
        if (session.interruption().isRequested()) {
            records.push_back(refused(*rescue.camera, "Not begun: interrupted."));
            records.back().state = ChangeState::NotBegun;
            continue;
        }
        if (!rescue.address)
            records.push_back(refused(*rescue.camera, rescue.adapter ? "No address of the adapter's subnet is free."
                                                                     : "It is not known which adapter it is behind."));
        else
            records.push_back(changer.rescueTo(*rescue.camera, *rescue.adapter, *rescue.address, rescue.subnet.mask));
    }
    return outcomeOf(std::move(records));
}

} // namespace

Outcome carryOut(const Arguments &arguments, Session &session, const Terminal &terminal) {
    const Camera *camera = nullptr;
    const auto &findings = session.inventory().findings;
    std::string error;
    switch (arguments.command) {
    case Command::List:
        return {};
    case Command::Show:
        return {findCamera(arguments.cameras.front(), session, &error) ? ExitDone : ExitNotFound, {}, error};
    case Command::Doctor:
        return {std::any_of(findings.begin(), findings.end(),
                            [](const Finding &finding) { return finding.severity != Severity::Info; })
                    ? ExitFindings
                    : ExitDone,
                {},
                ""};
    case Command::Rescue:
        return rescueThem(arguments, session, terminal);
    case Command::PlanExport:
        return exportPlan(arguments, session, terminal);
    case Command::PlanCheck:
        return checkedFile(arguments, session).outcome;
    case Command::PlanApply:
        noteOpenChanges(session, terminal);
        return applyPlan(checkedFile(arguments, session), {}, arguments, session, terminal);
    case Command::PlanUndo:
        return undoPlan(arguments, session, terminal);
    case Command::PlanLog:
        return showLog(session, terminal);
    case Command::Undo:
        camera = findCamera(arguments.cameras.front(), session, &error);
        return camera ? undoLastChange(*camera, arguments, session, terminal) : Outcome{ExitNotFound, {}, error};
    default:
        return changeOne(arguments, session);
    }
}

} // namespace commandline
