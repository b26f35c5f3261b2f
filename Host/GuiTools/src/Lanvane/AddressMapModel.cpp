#include "Lanvane/AddressMapModel.h"

#include "CorvoQtBase/DeviceText.h"
#include "commissioning/AddressText.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <utility>

using commissioning::Adapter;
using commissioning::AdapterAddress;
using commissioning::Address;
using commissioning::Camera;

namespace {

constexpr Address PageMask = ~Address{AddressMapModel::Side * AddressMapModel::Side - 1};

QString addressText(Address address) { return QString::fromStdString(commissioning::toText(address)); }

QString macText(const std::string &mac) { return QString::fromStdString(commissioning::macText(mac)); }

QString nameOf(const Camera &camera) {
    QString text = QStringLiteral("camera ");
    for (const std::string &part : {camera.model, camera.name}) {
        if (!part.empty())
            text += plainDeviceText(QString::fromStdString(part)) + QStringLiteral(", ");
    }
    return text + macText(camera.mac);
}

} // namespace

const std::array<AddressMapModel::LegendEntry, 6> &AddressMapModel::legend() {
    static const std::array<LegendEntry, 6> entries{{{Kind::Free, QChar(0x25CB), "Free"},
                                                     {Kind::Host, QLatin1Char('H'), "This computer"},
                                                     {Kind::Camera, QLatin1Char('C'), "Camera"},
                                                     {Kind::Taken, QChar(0x00D7), "Taken by others"},
                                                     {Kind::SpokenFor, QLatin1Char('P'), "Planned"},
                                                     {Kind::Unknown, QLatin1Char('?'), "Not asked yet"}}};
    return entries;
}

QColor AddressMapModel::colourOf(Kind kind) {
    static const std::map<Kind, QColor> hues = {{Kind::Free, QColor(0x2E, 0xA0, 0x43)},
                                                {Kind::Host, QColor(0x80, 0x50, 0xD0)},
                                                {Kind::Camera, QColor(0x1F, 0x78, 0xD1)},
                                                {Kind::Taken, QColor(0xD9, 0x53, 0x19)},
                                                {Kind::SpokenFor, QColor(0xD0, 0xA0, 0x10)}};
    QColor base = QGuiApplication::palette().color(QPalette::Base);
    const auto hue = hues.find(kind);
    if (hue == hues.end())
        return base;
    const auto mix = [](int a, int b) { return (a * 6 + b * 4) / 10; }; // the text's colour stays readable on it
    return {mix(base.red(), hue->second.red()), mix(base.green(), hue->second.green()),
            mix(base.blue(), hue->second.blue())};
}

AddressMapModel::AddressMapModel(const commissioning::Inventory &inventory, const AdapterAddress &subnet,
                                 const std::set<Address> &spokenFor, commissioning::Neighbourhood known)
    : m_Subnet(subnet), m_Known(std::move(known)) {
    const auto fix = [this](Address address, Kind kind, const QString &who) { m_Fixed.insert({address, {kind, who}}); };
    if (~subnet.mask > 1) { // else both belong to hosts
        fix(subnet.address & subnet.mask, Kind::Reserved, QStringLiteral("the network itself"));
        fix(subnet.address | ~subnet.mask, Kind::Reserved, QStringLiteral("the broadcast address"));
    }
    for (const Adapter &adapter : inventory.adapters) {
        for (const AdapterAddress &own : adapter.addresses)
            fix(own.address, Kind::Host,
                QStringLiteral("this computer (%1)").arg(QString::fromStdString(adapter.name)));
    }
    for (const Camera &camera : inventory.cameras)
        fix(camera.address, Kind::Camera, nameOf(camera));
    for (const Camera &camera : inventory.cameras) {
        if (camera.stored)
            fix(camera.stored->address, Kind::Camera, nameOf(camera) + QStringLiteral(", which has it stored"));
    }
    for (const Address address : spokenFor)
        fix(address, Kind::SpokenFor, QStringLiteral("planned for another camera"));
    turnTo(subnet.address);
}

void AddressMapModel::turnTo(Address address) {
    m_First = address & PageMask;
    changed();
}

bool AddressMapModel::hasPrevious() const { return m_First > (m_Subnet.address & m_Subnet.mask); }

bool AddressMapModel::hasNext() const { return (m_First | ~PageMask) < (m_Subnet.address | ~m_Subnet.mask); }

std::vector<Address> AddressMapModel::addressesOf(Kind kind) const {
    std::vector<Address> result;
    for (Address i = 0; i < Side * Side; ++i) {
        if (cell(m_First + i).kind == kind)
            result.push_back(m_First + i);
    }
    return result;
}

void AddressMapModel::add(const commissioning::Neighbourhood &found) {
    m_Known.free.insert(found.free.begin(), found.free.end());
    m_Known.taken.insert(found.taken.begin(), found.taken.end());
    for (const Address address : found.free) // whoever had it has left
        m_Known.taken.erase(address);
    changed();
}

void AddressMapModel::forgetPage() {
    for (Address i = 0; i < Side * Side; ++i) {
        m_Known.free.erase(m_First + i);
        m_Known.taken.erase(m_First + i);
    }
    changed();
}

AddressMapModel::Cell AddressMapModel::cell(Address address) const {
    if (!commissioning::isInSubnet(address, m_Subnet))
        return {};
    const auto fixed = m_Fixed.find(address);
    if (fixed != m_Fixed.end())
        return fixed->second;
    const auto taken = m_Known.taken.find(address);
    if (taken != m_Known.taken.end())
        return {Kind::Taken, taken->second.empty()
                                 ? QStringLiteral("another device")
                                 : QStringLiteral("another device, MAC %1").arg(macText(taken->second))};
    return m_Known.free.count(address) != 0 ? Cell{Kind::Free, QStringLiteral("free")}
                                            : Cell{Kind::Unknown, QStringLiteral("not asked yet")};
}

Address AddressMapModel::addressAt(const QModelIndex &index) const {
    return m_First + static_cast<Address>(index.row()) * Side + static_cast<Address>(index.column());
}

QModelIndex AddressMapModel::indexOf(Address address) const {
    const int offset = static_cast<int>(address - m_First);
    return isOnPage(address) ? index(offset / int{Side}, offset % int{Side}) : QModelIndex();
}

QString AddressMapModel::describe(Address address) const {
    const Cell found = cell(address);
    return found.kind == Kind::Outside ? QString() : QStringLiteral("%1: %2").arg(addressText(address), found.who);
}

QString AddressMapModel::textOf(Address address) const {
    const Kind kind = cell(address).kind;
    const QString number = QString::number(address & 0xFF);
    if (kind == Kind::Outside || kind == Kind::Reserved)
        return kind == Kind::Outside ? QString() : number;
    const auto &entries = legend();
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const LegendEntry &entry) { return entry.kind == kind; });
    return found->sign + number;
}

QVariant AddressMapModel::data(const QModelIndex &index, int role) const {
    const Address address = addressAt(index);
    switch (role) {
    case Qt::DisplayRole:
        return textOf(address);
    case Qt::ToolTipRole:
        return deviceTip(describe(address));
    case Qt::AccessibleTextRole:
        return describe(address);
    case Qt::BackgroundRole:
        return colourOf(cell(address).kind);
    case Qt::TextAlignmentRole:
        return int{Qt::AlignCenter};
    default:
        return {};
    }
}

Qt::ItemFlags AddressMapModel::flags(const QModelIndex &index) const {
    const Kind kind = cell(addressAt(index)).kind;
    if (kind == Kind::Outside)
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

void AddressMapModel::changed() { emit dataChanged(index(0, 0), index(Side - 1, Side - 1)); }
