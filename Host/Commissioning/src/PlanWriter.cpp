#include "PlanWriter.h"

#include "Judgement.h"
#include "PlanWorker.h"
#include "Registers.h"
#include "Writing.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Saving.h"
#include "commissioning/SmallChanges.h"
#include "gxapi/GvcpMessages.h"

namespace commissioning {

using namespace Corvo;

namespace {

/// A datagram is lost sooner or later; a command without an answer that does not get through twice will not the third
/// time.
constexpr int BroadcastAttempts = 2;
/// With a tenth of all datagrams lost some of hundreds of cameras lose their channel twice in a row.
constexpr int UnicastAttempts = 4;

class Writer {
public:
    Writer(IGigETransportLayer &layer, PlanTask &task)
        : m_Task(task), m_Worker(layer, task), m_Writing(m_Worker.context(), task.change, &task.result) {}

    void run() {
        // What could not be done by broadcast before is done over the temporary address now; and no command carries
        // an address that nobody can have.
        const bool skipsBroadcast = m_Task.temporary || (m_Task.change.isStaticFirst && m_Task.change.address == 0);
        m_Task.isWritten = (!skipsBroadcast && byBroadcast()) || (m_Task.isHeard && byUnicast());
        if (!m_Task.isWritten)
            explain();
    }

private:
    bool byBroadcast() {
        for (int i = 0; i < BroadcastAttempts; ++i) {
            const bool isAcknowledged =
                m_Worker.context().guarded("broadcast", [&] { return m_Writing.broadcast(m_Task.name.value_or("")); });
            if (const auto isThere = isStored(m_Task))
                return *isThere; // what is not stored now is written over a connection
            if (isAcknowledged)
                return true;
        }
        return false;
    }

    bool byUnicast() {
        for (int i = 0; i < UnicastAttempts && !m_Worker.wasDenied(); ++i) {
            const bool isSent = m_Worker.context().guarded("unicast", [&] { return m_Writing.unicast(); });
            m_Worker.context().connection.close();
            const auto isThere = isStored(whereLent(m_Task));
            if (isThere.value_or(isSent))
                return nameTooIfLent();
        }
        return false;
    }

    /// Over an address that it has only until it restarts.
    bool nameTooIfLent() {
        if (m_Task.temporary && m_Task.name) // seen when it is back
            (void)rename(m_Worker.context(), whereLent(m_Task).change.device, *m_Task.name);
        return true;
    }

    void explain() {
        Result &result = m_Task.result;
        result.text = m_Worker.wasDenied() ? "The camera is controlled by another application."
                                           : "The settings could not be written.";
        if (!m_Worker.failure().empty())
            result.text += " " + m_Worker.failure();
    }

    PlanTask &m_Task;
    PlanWorker m_Worker;
    Writing m_Writing;
};

} // namespace

std::optional<bool> isStored(const PlanTask &task) {
    if (!task.isReadable)
        return std::nullopt;
    Registers registers(task.change.device);
    const auto word = registers.read(GEV_REG_NETWORK_INTERFACE_CONFIGURATION);
    Result seen;
    seen.stored = registers.readStored();
    if (!word || !seen.stored)
        return std::nullopt;
    seen.now = task.change.device;
    seen.now->SetIpConfigCurrent(std::to_string(*word).c_str());
    return Judgement(task.change, seen).isStored();
}

void write(IGigETransportLayer &layer, PlanTask *pTask) {
    if (pTask->isAddressing) {
        Writer(layer, *pTask).run();
        return;
    }
    const PlanWorker worker(layer, *pTask);
    pTask->result = rename(worker.context(), pTask->change.device, *pTask->name);
    pTask->isWritten = pTask->isDone = pTask->result.success;
    if (!pTask->isDone && !worker.failure().empty())
        pTask->result.text += (pTask->result.text.empty() ? "" : " ") + worker.failure();
}

bool settleName(IGigETransportLayer &layer, PlanTask *pTask) {
    Result &result = pTask->result;
    PlanTask at = *pTask; // the camera as it is now
    at.change.device = *result.now;
    const PlanWorker worker(layer, at);
    if (!pTask->name) {
        if (result.path == Path::Broadcast)
            keepName(worker.context(), pTask->change.device, &result);
        return true;
    }
    if (result.now->GetUserDefinedName() == pTask->name->c_str())
        return true;
    const Result renamed = rename(worker.context(), *result.now, *pTask->name);
    if (renamed.success)
        result.now = renamed.now;
    return renamed.success;
}

} // namespace commissioning
