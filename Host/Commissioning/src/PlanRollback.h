#pragma once

#include "PlanLoans.h"
#include "PlanVerifier.h"

#include <string>

namespace commissioning {

/// Puts cameras back that did not come back from their restart as they should, together with those that have got their
/// old addresses. One that answers nowhere and whose old address somebody has by now is left with what it was sent:
/// that is free.
class PlanRollback {
public:
    /// All must outlive it. \param verifier of the restarted cameras.
    PlanRollback(Corvo::IGigETransportLayer &layer, PlanLoans &loans, PlanVerifier &verifier, std::size_t atOnce)
        : m_Layer(layer), m_Loans(loans), m_Verifier(verifier), m_AtOnce(atOnce) {}

    /// Ends those that it has to do with. \param group all that were restarted together.
    void run(const PlanMembers &group);

private:
    void look(const PlanMembers &lost);
    void listen(const PlanMembers &lost);
    /// Whether another camera has an address that does not go back.
    bool isTaken(Address address, const std::string &mac, const PlanMembers &going) const;
    PlanMembers goingBack(const PlanMembers &group);
    bool isLeft(const PlanMember &member, const PlanMembers &group) const;
    void prepare(PlanMember &member);
    /// \returns those for which there was one.
    PlanMembers giveAnother(const PlanMembers &members);
    void writeBack(const PlanMembers &members);
    void writeBack(PlanMember &member);
    /// Those that were written, but whose old address is not given up.
    PlanMembers blocked(const PlanMembers &group, const PlanMembers &going);
    void stay(PlanMember &member);
    void finish(const PlanMembers &going);
    void returnLoans();
    void tell(PlanMember &member) const;

    Corvo::IGigETransportLayer &m_Layer;
    PlanLoans &m_Loans;
    PlanVerifier &m_Verifier;
    std::size_t m_AtOnce;
    Corvo::DeviceInfoList m_Heard; ///< now
    PlanMembers m_Lent;            ///< cameras that stay, but were lent an address meanwhile
};

} // namespace commissioning
