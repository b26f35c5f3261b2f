#pragma once

#include "Json.h"
#include "commissioning/Change.h"
#include "commissioning/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace commandline {

/// The settings of a camera, as far as they are known. For a static mode they are the stored ones.
struct Settings {
    std::optional<commissioning::Mode> mode;
    commissioning::Address address = 0;
    commissioning::Address mask = 0;
    commissioning::Address gateway = 0;
    std::string name;
};

bool operator==(const Settings &a, const Settings &b);

/// What was done to one camera, or would be.
struct ChangeRecord {
    std::string mac;
    bool changed = false;
    Settings before;
    std::optional<Settings> after; ///< none while unknown
    commissioning::Path path = commissioning::Path::None;
    commissioning::Verification verification = commissioning::Verification::None;
    std::string error;
    std::string remark; ///< what to know of a change that succeeded
    int exitCode = 0;
};

Settings settingsOf(const commissioning::Camera &camera);

/// \param failure what the operation reported last; may be empty.
ChangeRecord recordOf(const commissioning::Camera &camera, const commissioning::Result &result,
                      const std::string &failure);

/// One of the array "changes".
Json changeJson(const ChangeRecord &record);

/// Of several: that of all when they agree on success, else that some failed.
int exitCodeOf(const std::vector<ChangeRecord> &records);

} // namespace commandline
