#include "PlanLoans.h"

#include "PlanWriter.h"
#include "SideBySide.h"
#include "commissioning/Survey.h"

#include <algorithm>
#include <map>
#include <system_error>

namespace commissioning {

PlanLoans::PlanLoans(const Inventory &inventory, const std::vector<PlanMember> &members)
    : m_Inventory(inventory), m_Members(members) {}

FreeAddresses &PlanLoans::free() {
    if (!m_Free) {
        m_Free.emplace(m_Inventory);
        for (const PlanMember &member : m_Members) {
            for (const Change *change : {&member.forward.change, &member.back.change})
                m_Free->exclude(change->address);
        }
    }
    return *m_Free;
}

const Adapter *PlanLoans::adapterOf(const std::string &name) const {
    const auto &all = m_Inventory.adapters;
    const auto found = std::find_if(all.begin(), all.end(), [&](const Adapter &each) { return each.name == name; });
    return found != all.end() && homeSubnet(*found) && isUsable(*found) ? &*found : nullptr;
}

bool PlanLoans::canLend(const std::string &adapter) const { return adapterOf(adapter) != nullptr; }

std::vector<std::optional<TemporaryAddress>> PlanLoans::take(const std::vector<PlanTask *> &tasks) {
    std::map<std::string, std::vector<std::size_t>> byAdapter;
    for (std::size_t i = 0; i < tasks.size(); ++i)
        byAdapter[tasks[i]->change.adapter].push_back(i);
    std::vector<std::optional<TemporaryAddress>> loans(tasks.size());
    for (const auto &[name, places] : byAdapter) {
        const Adapter *const adapter = adapterOf(name);
        if (!adapter)
            continue;
        const AdapterAddress subnet = *homeSubnet(*adapter);
        std::vector<std::optional<Address>> found(places.size());
        try {
            found = free().take(*adapter, subnet, std::vector<Address>(places.size()));
        } catch (const std::system_error &) { // the kernel does not tell, so nothing is known to be free
        }
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (found[i])
                loans[places[i]] = TemporaryAddress{tasks[places[i]]->mac(), *found[i], subnet.mask, 0};
        }
    }
    return loans;
}

void writeOverLoans(Corvo::IGigETransportLayer &layer, PlanLoans &loans, const std::vector<PlanTask *> &tasks,
                    std::size_t atOnce) {
    const std::vector<std::optional<TemporaryAddress>> found = loans.take(tasks);
    sideBySide(tasks.size(), atOnce, [&](std::size_t i) {
        tasks[i]->temporary = found[i];
        if (found[i])
            write(layer, tasks[i]);
    });
}

} // namespace commissioning
