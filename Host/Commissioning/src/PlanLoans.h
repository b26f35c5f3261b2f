#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "PlanMember.h"
#include "commissioning/FreeAddresses.h"

#include <vector>

namespace commissioning {

/// Free addresses for cameras of a plan, none of them one that the plan names: temporary ones, so that a camera in a
/// foreign subnet can be written, and lasting ones for a camera whose own is gone. One thread at a time.
class PlanLoans {
public:
    /// \param inventory must outlive it, as must the members.
    PlanLoans(const Inventory &inventory, const std::vector<PlanMember> &members);

    /// Whether a camera behind the adapter could get one.
    bool canLend(const std::string &adapter) const;
    /// One for each task, in the subnet of its adapter; all of an adapter are looked for together.
    std::vector<std::optional<TemporaryAddress>> take(const std::vector<PlanTask *> &tasks);

private:
    const Adapter *adapterOf(const std::string &name) const;
    FreeAddresses &free();

    const Inventory &m_Inventory;
    const std::vector<PlanMember> &m_Members;
    std::optional<FreeAddresses> m_Free; ///< made when it is needed, as it asks the kernel
};

/// Lends each task's camera an address and writes the task over it; one for which nothing is free stays as it is.
void writeOverLoans(Corvo::IGigETransportLayer &layer, PlanLoans &loans, const std::vector<PlanTask *> &tasks,
                    std::size_t atOnce);

} // namespace commissioning
