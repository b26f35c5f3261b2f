#include "CsvRows.h"
#include "PlanCells.h"
#include "commissioning/AddressText.h"
#include "commissioning/Parsing.h"
#include "commissioning/Plan.h"
#include "commissioning/Utf8.h"
#include "commissioning/Words.h"

#include <algorithm>
#include <csv.h>
#include <string_view>
#include <strings.h>

namespace commissioning {

namespace {

constexpr std::size_t MaxCellBytes = 256; // more than any value takes
constexpr const char *ColumnNames[PlanColumns] = {"camera", "mode", "address", "mask", "gateway", "name"};

std::size_t indexOf(PlanColumn column) { return static_cast<std::size_t>(column); }

/// What makes a file no text in UTF-8 at all; empty when it is one.
std::string refusalOfFile(const std::string &text) {
    const auto begins = [&](std::string_view start) { return std::string_view(text).substr(0, start.size()) == start; };
    if (text.size() > MaxPlanBytes)
        return "The file has more than 16 MiB: it is no plan.";
    if (begins("\xFF\xFE") || begins("\xFE\xFF"))
        return "The file is in UTF-16. Save it as CSV in UTF-8.";
    if (begins("PK\x03\x04"))
        return "The file is a spreadsheet or archive, no text. Save it as CSV in UTF-8.";
    return "";
}

/// The first line that is neither empty nor a comment.
std::string headerLine(const std::string &text) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        std::string line = text.substr(start, end - start);
        if (const std::string content = trimmed(line); !content.empty() && content.front() != '#')
            return line;
        start = end + 1;
    }
    return "";
}

/// The one that the header has most of; in vain it is the comma.
char separatorOf(const std::string &header) {
    const auto countOf = [&](char separator) { return std::count(header.begin(), header.end(), separator); };
    const std::string separators = ",;\t";
    return *std::max_element(separators.begin(), separators.end(),
                             [&](char a, char b) { return countOf(a) < countOf(b); });
}

class PlanReader {
public:
    Plan read(const std::string &text) {
        if (const std::string refusal = refusalOfFile(text); !refusal.empty())
            return {{}, {{0, 0, refusal}}};
        const auto problem =
            readCsv(text, separatorOf(headerLine(text)), [this](const auto &cells) { takeRow(cells); });
        if (problem)
            m_Plan.problems.push_back(*problem);
        else if (!m_HasHeader)
            m_Plan.problems.push_back({0, 0,
                                       "There is no line with the names of the columns, such as "
                                       "\"camera,mode,address,mask,gateway,name\"."});
        return std::move(m_Plan);
    }

private:
    static bool isEmpty(const CsvCell &cell) { return trimmed(cell.text).empty(); }

    /// Also one that a spreadsheet has put into quotes, or into another column.
    static bool isComment(const std::vector<CsvCell> &cells) {
        const auto first = std::find_if_not(cells.begin(), cells.end(), isEmpty);
        return trimmed(first->text).front() == '#' && std::all_of(first + 1, cells.end(), isEmpty);
    }

    void takeRow(const std::vector<CsvCell> &cells) {
        if (m_IsGivenUp || std::all_of(cells.begin(), cells.end(), isEmpty) || isComment(cells))
            return;
        if (m_Plan.problems.size() >= MaxPlanProblems) {
            m_IsGivenUp = true;
            m_Plan.problems.push_back({cells.front().place.line, 0, "From here on the file was not read."});
        } else if (m_HasHeader)
            takeEntry(cells);
        else if (cells.front().text != "sep=") // which tells a spreadsheet the separator
            takeHeader(cells);
    }

    void takeHeader(const std::vector<CsvCell> &cells) {
        m_HasHeader = true;
        for (const CsvCell &cell : cells)
            m_Columns.push_back(columnOf(cell));
        if (std::find(m_Columns.begin(), m_Columns.end(), PlanColumn::Camera) == m_Columns.end()) {
            m_IsGivenUp = true;
            m_Plan.problems.push_back({cells.front().place.line, 0, "There is no column \"camera\"."});
        }
    }

    std::optional<PlanColumn> columnOf(const CsvCell &cell) {
        const std::string name = trimmed(cell.text);
        const auto *const found = std::find_if(std::begin(ColumnNames), std::end(ColumnNames),
                                               [&](const char *each) { return strcasecmp(each, name.c_str()) == 0; });
        if (found == std::end(ColumnNames)) {
            if (!name.empty())
                report(cell, "There is no column " + quoted(name.substr(0, MaxCellBytes)) +
                                 ". The columns are camera, mode, address, mask, gateway and name.");
            return std::nullopt;
        }
        const auto column = static_cast<PlanColumn>(found - std::begin(ColumnNames));
        if (std::find(m_Columns.begin(), m_Columns.end(), column) != m_Columns.end())
            report(cell, "The column " + quoted(*found) + " is there twice.");
        return column;
    }

    void takeEntry(const std::vector<CsvCell> &cells) {
        const std::size_t problems = m_Plan.problems.size();
        PlanEntry entry;
        entry.line = cells.front().place.line;
        for (std::size_t i = 0; i < cells.size(); ++i)
            takeCell(cells[i], i < m_Columns.size() ? m_Columns[i] : std::nullopt, &entry);
        if (entry.camera.empty() && m_Plan.problems.size() == problems) {
            const PlanPlace &cell = entry.places[indexOf(PlanColumn::Camera)]; // below the line, where a cell has two
            m_Plan.problems.push_back({std::max(entry.line, cell.line), cell.character, "This line names no camera."});
        }
        entry.isBroken = m_Plan.problems.size() != problems;
        m_Plan.entries.push_back(std::move(entry));
    }

    void takeCell(const CsvCell &cell, std::optional<PlanColumn> column, PlanEntry *pEntry) {
        const std::string text = trimmed(cell.text);
        if (column)
            pEntry->places[indexOf(*column)] = cell.place;
        if (text.empty() && (!column || *column != PlanColumn::Name || cell.text.empty() || !cell.isQuoted))
            return;
        if (!column)
            return report(cell, "This cell belongs to no column.");
        if (text.size() > MaxCellBytes)
            return report(cell, "This cell is too long: " + std::to_string(text.size()) + " bytes.");
        const bool keepsBlanks = *column == PlanColumn::Name && cell.isQuoted;
        const std::string problem = takePlanCell(keepsBlanks ? cell.text : text, *column, pEntry);
        if (!problem.empty())
            report(cell, problem);
    }

    void report(const CsvCell &cell, const std::string &text) {
        if (m_Plan.problems.size() <= MaxPlanProblems)
            m_Plan.problems.push_back({cell.place.line, cell.place.character, text});
    }

    Plan m_Plan;
    std::vector<std::optional<PlanColumn>> m_Columns; ///< of the file; none for one without a name or an unknown one
    bool m_HasHeader = false;
    bool m_IsGivenUp = false;
};

bool isUtf8(const std::string &text) {
    bool isValid = true;
    forEachCharacter(text, [&](wchar_t character, std::string_view) { isValid = isValid && character != 0; });
    return isValid;
}

bool isMask(Address mask) { return mask == maskOfPrefix(prefixLength(mask)); }

PlanEntry entryOf(const Camera &camera) {
    PlanEntry entry;
    entry.camera = macText(camera.mac);
    entry.mode = camera.mode;
    const StoredAddresses stored = camera.stored.value_or(StoredAddresses{});
    if (camera.mode == Mode::Static && camera.stored && stored.address == camera.address && isMask(stored.mask)) {
        entry.address = stored.address;
        entry.mask = stored.mask;
        entry.gateway = stored.gateway;
    }
    if (!camera.name.empty() && camera.name.size() <= MaxPlanNameBytes && isUtf8(camera.name))
        entry.name = camera.name;
    return entry;
}

std::string cellText(const std::string &text) {
    if (text.find_first_of(",;\t\r\n\"#") == std::string::npos && trimmed(text) == text)
        return text;
    std::string cell(2 * text.size() + 2, '\0');
    cell.resize(csv_write(cell.data(), cell.size(), text.data(), text.size()));
    return cell;
}

} // namespace

Plan readPlan(const std::string &text) { return PlanReader().read(text); }

Plan planOf(const Inventory &inventory) {
    Plan plan;
    for (const Camera &camera : inventory.cameras) {
        if (camera.mode)
            plan.entries.push_back(entryOf(camera));
    }
    return plan;
}

std::string planText(const Plan &plan) {
    std::string text = "camera,mode,address,mask,gateway,name\n";
    for (const PlanEntry &entry : plan.entries) {
        for (std::size_t i = 0; i < PlanColumns; ++i)
            text += cellText(planCell(entry, static_cast<PlanColumn>(i))) + (i + 1 < PlanColumns ? "," : "\n");
    }
    return text;
}

} // namespace commissioning
