#include "commissioning/Undertaking.h"

#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"

#include <stdexcept>
#include <utility>

namespace commissioning {

namespace {

std::string failureText(const Journal &journal, const std::exception &error) {
    const std::string path = journal.path().empty() ? "" : " " + journal.path();
    return "The journal of changes" + path + " cannot be written (" + error.what() + ")";
}

Snapshot afterOf(const Result &result) {
    Camera camera = cameraOf(*result.now);
    camera.stored = result.stored;
    return snapshotOf(camera);
}

} // namespace

Fate fateOf(const Result &result) {
    if (result.success)
        return Fate::Done;
    const bool isOpen = result.path != Path::None && !result.now; // nobody has seen its effect
    return isOpen ? Fate::Unconfirmed : Fate::Failed;
}

Undertaking::Undertaking(Journal *pJournal, JournalEntry entry, const Undertaking *pWhole,
                         const std::function<Snapshot()> &before)
    : m_pJournal(pJournal), m_Entry(std::move(entry)) {
    if (pWhole)
        m_Entry.plan = pWhole->entry().plan;
    else
        m_Lock.emplace(m_Entry.mac);
    if (before)
        m_Entry.before = before();
    if (!m_pJournal)
        return;
    try {
        m_pJournal->begin(&m_Entry);
    } catch (const std::exception &error) {
        throw std::runtime_error(failureText(*m_pJournal, error) + ", so nothing was sent to the camera.");
    }
}

void Undertaking::end(Fate fate, Result *pResult) {
    m_Entry.fate = fate;
    m_Entry.path = pResult->path;
    m_Entry.text = pResult->text;
    if (pResult->now)
        m_Entry.after = afterOf(*pResult);
    if (!m_pJournal)
        return;
    try {
        m_pJournal->end(m_Entry);
    } catch (const std::exception &error) {
        pResult->text += (pResult->text.empty() ? "" : " ") + failureText(*m_pJournal, error) +
                         ": it does not tell how this change ended.";
    }
}

} // namespace commissioning
