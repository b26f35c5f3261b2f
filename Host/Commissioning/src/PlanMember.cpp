#include "PlanMember.h"

#include "commissioning/AddressText.h"

namespace commissioning {

void append(std::string *pText, const std::string &sentence) {
    *pText += (pText->empty() || sentence.empty() ? "" : " ") + sentence;
}

std::string takenText(const PlanMember &member) {
    return "Another camera, which is not changed, keeps the address " + toText(member.place.gets) + ".";
}

void endMember(PlanMember *pMember, PlanState state) {
    static constexpr Fate fates[] = {Fate::Done,       Fate::Done,        Fate::Failed,
                                     Fate::RolledBack, Fate::Unconfirmed, Fate::Failed};
    pMember->record->state = state;
    pMember->isOver = true;
    if (!pMember->undertaking)
        return;
    pMember->undertaking->end(fates[static_cast<std::size_t>(state)], &pMember->record->result);
    pMember->undertaking.reset();
}

} // namespace commissioning
