#include "ConsoleInteraction.h"

#include "commissioning/AddressText.h"

using namespace commissioning;

namespace commandline {

namespace {

const char *textOf(Step step) {
    switch (step) {
    case Step::Look:
        return "reading what it has";
    case Step::Broadcast:
        return "sending the settings by broadcast";
    case Step::Connect:
        return "connecting";
    case Step::Write:
        return "writing the settings";
    case Step::Force:
        return "forcing an address";
    case Step::Rediscover:
        break;
    }
    return "waiting until it is back";
}

} // namespace

void ConsoleInteraction::start(const std::string &mac, std::optional<TemporaryAddress> planned) {
    m_Mac = mac;
    m_Planned = std::move(planned);
    m_Temporary.reset();
    m_WasDenied = false;
    m_LastFailure.clear();
}

std::shared_ptr<void> ConsoleInteraction::begin(Step step) {
    if (step != Step::Write) // a camera whose settings are half written is worse than any wait
        stopWhenAsked();
    m_Terminal.progress(macText(m_Mac) + ": " + textOf(step) + "...");
    return step == Step::Look ? std::make_shared<Gx::CStopScope>(&m_Interruption.token()) : nullptr;
}

void ConsoleInteraction::pause(std::chrono::milliseconds time) {
    m_Interruption.sleep(time);
    stopWhenAsked();
}

void ConsoleInteraction::stopWhenAsked() const {
    if (m_Interruption.isRequested())
        throw Interrupted();
}

std::optional<TemporaryAddress> ConsoleInteraction::askTemporaryAddress(const AddressQuestion &question) {
    if (!question.isFirst)
        return std::nullopt;
    m_Temporary = m_Planned ? m_Planned : m_FindAddress(question.mac, question.adapter);
    return m_Temporary;
}

void ConsoleInteraction::failure(const char * /*context*/, const std::exception_ptr &error, const char *attempted) {
    m_LastFailure = (attempted ? std::string(attempted) + ": " : std::string()) + failureText(error);
}

} // namespace commandline
