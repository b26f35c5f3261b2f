#pragma once

#include "Json.h"
#include "commissioning/Result.h"
#include "commissioning/Settings.h"

#include <optional>
#include <string>
#include <vector>

namespace commandline {

/// What became of a change; the words of "state" in JSON.
enum class ChangeState { Unchanged, WouldChange, Done, Failed, RolledBack, Unconfirmed, NotBegun, Refused };

const char *stateWord(ChangeState state); ///< "unchanged", "would-change", ..., "not-begun", "refused"

/// What was done to one camera, or would be.
struct ChangeRecord {
    std::string mac;
    bool changed = false;
    commissioning::Settings before;
    std::optional<commissioning::Settings> after; ///< none while unknown
    commissioning::Path path = commissioning::Path::None;
    commissioning::Verification verification = commissioning::Verification::None;
    std::string error;
    std::string remark; ///< what to know of a change that succeeded
    ChangeState state = ChangeState::Unchanged;
    int line = 0; ///< of the plan; 0 for none
};

/// \param failure what the operation reported last; may be empty.
ChangeRecord recordOf(const commissioning::Camera &camera, const commissioning::Result &result,
                      const std::string &failure);

Json settingsJson(const commissioning::Settings &settings);
/// null for none
Json pathJson(commissioning::Path path);

/// One of the array "changes".
Json changeJson(const ChangeRecord &record);

bool isFine(ChangeState state); ///< nothing went wrong

/// Of one camera alone.
int exitCodeOf(ChangeState state);
/// Of several: that of all when they agree on success, else that some failed.
int exitCodeOf(const std::vector<ChangeRecord> &records);

} // namespace commandline
