#pragma once

#include "commissioning/PlanApplication.h"

#include <QString>

/// How far the application of a plan is, of what it tells of its phases. The first cameras go through all phases alone,
/// then the rest does.
class PlanProgress {
public:
    explicit PlanProgress(std::size_t cameras) : m_Cameras(cameras) {}

    void take(commissioning::PlanPhase phase, std::size_t done, std::size_t all);
    int percent() const; ///< never falls
    QString text() const;

private:
    std::size_t m_Cameras;
    commissioning::PlanPhase m_Phase = commissioning::PlanPhase::Reading;
    std::size_t m_Done = 0;
    std::size_t m_All = 0;
    std::size_t m_Group = 0;  ///< cameras of the group in hand
    std::size_t m_Before = 0; ///< those of the groups before
    int m_Percent = 0;
};
