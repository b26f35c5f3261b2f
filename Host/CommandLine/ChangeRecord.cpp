#include "ChangeRecord.h"

#include "ExitCode.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Words.h"

#include <algorithm>

using namespace commissioning;

namespace commandline {

namespace {

Json verificationJson(Verification verification) {
    switch (verification) {
    case Verification::StoredRead:
        return "stored-read";
    case Verification::AddressSeen:
        return "address-seen";
    case Verification::None:
        break;
    }
    return nullptr;
}

ChangeState stateOf(const Result &result) {
    if (result.success)
        return ChangeState::Done;
    if (result.refused)
        return ChangeState::Refused;
    const bool isOpen = result.path != Path::None && !result.now; // nobody has seen its effect
    return isOpen ? ChangeState::Unconfirmed : ChangeState::Failed;
}

} // namespace

Json settingsJson(const Settings &settings) {
    return {{"mode", settings.mode ? Json(toText(*settings.mode)) : Json()},
            {"address", addressJson(settings.address)},
            {"mask", addressJson(settings.mask)},
            {"gateway", addressJson(settings.gateway)},
            {"name", settings.name}};
}

Json pathJson(Path path) { return path == Path::None ? Json() : Json(toText(path)); }

const char *stateWord(ChangeState state) {
    constexpr const char *Words[] = {"unchanged",   "would-change", "done",      "failed",
                                     "rolled-back", "unconfirmed",  "not-begun", "refused"};
    return Words[static_cast<std::size_t>(state)];
}

bool isFine(ChangeState state) {
    return state == ChangeState::Unchanged || state == ChangeState::Done || state == ChangeState::WouldChange;
}

int exitCodeOf(ChangeState state) {
    switch (state) {
    case ChangeState::Unchanged:
    case ChangeState::Done:
        return ExitDone;
    case ChangeState::WouldChange:
        return ExitWouldChange;
    case ChangeState::Unconfirmed:
        return ExitNotConfirmed;
    case ChangeState::Refused:
        return ExitRefused;
    case ChangeState::Failed:
    case ChangeState::RolledBack:
    case ChangeState::NotBegun:
        break;
    }
    return ExitFailed;
}

ChangeRecord recordOf(const Camera &camera, const Result &result, const std::string &failure) {
    ChangeRecord record;
    record.mac = camera.mac;
    record.before = settingsOf(camera);
    if (result.now) {
        Camera now = cameraOf(*result.now);
        now.stored = result.stored ? result.stored : now.stored;
        record.after = settingsOf(now);
    }
    const bool isSent = !result.refused && result.path != Path::None;
    record.changed = isSent && (result.success || !record.after || !(*record.after == record.before));
    record.path = result.path;
    record.verification = result.verification;
    record.state = result.success && !record.changed ? ChangeState::Unchanged : stateOf(result);
    if (result.success)
        record.remark = result.text;
    else
        record.error = result.text.empty() ? failure : result.text;
    return record;
}

Json changeJson(const ChangeRecord &record) {
    return {{"camera", macText(record.mac)},         {"changed", record.changed},
            {"before", settingsJson(record.before)}, {"after", record.after ? settingsJson(*record.after) : Json()},
            {"path", pathJson(record.path)},         {"verified", verificationJson(record.verification)},
            {"error", textOrNull(record.error)},     {"remark", textOrNull(record.remark)},
            {"state", stateWord(record.state)},      {"line", numberOrNull(record.line)}};
}

int exitCodeOf(const std::vector<ChangeRecord> &records) {
    const auto failed =
        std::count_if(records.begin(), records.end(), [](const auto &each) { return !isFine(each.state); });
    if (failed == 0) {
        const auto would = std::find_if(records.begin(), records.end(),
                                        [](const auto &each) { return each.state == ChangeState::WouldChange; });
        return would == records.end() ? ExitDone : ExitWouldChange;
    }
    return records.size() == 1 ? exitCodeOf(records.front().state) : ExitSomeFailed;
}

} // namespace commandline
