#include "Lanvane/WindowInteraction.h"

#include "CorvoQtBase/errorhandling.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/WaitBox.h"
#include "Lanvane/WaitIndication.h"
#include "Lanvane/ipaddresswidget.h"

#include <QDebug>
#include <QMessageBox>

#include <algorithm>

using commissioning::AddressQuestion;
using commissioning::Step;
using commissioning::TemporaryAddress;

namespace {

/// First half of the MAC addresses of the maker's devices, for the user to complete.
constexpr const char *MacPrefix = "02-5A-E3-";

void prepareDialog(IpAddressWidget &dialog, const QString &mac, const QNetworkAddressEntry &host) {
    dialog.setWindowTitle(QStringLiteral("Assign Temporary IP Address (Force IP)"));
    // What may not be used at all is refused later, with an explanation.
    dialog.setAllowMulticastAddress(true);
    dialog.setAllowExperiemntalPurposeAddress(true);
    dialog.setIpAddress(SuggestIPAddress(host));
    if (!host.netmask().isNull())
        dialog.setSubnetMask(host.netmask().toString());
    dialog.setDefaultGateway(QStringLiteral("0.0.0.0"));
    dialog.setMacAddress(mac.isEmpty() ? QString::fromLatin1(MacPrefix) : mac);
}

QString connectionHeader(const CNetworkAdapter *adapter) {
    return QStringLiteral("A connection to the device must be established in order to change the configuration.<br>To "
                          "do this, a temporary IP address needs to be assigned to the device.<br>This temporary "
                          "address will only be used to update the configuration and will not be stored on the "
                          "device.<br>Valid addresses are:<br>") +
           FormatSubnetAddresses(adapter);
}

QString textOf(Step step) {
    switch (step) {
    case Step::Look:
        return QStringLiteral("Reading the device's present settings...");
    case Step::Broadcast:
        return QStringLiteral("Sending the configuration to the device...");
    case Step::Connect:
        return QStringLiteral("Trying to establish a connection to the device...");
    case Step::Write:
        return QStringLiteral("Writing and checking the configuration...");
    case Step::Force:
        return QStringLiteral("Assigning the temporary IP address...");
    case Step::Rediscover:
        break;
    }
    return QStringLiteral(
        "Camera restarts its IP configuration cycle.\nWaiting until the device has been discovered again...");
}

constexpr int BoxAfter_ms = 200;
constexpr int BoxOfSearchAfter_ms = 500; // most searches are over by then

} // namespace

WindowInteraction::WindowInteraction(QWidget &window, Reporter report, const CNetworkAdapterList &adapters,
                                     Updated updated)
    : m_Window(window), m_Report(std::move(report)), m_Adapters(adapters), m_Updated(std::move(updated)) {}

WindowInteraction::~WindowInteraction() = default;

bool WindowInteraction::run(const std::function<void()> &work) {
    return run(work, QStringLiteral("Looking for the device..."), BoxAfter_ms);
}

bool WindowInteraction::runSearch(const std::function<void()> &work) {
    return run(work, QStringLiteral("Searching for devices..."), BoxOfSearchAfter_ms);
}

bool WindowInteraction::run(const QString &step, const std::function<void()> &work) {
    return run(work, step, BoxAfter_ms);
}

bool WindowInteraction::runUnattended(const TemporaryAddress &planned, const std::function<void()> &work) {
    const auto end = [this](void *) { m_IsUnattended = false; }; // also by an exception
    const std::unique_ptr<void, decltype(end)> atEnd(this, end);
    m_IsUnattended = true;
    m_LastFailure.clear();
    m_Entered = planned;
    return run(work);
}

bool WindowInteraction::run(const std::function<void()> &work, const QString &step, int boxAfter_ms) {
    const auto end = [this](void *) { // also by an exception
        m_Box.reset();
        m_Cursor.reset();
    };
    const std::unique_ptr<void, decltype(end)> atEnd(this, end);
    m_WasTold = false;
    m_Sent.reset();
    m_Cursor = std::make_unique<WaitCursor>();
    m_Box = std::make_unique<WaitBox>(&m_Window, [this] { cancel(); });
    m_Box->setStep(step);
    m_Box->showAfter(boxAfter_ms);
    try {
        m_Operation.run([&] {
            m_Prelude();
            work();
        });
    } catch (...) {
        if (!isCancelled())
            throw;
    }
    return !isCancelled();
}

void WindowInteraction::cancel() {
    if (m_Cursor) // which is not there meanwhile
        m_Operation.cancel();
}

std::shared_ptr<void> WindowInteraction::begin(Step step) {
    // What has begun to write goes on, and what asks how a cancelled operation has ended does, too.
    if (isCancelled() && (step != Step::Write || !m_WasTold)) {
        m_WasTold = true;
        throw OperationCancelled();
    }
    if (step == Step::Force)
        m_Sent = m_Entered;
    m_Operation.onGui([this, step] { m_Box->setStep(textOf(step)); });
    const bool isSafeToStop = step != Step::Broadcast && step != Step::Write;
    return isSafeToStop ? std::make_shared<Gx::CStopScope>(m_Operation.token()) : nullptr;
}

void WindowInteraction::pause(std::chrono::milliseconds time) { m_Operation.pause(time); }

void WindowInteraction::ask(const std::function<void()> &question) {
    m_Operation.onGui([&] {
        if (isCancelled()) {
            m_WasTold = true;
            return;
        }
        m_Box->withdraw();
        m_Cursor.reset();
        question();
        m_Cursor = std::make_unique<WaitCursor>();
        m_Box->showAfter(BoxAfter_ms);
    });
}

const CNetworkAdapter *WindowInteraction::adapterOf(const std::string &name) const {
    const auto found = std::find_if(m_Adapters.begin(), m_Adapters.end(), [&](const CNetworkAdapter &adapter) {
        return adapter.name() == QString::fromStdString(name);
    });
    return found == m_Adapters.end() ? nullptr : &*found;
}

void WindowInteraction::openAddressDialog(const AddressQuestion &question) {
    const CNetworkAdapter *adapter = adapterOf(question.adapter);
    m_AddressDialog = std::make_unique<IpAddressWidget>(&m_Window);
    prepareDialog(*m_AddressDialog, QString::fromStdString(question.mac), firstIPv4Entry(adapter));
    m_AddressDialog->setHeaderText(question.text.empty() ? connectionHeader(adapter)
                                                         : QString::fromStdString(question.text));
    m_AddressDialog->setShowMacAddress(question.asksForMac);
    m_AddressDialog->setHostEntries(addressEntriesOf(m_Adapters));
}

std::optional<TemporaryAddress> WindowInteraction::execAddressDialog(const AddressQuestion &question) {
    if (question.isFirst)
        openAddressDialog(question);
    const bool comesAfterAnAttempt = !question.isFirst || question.text.empty();
    if (comesAfterAnAttempt)
        discardUserInput(); // typed before there was a question
    m_AddressDialog->setNoticeText(QString::fromStdString(question.reason));
    if (m_AddressDialog->exec() != QDialog::Accepted) {
        m_AddressDialog.reset();
        return std::nullopt;
    }
    QString mac = m_AddressDialog->macAddress();
    fixupMacAddress(mac);
    return TemporaryAddress{mac.toUpper().toStdString(),
                            ipv4AddressFromText(m_AddressDialog->ipAddress()).toIPv4Address(),
                            ipv4AddressFromText(m_AddressDialog->subnetMask()).toIPv4Address(),
                            ipv4AddressFromText(m_AddressDialog->defaultGateway()).toIPv4Address()};
}

std::optional<TemporaryAddress> WindowInteraction::askTemporaryAddress(const AddressQuestion &question) {
    if (m_IsUnattended)
        return question.isFirst ? m_Entered : std::nullopt;
    m_Entered.reset();
    ask([&] { m_Entered = execAddressDialog(question); });
    return m_Entered;
}

void WindowInteraction::rejectTemporaryAddress() {
    ask([this] {
        QMessageBox::critical(&m_Window, QStringLiteral("Error"),
                              QStringLiteral("IP Addresses 127.0.0.1 and 224.0.0.0 to 255.255.255.255 cannot be used."),
                              QMessageBox::Ok);
    });
}

void WindowInteraction::accessDenied() {
    const QString title = QStringLiteral("Connection failed");
    const QString text = QStringLiteral("Access denied\nThe device is controlled by another application.\nClose "
                                        "the connection before changing the IP configuration.");
    ask([&] {
        discardUserInput(); // else a key typed meanwhile would close the box unread
        showWarningMessage(title, QStringLiteral("openDevice"), text, &m_Window);
        QMessageBox::warning(&m_Window, title, text);
    });
}

void WindowInteraction::updated(const std::string &mac, std::optional<commissioning::Address> forced) {
    m_Operation.onGui([&] { m_Updated(QString::fromStdString(mac), forced); });
}

void WindowInteraction::failure(const char *context, const std::exception_ptr &error, const char *attempted) {
    if (attempted)
        qDebug("%s: %s", context, attempted);
    if (m_Operation.isRunning() && isCancelled()) { // that is why
        m_WasTold = true;
        return;
    }
    if (m_IsUnattended) {
        m_LastFailure = QString::fromStdString(commissioning::failureText(error));
        return;
    }
    m_Operation.onGui([&] { m_Report(context, [&error] { std::rethrow_exception(error); }); });
}
