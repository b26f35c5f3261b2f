#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "PlanTask.h"
#include "commissioning/Context.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace commissioning {

/// Restarts cameras that have been written and waits until they are back as they should be: one search for all of them
/// in each round. One that is back with its old settings is restarted again. Never throws.
class PlanVerifier {
public:
    /// \param settled told how many of how many are back. All must outlive it.
    PlanVerifier(Corvo::IGigETransportLayer &layer, const RediscoveryPatience &patience, std::size_t atOnce,
                 std::function<void(std::size_t done, std::size_t all)> settled)
        : m_Layer(layer), m_Patience(patience), m_AtOnce(atOnce), m_Settled(std::move(settled)) {}

    void restart(const std::vector<PlanTask *> &tasks);
    /// Sets each task's result and isDone.
    void await(const std::vector<PlanTask *> &tasks);
    /// Of a camera that was heard: reads what it has stored and decides whether it has what it should.
    void settle(PlanTask &task);

private:
    void restart(PlanTask &task);
    /// Whether it can be back, so that it is worth while to ask for it, or to restart it again.
    bool hadTime(const PlanTask &task) const;
    void hear(const std::vector<PlanTask *> &open);
    void findTwins(const std::vector<PlanTask *> &tasks);
    void judge(PlanTask &task);

    Corvo::IGigETransportLayer &m_Layer;
    const RediscoveryPatience &m_Patience;
    std::size_t m_AtOnce;
    std::function<void(std::size_t, std::size_t)> m_Settled;
};

} // namespace commissioning
