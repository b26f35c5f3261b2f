#pragma once

#include "commissioning/Change.h"
#include "commissioning/Result.h"

namespace commissioning {

/// A change held against what is known of the camera since. Pure; looks at references that must outlive it.
class Judgement {
public:
    Judgement(const Change &change, const Result &result) : m_Change(change), m_Result(result) {}

    bool hasMode() const;
    bool hasAddress() const; ///< of a camera that was heard
    /// Whether the camera has restarted with the new settings, as far as a discovery shows it.
    bool hasTaken() const;
    /// Whether it needs no writing any more, only a restart.
    bool isStored() const;
    /// Whether a camera that is back has what was asked for. What it has stored counts where that could be read:
    /// whoever forges an acknowledge, or an answer to the search, has not stored anything.
    bool isDone() const;

private:
    const Change &m_Change;
    const Result &m_Result;
};

} // namespace commissioning
