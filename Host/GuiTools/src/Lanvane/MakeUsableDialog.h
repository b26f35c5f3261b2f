#pragma once

#include "commissioning/Neighbourhood.h"
#include "commissioning/Refusals.h"
#include "commissioning/Rescue.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

/// Asks which address a camera gets to be usable, and whether it keeps it. OK is enabled only while nothing speaks
/// against it.
class MakeUsableDialog : public QDialog {
    Q_OBJECT

public:
    /// \param proposal with the address that was found for it; 0 for none. \param pKnown what was found out of the
    /// addresses; the map adds to it. It outlives the dialog, as the inventory does.
    MakeUsableDialog(const commissioning::RescuePlan &proposal, const commissioning::Inventory &inventory,
                     const commissioning::Adapter &adapter, commissioning::Neighbourhood *pKnown, QWidget *parent);

    /// What was chosen; without a mode the camera has the address until its next restart only.
    commissioning::RescuePlan plan() const;
    bool isKept() const;

private:
    QWidget *makeAddressRow();
    void setUpModes(QLayout &layout);
    commissioning::Address address() const;
    /// Of the adapter, that of the address if it is in one.
    commissioning::AdapterAddress subnet() const;
    /// Why it cannot be done so; empty when it can.
    QString problem() const;
    void judge();
    void openMap();

    commissioning::RescuePlan m_Proposal;
    const commissioning::Inventory &m_Inventory;
    const commissioning::Adapter &m_Adapter;
    commissioning::Neighbourhood *m_pKnown;
    commissioning::AddressSurroundings m_Around;
    QLineEdit *m_Address = nullptr;
    QLabel *m_Mask;
    QLabel *m_Hint;
    QRadioButton *m_ForGood = nullptr;
    QRadioButton *m_UntilRestart = nullptr;
    QRadioButton *m_Dhcp = nullptr;
    QPushButton *m_Ok = nullptr;
};
