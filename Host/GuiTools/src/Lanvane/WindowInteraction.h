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
    using Updated = std::function<void(const QString &mac, std::optional<commissioning::Address> forced)>;

    /// \param window in front of which dialogs come; not owned. \param report runs a work and reports what it throws.
    /// \param adapters of the last refresh; not owned. \param updated shows a device's row anew, and takes note of the
    /// address that was forced, if one was.
    WindowInteraction(QWidget &window, Reporter report, const CNetworkAdapterList &adapters, Updated updated);
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
    /// Null for one that is not there.
    const CNetworkAdapter *adapterOf(const std::string &name) const;

    QWidget &m_Window;
    Reporter m_Report;
    const CNetworkAdapterList &m_Adapters;
    Updated m_Updated;
    std::unique_ptr<IpAddressWidget> m_AddressDialog; ///< of the last question, with what was entered
};
