#include "ExitCode.h"
#include "PlanCommands.h"
#include "PlanPage.h"
#include "commissioning/PlanApplication.h"

using namespace commissioning;

namespace commandline {

namespace {

ChangeState stateOf(PlanState state) {
    switch (state) {
    case PlanState::Unchanged:
        return ChangeState::Unchanged;
    case PlanState::Done:
        return ChangeState::Done;
    case PlanState::Failed:
        return ChangeState::Failed;
    case PlanState::RolledBack:
        return ChangeState::RolledBack;
    case PlanState::Unconfirmed:
        return ChangeState::Unconfirmed;
    case PlanState::NotBegun:
        break;
    }
    return ChangeState::NotBegun;
}

} // namespace

} // namespace commandline
