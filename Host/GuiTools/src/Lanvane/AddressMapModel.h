#pragma once

#include "commissioning/Neighbourhood.h"

#include <QAbstractTableModel>
#include <QColor>

#include <array>
#include <set>
#include <vector>

/// Who has which address of an adapter's subnet, as 16 rows of 16 addresses: a page, of which larger subnets have
/// several. GUI thread only.
class AddressMapModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum class Kind {
        Outside, ///< of the subnet
        Reserved,
        Host,
        Camera,
        Taken,
        SpokenFor,
        Free,
        Unknown
    };
    struct Cell {
        Kind kind = Kind::Outside;
        QString who; ///< for people, without the address
    };
    struct LegendEntry {
        Kind kind = Kind::Unknown;
        QChar sign; ///< for those who cannot tell the colours
        const char *text = "";
    };
    static constexpr unsigned Side = 16;
    static const std::array<LegendEntry, 6> &legend();
    /// Of a cell's background under the application's palette.
    static QColor colourOf(Kind kind);

    /// \param spokenFor by what is planned but not done. \param known what was found out before.
    AddressMapModel(const commissioning::Inventory &inventory, const commissioning::AdapterAddress &subnet,
                    const std::set<commissioning::Address> &spokenFor, commissioning::Neighbourhood known);

    /// Turns to the page of an address, which must belong to the subnet.
    void turnTo(commissioning::Address address);
    commissioning::Address first() const { return m_First; } ///< of the page
    bool hasPrevious() const;
    bool hasNext() const;
    /// Of the page.
    std::vector<commissioning::Address> addressesOf(Kind kind) const;
    void add(const commissioning::Neighbourhood &found);
    /// All of the page are to be found out anew.
    void forgetPage();
    const commissioning::Neighbourhood &known() const { return m_Known; }

    Cell cell(commissioning::Address address) const;
    commissioning::Address addressAt(const QModelIndex &index) const;
    /// Invalid on another page.
    QModelIndex indexOf(commissioning::Address address) const;
    /// The address and who has it.
    QString describe(commissioning::Address address) const;

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int{Side}; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int{Side}; }
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    bool isOnPage(commissioning::Address address) const { return address - m_First < Side * Side; }
    QString textOf(commissioning::Address address) const;
    void changed();

    commissioning::AdapterAddress m_Subnet;
    std::map<commissioning::Address, Cell> m_Fixed; ///< of those that need not be asked for
    commissioning::Neighbourhood m_Known;
    commissioning::Address m_First = 0;
};
