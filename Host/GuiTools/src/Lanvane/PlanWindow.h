#pragma once

#include "Lanvane/Operation.h"
#include "Lanvane/PlanProgress.h"
#include "Lanvane/PlanTable.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/Journal.h"
#include "commissioning/Neighbourhood.h"

#include <QDialog>

#include <functional>
#include <map>
#include <string>
#include <vector>

class PlanModel;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableView;

/// What a plan is applied with. All of it outlives the window.
struct PlanTools {
    Operation &operation;
    Corvo::IGigETransportLayer &layer;
    commissioning::Journal &journal;
    commissioning::RediscoveryPatience patience;
    std::function<void()> prepare; ///< on the operation's thread, before anything is asked or sent
};

/// What a plan is for.
struct PlanOrder {
    QString title;
    QString note;       ///< plain text above the table; may be empty
    bool fills = false; ///< begins with static addresses counting up from the suggested one
    std::string what;   ///< for the journal
    std::string undoes; ///< id of what it takes back; empty for none
};

/// The window of a plan: its table, edited and judged as one types, and its application with a progress bar and a
/// result for each camera. What has failed differs still, so it is applied again with what the user has changed by
/// then. GUI thread only; the application runs as an operation.
class PlanWindow : public QDialog {
    Q_OBJECT

public:
    PlanWindow(const PlanTools &tools, PlanTable table, const PlanOrder &order, QWidget *parent);
    ~PlanWindow() override;

    bool wasApplied() const { return m_wasApplied; }
    /// MAC addresses of the cameras that were changed.
    const std::vector<std::string> &doneCameras() const { return m_DoneCameras; }

    /// Cancels while it is applied.
    void reject() override;

private slots:
    void fillAddresses(const QString &start);
    void apply();
    void removeSelectedRows();
    void openMap();

private:
    QWidget *createFields();
    QWidget *createStart();
    QWidget *createTable();
    QWidget *createButtons();
    QLineEdit *createField(const char *name, commissioning::PlanColumn column);
    void chooseMode();
    void showStart();
    void sizeToContent();

    void showState();
    QString stateText() const;
    /// The chosen one; while another is wrong and that one is not, the first that is wrong. -1 for none.
    int shownRow() const;
    QString rowText() const;
    void setRunning(bool isRunning);
    void showProgress(commissioning::PlanPhase phase, std::size_t done, std::size_t all);
    /// On the operation's thread.
    void carryOut();
    void showTaken(const std::map<commissioning::Address, std::string> &taken);
    void takeOutcome(const commissioning::PlanOutcome &outcome, commissioning::Inventory now);
    void showOutcome(const commissioning::PlanOutcome &outcome);

    PlanTools m_Tools;
    PlanOrder m_Order;
    PlanModel *m_pModel;
    QComboBox *m_pMode = nullptr;
    QLineEdit *m_pStart = nullptr;
    QWidget *m_pFields = nullptr;
    QTableView *m_pView = nullptr;
    QLabel *m_pMessage = nullptr;
    QProgressBar *m_pBar = nullptr;
    QPushButton *m_pRemove = nullptr;
    QPushButton *m_pApply = nullptr;
    QPushButton *m_pClose = nullptr;
    commissioning::Neighbourhood m_Known; ///< what was found out of addresses
    PlanProgress m_Progress{0};
    QString m_Summary; ///< of the last application; empty before
    std::vector<std::string> m_DoneCameras;
    bool m_isRunning = false;
    bool m_isLooking = false; ///< whether addresses are free
    bool m_wasApplied = false;
};
