#include "Lanvane/PlanProgress.h"

#include <algorithm>

using commissioning::PlanPhase;

namespace {

/// Of a group's way, in percent.
int begin(PlanPhase phase) {
    switch (phase) {
    case PlanPhase::Reading:
    case PlanPhase::Writing:
        break;
    case PlanPhase::Restarting:
        return 40;
    case PlanPhase::Verifying:
        return 45;
    case PlanPhase::RollingBack:
        return 90;
    }
    return 0;
}

int length(PlanPhase phase) {
    switch (phase) {
    case PlanPhase::Reading:
        break;
    case PlanPhase::Writing:
        return 40;
    case PlanPhase::Restarting:
        return 5;
    case PlanPhase::Verifying:
        return 45;
    case PlanPhase::RollingBack:
        return 10;
    }
    return 0;
}

QString name(PlanPhase phase) {
    switch (phase) {
    case PlanPhase::Reading:
        return QStringLiteral("Reading the cameras again...");
    case PlanPhase::Writing:
        return QStringLiteral("Writing: %1 of %2 cameras");
    case PlanPhase::Restarting:
        return QStringLiteral("Restarting the IP configuration: %1 of %2 cameras");
    case PlanPhase::Verifying:
        return QStringLiteral("Waiting for the cameras to come back: %1 of %2");
    case PlanPhase::RollingBack:
        break;
    }
    return QStringLiteral("Putting old settings back: %1 of %2 cameras");
}

} // namespace

void PlanProgress::take(PlanPhase phase, std::size_t done, std::size_t all) {
    if (phase == PlanPhase::Writing && m_Phase != PlanPhase::Writing) {
        m_Before += m_Group;
        m_Group = all;
    }
    m_Phase = phase;
    m_Done = done;
    m_All = all;
    const double part = all == 0 ? 0 : static_cast<double>(done) / static_cast<double>(all);
    const double way = begin(phase) + part * length(phase);
    const double whole = 100.0 * static_cast<double>(m_Before) + way * static_cast<double>(m_Group);
    m_Percent = std::max(m_Percent, static_cast<int>(whole / static_cast<double>(std::max<std::size_t>(m_Cameras, 1))));
}

int PlanProgress::percent() const { return std::min(m_Percent, 100); }

QString PlanProgress::text() const {
    return m_Phase == PlanPhase::Reading ? name(m_Phase) : name(m_Phase).arg(m_Done).arg(m_All);
}
