#include "PlanVerifier.h"

#include "Answers.h"
#include "Base/GCException.h"
#include "Judgement.h"
#include "PlanWriter.h"
#include "Registers.h"
#include "ResultText.h"
#include "SideBySide.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"

#include <algorithm>
#include <thread>

namespace commissioning {

using namespace Corvo;

namespace {

using Clock = std::chrono::steady_clock;

/// A search takes a quarter of a second.
constexpr int RoundsInPause = 4;

} // namespace

bool PlanVerifier::hadTime(const PlanTask &task) const { return Clock::now() - task.restarted >= m_Patience.pause; }

void PlanVerifier::restart(PlanTask &task) {
    ++task.restarts;
    task.restarted = Clock::now();
    try {
        m_Layer.RestartIpConfiguration(task.change.device.GetMacAddress());
    } catch (const GenICam::GenericException &) { // it is sent again when the camera is seen with its old settings
    }
}

void PlanVerifier::restart(const std::vector<PlanTask *> &tasks) {
    sideBySide(tasks.size(), m_AtOnce, [&](std::size_t i) { restart(*tasks[i]); });
}

void PlanVerifier::await(const std::vector<PlanTask *> &tasks) {
    std::vector<PlanTask *> open = tasks;
    const auto deadline = Clock::now() + m_Patience.rounds * m_Patience.pause;
    while (!open.empty() && Clock::now() < deadline) {
        std::this_thread::sleep_for(m_Patience.pause / RoundsInPause);
        hear(open);
        sideBySide(open.size(), m_AtOnce, [&](std::size_t i) { judge(*open[i]); });
        open.erase(std::remove_if(open.begin(), open.end(), [](const PlanTask *task) { return task->isDone; }),
                   open.end());
        m_Settled(tasks.size() - open.size(), tasks.size());
    }
    for (PlanTask *const task : tasks)
        task->result.text = describe(task->change, task->result);
    findTwins(tasks);
}

/// One may have come since the cameras were read.
void PlanVerifier::findTwins(const std::vector<PlanTask *> &tasks) {
    Answers answers;
    try {
        discover(m_Layer, answers.options());
    } catch (const std::exception &) { // of this host, as above
    }
    for (PlanTask *const task : tasks) {
        if (!answers.isTwin(task->mac()))
            continue;
        task->isTwin = true;
        task->isDone = task->result.success = false;
        task->result.text = "By now another camera has the same MAC address: the change may have reached either.";
    }
}

void PlanVerifier::hear(const std::vector<PlanTask *> &open) {
    DeviceInfoList heard;
    try {
        heard = discover(m_Layer);
    } catch (const std::exception &) { // of this host; the next round may fare better
    }
    sideBySide(open.size(), m_AtOnce, [&](std::size_t i) {
        PlanTask &task = *open[i];
        DeviceInfoList asked;
        const CDeviceInfo *found = findByMac(heard, task.mac());
        if (!found && task.expectedAddress() != 0 && hadTime(task)) {
            ask(task.expectedAddress(), asked);
            found = findByMac(asked, task.mac());
        }
        task.result.now.reset();
        if (found)
            task.result.now = *found;
    });
}

void PlanVerifier::judge(PlanTask &task) {
    if (!task.result.now)
        return;
    // The restart is one datagram, which may be lost, and some cameras forget it.
    if (Judgement(task.change, task.result).hasTaken() || task.restarts > m_Patience.restarts)
        settle(task);
    else if (hadTime(task))
        restart(task);
}

void PlanVerifier::settle(PlanTask &task) {
    Result &result = task.result;
    result.stored = Registers(*result.now).readStored();
    result.verification = result.stored ? Verification::StoredRead : Verification::AddressSeen;
    if (!Judgement(task.change, result).isDone())
        return;
    task.isDone = true;
    result.success = settleName(m_Layer, &task);
}

} // namespace commissioning
