#pragma once

#include "PlanChains.h"
#include "PlanTask.h"
#include "commissioning/PlanApplication.h"
#include "commissioning/Undertaking.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace commissioning {

/// A camera of a plan that is applied.
struct PlanMember {
    PlanRecord *record = nullptr;
    Camera before; ///< as it was read again
    Place place;
    PlanTask forward;
    PlanTask back;       ///< what puts it back
    std::string lasting; ///< what of it cannot be put back; a sentence, or empty
    std::unique_ptr<Undertaking> undertaking;
    bool isSent = false;      ///< something was sent to it
    bool isRestarted = false; ///< so what was written takes effect
    bool isElsewhere = false; ///< its old address is somebody's by now, so its way back leads to another
    bool isStranded = false;  ///< and none is free
    bool isOver = false;      ///< the record tells how it ended
};

using PlanMembers = std::vector<PlanMember *>;

/// Whether it is to be put back; not where two have its MAC, as its old settings could reach either.
inline bool isLost(const PlanMember *member) { return !member->forward.isDone && !member->forward.isTwin; }

template <class Test> PlanMembers those(const PlanMembers &members, Test test) {
    PlanMembers found;
    std::copy_if(members.begin(), members.end(), std::back_inserter(found), test);
    return found;
}

void append(std::string *pText, const std::string &sentence);

/// Why a camera is refused whose new address somebody keeps.
std::string takenText(const PlanMember &member);

/// Tells what became of a camera, here and in the journal, and lets go of it.
void endMember(PlanMember *pMember, PlanState state);

} // namespace commissioning
