#pragma once

#include "commissioning/CameraLock.h"
#include "commissioning/Journal.h"
#include "commissioning/Result.h"

#include <functional>
#include <optional>

namespace commissioning {

/// What a result means for the journal. One that nobody could see the effect of is unconfirmed.
Fate fateOf(const Result &result);

/// A change of one camera while it is carried out: the camera's lock, and its entry in the journal. One that is
/// destroyed without an end leaves the entry open, as a crash does.
class Undertaking {
public:
    /// Takes the lock, then writes the entry. \param pJournal null for none, as in tests. \param entry what is known of
    /// the change; its mac counts for the lock. \param pWhole the one that this is a step of: it has the lock, and the
    /// step belongs to its plan; null for none. \param before asked under the lock; empty when the entry has it.
    /// \throws std::runtime_error with a text for people: nothing may be sent then.
    Undertaking(Journal *pJournal, JournalEntry entry, const Undertaking *pWhole = nullptr,
                const std::function<Snapshot()> &before = {});
    Undertaking(const Undertaking &) = delete;
    Undertaking &operator=(const Undertaking &) = delete;

    const JournalEntry &entry() const { return m_Entry; }
    /// Writes the end. Never throws: what was done to the camera stands, so a journal that cannot be written any more
    /// is told in the result's text.
    void end(Fate fate, Result *pResult);

private:
    std::optional<CameraLock> m_Lock;
    Journal *m_pJournal;
    JournalEntry m_Entry;
};

} // namespace commissioning
