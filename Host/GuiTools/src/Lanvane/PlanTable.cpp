#include "Lanvane/PlanTable.h"

#include "CorvoQtBase/DeviceText.h"
#include "CorvoQtBase/GevGuiHelper.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/FreeAddresses.h"
#include "commissioning/WantedAddresses.h"
#include "commissioning/Words.h"

#include <QStringList>

#include <algorithm>
#include <map>

using namespace commissioning;

namespace {

constexpr PlanColumn AddressColumns[] = {PlanColumn::IpAddress, PlanColumn::Mask, PlanColumn::Gateway};

std::size_t indexOf(PlanColumn column) { return static_cast<std::size_t>(column); }

QString shown(const std::string &text) { return plainDeviceText(QString::fromStdString(text)); }

QString addressText(Address address) { return address == 0 ? QString() : QString::fromStdString(toText(address)); }

QString nameOf(std::optional<Mode> mode) { return mode ? modeName(*mode) : QStringLiteral("Unknown mode"); }

QString settingsText(std::optional<Mode> mode, Address address, Address mask) {
    const QString name = nameOf(mode);
    return address == 0 ? name
                        : name + QLatin1Char(' ') + QString::fromStdString(toText(AdapterAddress{address, mask}));
}

QString changeText(const PlannedChange &change) {
    QStringList deeds;
    const Settings &after = change.after;
    if (change.addressing) {
        QString deed = QStringLiteral("Set to ") + settingsText(after.mode, after.address, after.mask);
        if (after.gateway != 0)
            deed += QStringLiteral(", gateway ") + addressText(after.gateway);
        deeds << deed;
    }
    if (change.naming)
        deeds << (after.name.empty() ? QStringLiteral("Name removed") : QStringLiteral("Name ") + shown(after.name));
    return deeds.isEmpty() ? QStringLiteral("Nothing") : deeds.join(QStringLiteral("; "));
}

QString stateText(PlanState state) {
    switch (state) {
    case PlanState::Unchanged:
        return QStringLiteral("Had it already");
    case PlanState::Done:
        return QStringLiteral("Done");
    case PlanState::Failed:
        return QStringLiteral("Failed");
    case PlanState::RolledBack:
        return QStringLiteral("Failed, has its old settings again");
    case PlanState::Unconfirmed:
        return QStringLiteral("Not confirmed");
    case PlanState::NotBegun:
        break;
    }
    return QStringLiteral("Not begun");
}

QString outcomeText(const PlanRecord &record) {
    const QString text = shown(record.result.text);
    return text.isEmpty() ? stateText(record.state) : stateText(record.state) + QStringLiteral(": ") + text;
}

bool canBeGiven(Address address, Address mask) {
    const Address host = address & ~mask;
    return mask == 0 || (host != 0 && host != ~mask);
}

Address nextFree(Address from, Address mask, const std::set<Address> &taken) {
    while (from != 0 && (taken.count(from) != 0 || !canBeGiven(from, mask)))
        ++from;
    return from;
}

} // namespace

QString modeName(Mode mode) { return formatIPConfiguration(wordOf(mode), 1); }

QString placeText(const PlanProblem &problem) {
    if (problem.line == 0)
        return {};
    const QString character =
        problem.character == 0 ? QString() : QStringLiteral(", character %1").arg(problem.character);
    return QStringLiteral("Line %1%2: ").arg(problem.line).arg(character);
}

PlanTable::PlanTable(const std::vector<std::string> &macs, Inventory inventory) : m_Inventory(std::move(inventory)) {
    const CameraNames names(m_Inventory);
    for (const std::string &mac : macs) {
        PlanEntry entry;
        entry.camera = commissioning::macText(mac);
        addRow(entry, rowCount() + 1, names);
    }
    findCameras();
    for (Row &row : m_Rows) {
        if (const Camera *camera = cameraOf(row); camera && camera->mode)
            write(row, PlanColumn::Mode, toText(*camera->mode));
    }
    judge();
}

PlanTable::PlanTable(Plan plan, Inventory inventory, bool isEditable)
    : m_Inventory(std::move(inventory)), m_FileProblems(std::move(plan.problems)),
      m_allowsForeignSubnets(plan.allowsForeignSubnets), m_isEditable(isEditable) {
    const CameraNames names(m_Inventory);
    for (PlanEntry &entry : plan.entries) {
        const int number = entry.line != 0 ? entry.line : rowCount() + 1;
        addRow(std::move(entry), number, names);
    }
    findCameras();
    judge();
}

void PlanTable::addRow(PlanEntry entry, int number, const CameraNames &names) {
    Row row;
    row.number = number;
    const auto cameras = names.find(entry.camera);
    if (cameras.size() == 1) { // what it goes by now may be another camera's when the plan is done
        row.mac = cameras.front()->mac;
        entry.camera = commissioning::macText(row.mac);
    }
    for (std::size_t i = 0; i < PlanColumns; ++i)
        row.texts[i] = QString::fromStdString(planCell(entry, static_cast<PlanColumn>(i)));
    row.entry = std::move(entry);
    m_Rows.push_back(std::move(row));
}

void PlanTable::findCameras() {
    std::map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < m_Inventory.cameras.size(); ++i)
        places.emplace(m_Inventory.cameras[i].mac, i);
    for (Row &row : m_Rows) {
        const auto found = row.mac.empty() ? places.end() : places.find(row.mac);
        row.camera = found == places.end() ? std::nullopt : std::optional(found->second);
    }
}

const Camera *PlanTable::cameraOf(const Row &row) const {
    return row.camera ? &m_Inventory.cameras[*row.camera] : nullptr;
}

const PlannedChange *PlanTable::changeOf(const Row &row) const {
    return row.change ? &m_Review.changes[*row.change] : nullptr;
}

const Adapter *PlanTable::adapterOf(const Row &row) const {
    const Camera *camera = cameraOf(row);
    return camera ? commissioning::adapterOf(*camera, m_Inventory) : nullptr;
}

// What is shown

QString PlanTable::text(int row, PlanColumn column) const { return at(row).texts[indexOf(column)]; }

QString PlanTable::usualText(int row, PlanColumn column) const {
    const PlannedChange *change = changeOf(at(row));
    if (!change)
        return {};
    const Settings &after = change->after;
    switch (column) {
    case PlanColumn::Camera:
        break;
    case PlanColumn::Mode:
        return after.mode ? QString::fromLatin1(toText(*after.mode)) : QString();
    case PlanColumn::IpAddress:
        return addressText(after.address);
    case PlanColumn::Mask:
        return addressText(after.mask);
    case PlanColumn::Gateway:
        return after.address == 0 ? QString() : QString::fromStdString(toText(after.gateway));
    case PlanColumn::Name:
        return QString::fromStdString(after.name);
    }
    return {};
}

QString PlanTable::cameraText(int row) const {
    const Camera *camera = cameraOf(at(row));
    if (!camera)
        return shown(at(row).entry.camera);
    const QString kind = shown(camera->model) + QLatin1Char(' ') + shown(camera->serial);
    return camera->name.empty() ? kind : shown(camera->name) + QStringLiteral(" (") + kind + QLatin1Char(')');
}

QString PlanTable::macText(int row) const { return QString::fromStdString(at(row).mac); }

QString PlanTable::nowText(int row) const {
    const Camera *camera = cameraOf(at(row));
    if (!camera)
        return {};
    return (nameOf(camera->mode) + QLatin1Char(' ') + addressText(camera->address)).trimmed();
}

QString PlanTable::deed(int row) const {
    for (const QString &problem : at(row).problems) {
        if (!problem.isEmpty())
            return problem;
    }
    const PlannedChange *change = changeOf(at(row));
    return change != nullptr ? changeText(*change) : QString();
}

bool PlanTable::differs(int row) const {
    const PlannedChange *change = changeOf(at(row));
    return change != nullptr && change->differs();
}

QString PlanTable::problem(int row, PlanColumn column) const { return at(row).problems[indexOf(column)]; }

bool PlanTable::hasProblem(int row) const {
    const auto &all = at(row).problems;
    return std::any_of(all.begin(), all.end(), [](const QString &problem) { return !problem.isEmpty(); });
}

QString PlanTable::problems() const { return m_GeneralProblems; }

int PlanTable::firstProblem() const {
    int row = 0;
    while (row < rowCount() && !hasProblem(row))
        ++row;
    return row < rowCount() ? row : -1;
}

int PlanTable::changeCount() const {
    const auto &all = m_Review.changes;
    return static_cast<int>(std::count_if(all.begin(), all.end(), [](const auto &each) { return each.differs(); }));
}

// What the user does

void PlanTable::write(Row &row, PlanColumn column, const QString &text) {
    row.texts[indexOf(column)] = column == PlanColumn::Name ? text : text.trimmed();
    if (column != PlanColumn::Mode || text == QLatin1String(toText(Mode::Static)))
        return;
    for (const PlanColumn address : AddressColumns)
        row.texts[indexOf(address)].clear();
}

void PlanTable::setText(int row, PlanColumn column, const QString &text) {
    write(m_Rows[static_cast<std::size_t>(row)], column, text);
    judge();
}

void PlanTable::setAll(PlanColumn column, const QString &text) {
    m_ForAll[column] = text;
    for (Row &row : m_Rows)
        write(row, column, text);
    judge();
}

std::set<Address> PlanTable::takenAddresses(bool byEveryone) const {
    std::set<Address> taken;
    for (const auto &[address, mac] : m_Excluded)
        taken.insert(address);
    for (const Adapter &adapter : m_Inventory.adapters) {
        for (const AdapterAddress &own : adapter.addresses)
            taken.insert(own.address);
    }
    std::set<std::string> moving;
    for (const Row &row : m_Rows) {
        moving.insert(byEveryone ? std::string() : row.mac);
        taken.insert(row.entry.gateway.value_or(0));
    }
    for (const Camera &camera : m_Inventory.cameras) {
        taken.insert(camera.gateway);
        if (moving.count(camera.mac) != 0)
            continue;
        taken.insert(camera.address);
        if (camera.stored)
            taken.insert(camera.stored->address);
    }
    return taken;
}

void PlanTable::fill(Address start) {
    const std::set<Address> taken = takenAddresses(false);
    const auto isThere = [&](const Row &row) { return subnetOf(adapterOf(row), start) != nullptr; };
    const bool hasHome = std::any_of(m_Rows.begin(), m_Rows.end(), isThere);
    std::map<Address, Address> next; // by the subnet's first address
    for (Row &row : m_Rows) {
        const Adapter *adapter = adapterOf(row);
        const AdapterAddress *subnet = subnetOf(adapter, start);
        if (!subnet && hasHome && adapter)
            subnet = homeSubnet(*adapter);
        const Address mask = subnet ? subnet->mask : 0;
        const Address network = subnet ? subnet->address & mask : 0;
        const Address from = next.emplace(network, network | (start & ~mask)).first->second;
        const Address address = nextFree(from, mask, taken);
        next[network] = address + 1;
        write(row, PlanColumn::Mode, toText(Mode::Static));
        write(row, PlanColumn::IpAddress, addressText(address));
        if (!m_ForAll[PlanColumn::Mask].isEmpty())
            write(row, PlanColumn::Mask, m_ForAll[PlanColumn::Mask]);
        else if (subnet)
            write(row, PlanColumn::Mask, addressText(mask));
        if (row.texts[indexOf(PlanColumn::Gateway)].isEmpty()) // another mode has emptied it
            write(row, PlanColumn::Gateway, m_ForAll[PlanColumn::Gateway]);
    }
    m_Filled = {start, addressTexts()};
    judge();
}

const Adapter *PlanTable::adapter() const {
    for (const Row &row : m_Rows) {
        const Adapter *adapter = adapterOf(row);
        const AdapterAddress *subnet = adapter ? homeSubnet(*adapter) : nullptr;
        if (subnet && subnet->mask != 0)
            return adapter;
    }
    return nullptr;
}

std::optional<Address> PlanTable::suggestedStart() const {
    const Adapter *home = adapter();
    if (!home)
        return std::nullopt;
    const AdapterAddress &subnet = *homeSubnet(*home);
    return nextFree(subnet.address & subnet.mask, subnet.mask, takenAddresses(true));
}

void PlanTable::exclude(const std::map<Address, std::string> &taken) {
    const bool isAsFilled = m_Filled && m_Filled->second == addressTexts();
    m_Excluded.insert(taken.begin(), taken.end());
    if (isAsFilled)
        fill(m_Filled->first);
    else
        judge();
}

QStringList PlanTable::addressTexts() const {
    QStringList all;
    for (const Row &row : m_Rows)
        all << row.texts[indexOf(PlanColumn::IpAddress)];
    return all;
}

void PlanTable::removeRows(const std::set<int> &rows) {
    std::vector<Row> rest;
    for (int row = 0; row < rowCount(); ++row) {
        if (rows.count(row) == 0)
            rest.push_back(std::move(m_Rows[static_cast<std::size_t>(row)]));
    }
    m_Rows = std::move(rest);
    judge();
}

void PlanTable::take(const PlanOutcome &outcome, Inventory now) {
    m_Inventory = std::move(now);
    findCameras();
    std::map<std::string, const PlanRecord *> records;
    for (const PlanRecord &record : outcome.records)
        records.emplace(record.change.camera.mac, &record);
    for (Row &row : m_Rows) {
        const auto found = records.find(row.mac);
        if (found == records.end())
            continue;
        const PlanState state = found->second->state;
        if (state == PlanState::Unchanged && !row.outcome.isEmpty() && !row.hasFailed)
            continue; // what was done before
        row.outcome = outcomeText(*found->second);
        row.hasFailed = state != PlanState::Done && state != PlanState::Unchanged;
    }
    judge();
}

// Judgement

void PlanTable::readTexts(Row &row, Plan *pPlan) const {
    PlanEntry entry;
    entry.line = row.number;
    entry.isBroken = row.entry.isBroken && !m_FileProblems.empty();
    for (std::size_t i = 0; i < PlanColumns; ++i) {
        const int character = static_cast<int>(i) + 1; // which place() takes as the column
        entry.places[i] = {row.number, character};
        if (row.texts[i].isEmpty())
            continue;
        const std::string problem = takePlanCell(row.texts[i].toStdString(), static_cast<PlanColumn>(i), &entry);
        if (problem.empty())
            continue;
        pPlan->problems.push_back({row.number, character, problem});
        entry.isBroken = true;
    }
    row.entry = std::move(entry);
}

void PlanTable::place(const PlanProblem &problem) {
    if (m_isEditable && problem.character == 0) // that there are more of them
        return;
    const auto row = std::find_if(m_Rows.begin(), m_Rows.end(),
                                  [&](const Row &each) { return each.number == problem.line && m_isEditable; });
    if (row == m_Rows.end()) {
        m_GeneralProblems += shown(problem.text) + QLatin1Char('\n');
        return;
    }
    const auto column = static_cast<std::size_t>(std::clamp(problem.character, 1, static_cast<int>(PlanColumns)) - 1);
    if (row->problems[column].isEmpty())
        row->problems[column] = shown(problem.text);
}

void PlanTable::judge() {
    Plan plan;
    plan.allowsForeignSubnets = m_allowsForeignSubnets;
    for (Row &row : m_Rows) {
        row.problems.fill({});
        row.change.reset();
        if (m_isEditable)
            readTexts(row, &plan);
        plan.entries.push_back(row.entry);
    }
    m_Review = commissioning::review(plan, m_Inventory, m_Excluded);
    m_GeneralProblems.clear();
    for (const PlanProblem &problem : m_FileProblems)
        m_GeneralProblems += placeText(problem) + shown(problem.text) + QLatin1Char('\n');
    for (const PlanProblem &problem : m_Review.problems)
        place(problem);
    m_Review.problems.insert(m_Review.problems.begin(), m_FileProblems.begin(), m_FileProblems.end());
    std::map<std::string, std::size_t> changes;
    for (std::size_t i = 0; i < m_Review.changes.size(); ++i)
        changes.emplace(m_Review.changes[i].camera.mac, i);
    for (Row &row : m_Rows) {
        if (const auto change = changes.find(row.mac); change != changes.end())
            row.change = change->second;
    }
}
