#pragma once

#include "Lanvane/NetworkAdapter.h"
#include "Lanvane/Operation.h"
#include "commissioning/Interaction.h"

#include <functional>
#include <memory>

class IpAddressWidget;
class QWidget;
class WaitBox;
class WaitCursor;

/// Runs operations off the GUI thread and is what they show and ask in the window. The functions of Interaction may be
/// called on any thread, the others on the GUI thread.
class WindowInteraction : public commissioning::Interaction {
public:
    using Reporter = std::function<void(const char *context, const std::function<void()> &work)>;
    using Updated = std::function<void(const QString &mac, std::optional<commissioning::Address> forced)>;

    /// \param window in front of which dialogs come; not owned. \param report runs a work and reports what it throws.
    /// \param adapters of the last refresh; not owned. \param updated shows a device's row anew, and takes note of the
    /// address that was forced, if one was. All three are used on the GUI thread.
    WindowInteraction(QWidget &window, Reporter report, const CNetworkAdapterList &adapters, Updated updated);
    ~WindowInteraction() override;

    /// Runs the work with the wait cursor and, when it takes longer than most, a wait box. A work that was cancelled
    /// ends without an exception. \returns whether it was not. \throws what else the work throws.
    bool run(const std::function<void()> &work);
    /// The same of a search, which takes a moment longer until there is something to wait for.
    bool runSearch(const std::function<void()> &work);
    /// The same, showing another step until the work tells of one.
    bool run(const QString &step, const std::function<void()> &work);
    /// The same without questions: a temporary address, when one is needed, is that which is planned, and failures are
    /// not shown but kept.
    bool runUnattended(const commissioning::TemporaryAddress &planned, const std::function<void()> &work);
    /// What failed last while nobody was asked; empty when nothing did.
    const QString &lastFailure() const { return m_LastFailure; }
    /// \param prelude comes before each operation, on its thread.
    void setPrelude(std::function<void()> prelude) { m_Prelude = std::move(prelude); }
    Operation &operation() { return m_Operation; }
    /// Not while something is asked: that is for the user to answer first.
    void cancel();
    bool isCancelled() const { return m_Operation.isCancelled(); }
    /// What the last operation sent to a camera.
    const std::optional<commissioning::TemporaryAddress> &sent() const { return m_Sent; }

    std::shared_ptr<void> begin(commissioning::Step step) override;
    void pause(std::chrono::milliseconds time) override;
    std::optional<commissioning::TemporaryAddress>
    askTemporaryAddress(const commissioning::AddressQuestion &question) override;
    void rejectTemporaryAddress() override;
    void accessDenied() override;
    void updated(const std::string &mac, std::optional<commissioning::Address> forced) override;
    void failure(const char *context, const std::exception_ptr &error, const char *attempted) override;

private:
    bool run(const std::function<void()> &work, const QString &step, int boxAfter_ms);
    /// Has the GUI thread ask something, with neither wait box nor wait cursor. Nothing is asked once it is cancelled.
    void ask(const std::function<void()> &question);
    void openAddressDialog(const commissioning::AddressQuestion &question);
    std::optional<commissioning::TemporaryAddress> execAddressDialog(const commissioning::AddressQuestion &question);
    /// Null for one that is not there.
    const CNetworkAdapter *adapterOf(const std::string &name) const;

    QWidget &m_Window;
    Reporter m_Report;
    const CNetworkAdapterList &m_Adapters;
    Updated m_Updated;
    std::function<void()> m_Prelude;
    Operation m_Operation;
    std::unique_ptr<WaitCursor> m_Cursor; ///< while an operation runs, as the next
    std::unique_ptr<WaitBox> m_Box;
    std::unique_ptr<IpAddressWidget> m_AddressDialog;         ///< of the last question, with what was entered
    std::optional<commissioning::TemporaryAddress> m_Entered; ///< in that dialog
    std::optional<commissioning::TemporaryAddress> m_Sent;
    bool m_IsUnattended = false;
    QString m_LastFailure;
    bool m_WasTold = false; ///< the operation knows that it is cancelled
};
