#pragma once

#include "commissioning/Inventory.h"
#include "commissioning/Plan.h"
#include "commissioning/PlanApplication.h"
#include "commissioning/Selection.h"

#include <QString>
#include <QStringList>

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// As the list names modes: "Static IP".
QString modeName(commissioning::Mode mode);
/// "Line 3, character 7: "; empty for a problem that has no place.
QString placeText(const commissioning::PlanProblem &problem);

/// A plan as a table that the user edits: a row for each camera, what it has now, the cells of the plan, what is wrong
/// with them and what would be done. Judged anew after each change. It knows no widgets.
class PlanTable {
public:
    using Address = commissioning::Address;
    using Inventory = commissioning::Inventory;
    using PlanColumn = commissioning::PlanColumn;

    PlanTable() = default;
    /// For cameras that are to be set up: each as it is.
    /// \param macs in the order of the rows. \param inventory of all adapters.
    PlanTable(const std::vector<std::string> &macs, Inventory inventory);
    /// For a plan that is there already. \param isEditable false: it can be applied as it is or not at all.
    PlanTable(commissioning::Plan plan, Inventory inventory, bool isEditable);

    int rowCount() const { return static_cast<int>(m_Rows.size()); }
    bool isEditable() const { return m_isEditable; }
    /// Of the plan's file where it comes from one, else counted from 1.
    int number(int row) const { return at(row).number; }

    /// As it was typed.
    QString text(int row, PlanColumn column) const;
    /// What a camera gets where nothing is typed; empty when that is not known.
    QString usualText(int row, PlanColumn column) const;
    /// Name, model and serial number; what the plan calls it when there is no such camera.
    QString cameraText(int row) const;
    QString macText(int row) const;
    /// Mode and address of the camera.
    QString nowText(int row) const;
    /// What would be done with the camera, or what is wrong with the row.
    QString deed(int row) const;
    /// Whether the row would change its camera.
    bool differs(int row) const;
    QString problem(int row, PlanColumn column) const;
    bool hasProblem(int row) const;
    /// What has become of the row when it was last applied; empty when it was not.
    QString outcome(int row) const { return at(row).outcome; }
    bool hasFailed(int row) const { return at(row).hasFailed; }

    /// What is wrong with the plan as a whole, a line each; empty when nothing is.
    QString problems() const;
    bool canBeApplied() const { return !m_Review.isRefused() && m_Review.wouldChange(); }
    /// The first row that has a problem; -1 when none has.
    int firstProblem() const;
    int changeCount() const;

    /// Another mode than a static one empties the addresses.
    void setText(int row, PlanColumn column, const QString &text);
    /// The same in all rows. fill() keeps such a mask and gateway.
    void setAll(PlanColumn column, const QString &text);
    /// Makes all cameras static, with addresses counting up from one, past those that anybody has or that no camera can
    /// have. Cameras behind an adapter with another subnet get the same host numbers in theirs.
    void fill(Address start);
    /// The lowest address of the first camera's adapter that nobody has, those of the rows' cameras included; none when
    /// there is no adapter.
    std::optional<Address> suggestedStart() const;
    /// The adapter of the first camera that is behind one which cameras can be used behind; null when none is.
    const commissioning::Adapter *adapter() const;
    /// Addresses of others than cameras, with the MAC of who has them: no camera can get them. What fill() has made is
    /// made anew, past them.
    void exclude(const std::map<Address, std::string> &taken);
    void removeRows(const std::set<int> &rows);

    const commissioning::PlanReview &review() const { return m_Review; }
    const Inventory &inventory() const { return m_Inventory; }
    /// What an application came to: outcomes by row, and what is known now.
    void take(const commissioning::PlanOutcome &outcome, Inventory now);

private:
    struct Row {
        commissioning::PlanEntry entry; ///< of the texts, as far as they make sense
        std::array<QString, commissioning::PlanColumns> texts;
        std::array<QString, commissioning::PlanColumns> problems;
        int number = 0;
        std::string mac;                   ///< empty when the plan names no camera that is there
        std::optional<std::size_t> camera; ///< in the inventory
        std::optional<std::size_t> change; ///< of the review
        QString outcome;
        bool hasFailed = false;
    };

    const Row &at(int row) const { return m_Rows[static_cast<std::size_t>(row)]; }
    void addRow(commissioning::PlanEntry entry, int number, const commissioning::CameraNames &names);
    void findCameras();
    void write(Row &row, PlanColumn column, const QString &text);
    const commissioning::PlannedChange *changeOf(const Row &row) const;
    const commissioning::Camera *cameraOf(const Row &row) const;
    const commissioning::Adapter *adapterOf(const Row &row) const;
    /// Of all that is not in the table; with everyone, of the table's cameras, too.
    std::set<Address> takenAddresses(bool byEveryone) const;
    void readTexts(Row &row, commissioning::Plan *pPlan) const;
    void judge();
    QStringList addressTexts() const;
    void place(const commissioning::PlanProblem &problem);

    Inventory m_Inventory;
    std::vector<Row> m_Rows;
    std::vector<commissioning::PlanProblem> m_FileProblems;
    QString m_GeneralProblems;
    commissioning::PlanReview m_Review;
    std::map<PlanColumn, QString> m_ForAll;                  ///< as the user has entered them last
    std::map<Address, std::string> m_Excluded;               ///< by address, who has it
    std::optional<std::pair<Address, QStringList>> m_Filled; ///< the start, and the addresses that came of it
    bool m_allowsForeignSubnets = false;
    bool m_isEditable = true;
};
