#include "PlanWriter.h"

#include "Judgement.h"
#include "PlanWorker.h"
#include "Registers.h"
#include "ResultText.h"
#include "Writing.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Saving.h"
#include "commissioning/SmallChanges.h"
#include "gxapi/GvcpMessages.h"

namespace commissioning {

using namespace Corvo;

namespace {

/// A datagram is lost sooner or later; what does not get through twice will not the third time.
constexpr int Attempts = 2;

class Writer {
public:
    Writer(IGigETransportLayer &layer, PlanTask &task)
        : m_Task(task), m_Worker(layer, task), m_Writing(m_Worker.context(), task.change, &task.result) {}

    void run() {
        m_Task.isWritten = byBroadcast() || byUnicast();
        if (!m_Task.isWritten)
            explain();
    }

private:
    bool byBroadcast() {
        for (int i = 0; i < Attempts; ++i) {
            const bool isAcknowledged =
                m_Worker.context().guarded("broadcast", [&] { return m_Writing.broadcast(m_Task.name.value_or("")); });
            if (const auto isStored = readBack())
                return *isStored; // what is not stored now is written over a connection
            if (isAcknowledged)
                return true;
        }
        return false;
    }

    bool byUnicast() {
        for (int i = 0; i < Attempts && !m_Worker.wasDenied(); ++i) {
            const bool isSent = m_Worker.context().guarded("unicast", [&] { return m_Writing.unicast(); });
            m_Worker.context().connection.close();
            const auto isStored = readBack();
            if (isStored.value_or(isSent))
                return true;
        }
        return false;
    }

    /// \returns none when nothing can be read.
    std::optional<bool> readBack() {
        if (!m_Task.isReadable)
            return std::nullopt;
        Registers registers(m_Task.change.device);
        const auto word = registers.read(GEV_REG_NETWORK_INTERFACE_CONFIGURATION);
        const auto stored = registers.readStored();
        if (!word || !stored)
            return std::nullopt;
        Result seen;
        seen.now = m_Task.change.device;
        seen.now->SetIpConfigCurrent(std::to_string(*word).c_str());
        seen.stored = stored;
        m_Task.result.stored = stored;
        return Judgement(m_Task.change, seen).isStored();
    }

    void explain() {
        Result &result = m_Task.result;
        result.text =
            m_Worker.wasDenied() ? "The camera is controlled by another application." : describe(m_Task.change, result);
        if (!m_Worker.failure().empty())
            result.text += " " + m_Worker.failure();
    }

    PlanTask &m_Task;
    PlanWorker m_Worker;
    Writing m_Writing;
};

} // namespace

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
