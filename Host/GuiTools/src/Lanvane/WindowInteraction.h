#pragma once

#include "Lanvane/NetworkAdapter.h"
#include "commissioning/Interaction.h"

#include <functional>
#include <memory>

class IpAddressWidget;
class QWidget;

/// What operations show and ask in the window. GUI thread only.
class WindowInteraction : public commissioning::Interaction {
public:
    using Reporter = std::function<void(const char *context, const std::function<void()> &work)>;
    using AdapterFinder = std::function<const CNetworkAdapter *(const QString &name)>;

    /// \param window in front of which dialogs come; not owned. \param report runs a work and reports what it throws.
    /// \param adapterOf null for an adapter that is not there. \param updated shows a device's row anew.
    WindowInteraction(QWidget &window, Reporter report, AdapterFinder adapterOf,
                      std::function<void(const QString &mac)> updated);
    ~WindowInteraction() override;

    std::shared_ptr<void> begin(commissioning::Step step) override;
    void pause(std::chrono::milliseconds time) override;
    std::optional<commissioning::TemporaryAddress>
    askTemporaryAddress(const commissioning::AddressQuestion &question) override;
    void rejectTemporaryAddress() override;
    void accessDenied() override;
    void updated(const std::string &mac, std::optional<commissioning::Address> forced) override;
    void failure(const char *context, const std::exception_ptr &error, const char *attempted) override;

private:
    void openAddressDialog(const commissioning::AddressQuestion &question);

    QWidget &m_Window;
    Reporter m_Report;
    AdapterFinder m_AdapterOf;
    std::function<void(const QString &)> m_Updated;
    std::unique_ptr<IpAddressWidget> m_AddressDialog; ///< of the last question, with what was entered
};
