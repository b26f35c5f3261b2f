#pragma once

#include "Arguments.h"
#include "ConsoleInteraction.h"
#include "Interruption.h"
#include "Terminal.h"
#include "commissioning/Connection.h"
#include "commissioning/Context.h"
#include "commissioning/Diagnosis.h"
#include "commissioning/FreeAddresses.h"
#include "commissioning/Journal.h"
#include "commissioning/Plan.h"
#include "commissioning/Refusals.h"

#include <map>
#include <string>

namespace commandline {

/// What the commands work with: one search, and the operations on what it found.
class Session {
public:
    /// The library must be initialised. All must outlive it.
    Session(const Arguments &arguments, const Terminal &terminal, Interruption &interruption);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Searches. \throws Cancelled when it is interrupted.
    void search(commissioning::DiagnosisOptions options = {});
    /// The last search, with what is about other adapters than those asked for.
    const commissioning::Diagnosis &diagnosis() const { return m_Diagnosis; }
    /// Limited to the adapters that the user named.
    const commissioning::Inventory &inventory() const { return m_Inventory; }
    Corvo::IGigETransportLayer &layer() { return m_Layer; }

    /// As it was found; of a hidden camera what the listener saw, of any other its MAC alone.
    Corvo::CQuorelGigEDeviceInfo deviceOf(const std::string &mac);
    /// Of the adapters that the user named. \param wanted an address that the camera is to get; 0 for none.
    const commissioning::Adapter *adapterOf(const commissioning::Camera &camera,
                                            commissioning::Address wanted = 0) const;
    /// What an address for the camera is judged by.
    commissioning::AddressSurroundings surroundingsOf(const commissioning::Camera &camera,
                                                      commissioning::Address wanted = 0);
    /// Who has the new addresses of a plan. \throws Cancelled when it is interrupted.
    std::map<commissioning::Address, std::string> findTaken(const commissioning::PlanReview &review);
    commissioning::Context context();
    /// Knows all cameras and adapters, what it gave out in this run, and the address that the user named.
    commissioning::FreeAddresses &freeAddresses();
    ConsoleInteraction &interaction() { return m_Interaction; }
    Interruption &interruption() { return m_Interruption; }

private:
    std::optional<commissioning::TemporaryAddress> freeAddress(const std::string &mac, const std::string &adapterName);

    const Arguments &m_Arguments;
    const Terminal &m_Terminal;
    Interruption &m_Interruption;
    ConsoleInteraction m_Interaction;
    Corvo::IGigETransportLayer &m_Layer;
    commissioning::Diagnosis m_Diagnosis;
    commissioning::Inventory m_Inventory; ///< of it, limited to the adapters asked for
    std::optional<commissioning::FreeAddresses> m_FreeAddresses;
    commissioning::Connection m_Connection;
    commissioning::Journal m_Journal{commissioning::Journal::defaultPath()};
};

} // namespace commandline
