#pragma once

#include "Lanvane/AddressMapModel.h"

#include <QDialog>

#include <atomic>
#include <memory>
#include <optional>

class QLabel;
class QPushButton;
class QTableView;
class QThread;

/// Shows who has which address of an adapter's subnet and has a free one picked, by a click or by Enter. What is not
/// known of the page shown is asked for on a thread of its own, which takes some seconds and ends with the dialog.
class AddressMap : public QDialog {
    Q_OBJECT

public:
    AddressMap(const commissioning::Adapter &adapter, const commissioning::AdapterAddress &subnet,
               std::unique_ptr<AddressMapModel> model, QWidget *parent);
    ~AddressMap() override;

    /// Turns to the page of an address and makes it the current one.
    void show(commissioning::Address address);
    /// None while none was picked.
    std::optional<commissioning::Address> picked() const { return m_Picked; }
    const AddressMapModel &model() const { return *m_Model; }

protected:
    void changeEvent(QEvent *event) override;

private:
    void setUpTable();
    QWidget *makeLegend();
    QWidget *makePageRow();
    void colourLegend();
    void turn(int pages);
    void ask();
    /// On the thread of its own.
    void askNeighbours(const std::vector<commissioning::Address> &addresses, int round);
    void stopAsking();
    void take(const commissioning::Neighbourhood &found, const QString &problem);
    void pick(const QModelIndex &index);
    void showCurrent();

    const commissioning::Adapter m_Adapter;
    const commissioning::AdapterAddress m_Subnet;
    std::unique_ptr<AddressMapModel> m_Model;
    QTableView *m_Table;
    QLabel *m_Current; ///< what is known of the current address
    QLabel *m_State;   ///< of the asking
    QLabel *m_Range = nullptr;
    QPushButton *m_Previous = nullptr;
    QPushButton *m_Next = nullptr;
    std::array<QLabel *, std::tuple_size_v<std::decay_t<decltype(AddressMapModel::legend())>>> m_Signs{};
    std::optional<commissioning::Address> m_Picked;
    std::unique_ptr<QThread> m_Asking;
    std::atomic<bool> m_IsCancelled{false};
    int m_Round = 0; ///< of asking, so that what an earlier one has left behind is told from it
};

/// Has the user pick an address that is free.
/// \param current where the map begins; 0 for the begin of the subnet. \param spokenFor by what is planned already.
/// \param pKnown what was found out before; what is found out now is added. \returns none to leave it as it is.
std::optional<commissioning::Address>
pickAddress(QWidget *parent, const commissioning::Inventory &inventory, const commissioning::Adapter &adapter,
            const commissioning::AdapterAddress &subnet, commissioning::Address current,
            const std::set<commissioning::Address> &spokenFor, commissioning::Neighbourhood *pKnown);
