// DeviceTree: its header, with the widths and the order of the columns.

#include "Lanvane/DeviceTree.h"

#include <QAction>
#include <QHeaderView>
#include <QSettings>

#include <algorithm>

namespace {

constexpr int HeaderVersion = 2;
constexpr int MinNameChars = 8; // of a model, that a column makes room for
constexpr int MaxNameChars = 24;

} // namespace

void DeviceTree::setUpHeader() {
    header()->setSectionsClickable(true);
    connect(header(), &QHeaderView::sectionClicked, this, &DeviceTree::sortBy);
    header()->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto *showName = new QAction(QStringLiteral("&Name"), header());
    showName->setCheckable(true);
    connect(showName, &QAction::triggered, this, [this](bool isShown) { setColumnHidden(ColUserName, !isShown); });
    header()->addAction(showName);
    showName->setChecked(true);
}

bool DeviceTree::areColumnWidthsUsual() const {
    const int last = header()->logicalIndex(columnCount() - 1); // fills the rest
    for (int column = 0; column < columnCount(); ++column) {
        if (column != last && columnWidth(column) != m_UsualWidths[static_cast<std::size_t>(column)])
            return false;
    }
    return true;
}

void DeviceTree::setUsualColumnWidths() {
    // Until there are devices to go by.
    const char *const usual[] = {"Model Name",         "00000000",        "025AE3000000",  "Not Reachable",
                                 "Static IP, Auto IP", "192.168.100.100", "255.255.255.0", "Camera 1"};
    for (int column = ColName; column <= ColUserName; ++column) {
        const int textWidth = fontMetrics().horizontalAdvance(QLatin1String(usual[column]));
        const int iconWidth = 2 * iconSize().width();
        m_UsualWidths.push_back(std::max(textWidth + iconWidth, header()->sectionSizeHint(column)));
        setColumnWidth(column, m_UsualWidths.back());
    }
}

void DeviceTree::restoreHeader(const QSettings &settings) {
    if (settings.value("headerver").toInt() == HeaderVersion)
        m_areColumnsSized = header()->restoreState(settings.value("header").toByteArray()) &&
                            settings.value("headersized", true).toBool();
    header()->setSortIndicatorShown(false); // the order is not kept
    header()->actions().first()->setChecked(!isColumnHidden(ColUserName));
}

void DeviceTree::saveHeader(QSettings &settings) const {
    settings.setValue("headerver", HeaderVersion);
    settings.setValue("header", header()->saveState());
    settings.setValue("headersized", m_areColumnsSized || !areColumnWidthsUsual());
}

bool DeviceTree::sizeColumnsOnce() {
    if (m_areColumnsSized || !areColumnWidthsUsual())
        return false;
    constexpr int Gap = 8; // between the texts of neighbouring columns
    const int most = nameWidth(MaxNameChars);
    for (int column = 0; column < columnCount(); ++column) {
        resizeColumnToContents(column);
        const int width = columnWidth(column) + Gap;
        setColumnWidth(column, column == ColName ? std::min(width, most) : width);
    }
    m_areColumnsSized = true;
    return true;
}

int DeviceTree::nameWidth(int characters) const {
    return characters * fontMetrics().horizontalAdvance(QLatin1Char('0')) + 2 * indentation() + 2 * iconSize().width();
}

void DeviceTree::bringAddressesForward() {
    header()->moveSection(header()->visualIndex(ColIpAddress), 1);
    header()->moveSection(header()->visualIndex(ColSubnetMask), 2);
    const int left = viewport()->width() - columnWidth(ColIpAddress) - columnWidth(ColSubnetMask);
    setColumnWidth(ColName, std::min(columnWidth(ColName), std::max(left, nameWidth(MinNameChars))));
}

int DeviceTree::missingWidth() const {
    int wanted = 0;
    for (int column = 0; column < columnCount(); ++column)
        wanted += isColumnHidden(column) ? 0 : columnWidth(column);
    return std::max(0, wanted - viewport()->width());
}
