#pragma once

#include "Json.h"
#include "commissioning/Result.h"
#include "commissioning/Settings.h"

#include <optional>
#include <string>
#include <vector>

namespace commandline {

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
    int exitCode = 0;
};

/// \param failure what the operation reported last; may be empty.
ChangeRecord recordOf(const commissioning::Camera &camera, const commissioning::Result &result,
                      const std::string &failure);

/// One of the array "changes".
Json changeJson(const ChangeRecord &record);

/// Of several: that of all when they agree on success, else that some failed.
int exitCodeOf(const std::vector<ChangeRecord> &records);

} // namespace commandline
