#include "CsvRows.h"

#include "commissioning/Utf8.h"

#include <csv.h>

namespace commissioning {

namespace {

constexpr wchar_t ByteOrderMark = 0xFEFF;
constexpr std::size_t MaxCells = 1024; // in a row; some spreadsheets write many empty ones

bool isLineEnd(wchar_t character) { return character == L'\n' || character == L'\r'; }

/// The library parses and tells no positions: it is given one character at a time, so that a cell that it reports ends
/// there.
class Rows {
public:
    using Visitor = std::function<void(const std::vector<CsvCell> &)>;

    Rows(char separator, const Visitor &visit) : m_Separator(separator), m_Visit(visit) {
        csv_init(&m_Parser, CSV_STRICT | CSV_STRICT_FINI);
        csv_set_delim(&m_Parser, static_cast<unsigned char>(separator));
    }
    ~Rows() { csv_free(&m_Parser); }
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;

    void take(wchar_t character, std::string_view bytes) {
        if (m_Problem || (character == ByteOrderMark && m_Last == 0))
            return;
        if (character == 0)
            return fail(m_Place, bytes[0] == '\0' ? "There is a NUL here, as in UTF-16. Save the file as CSV in UTF-8."
                                                  : "This is no UTF-8. Save the file as CSV in UTF-8.");
        m_IsComment = isLineEnd(character) ? false : m_IsComment || (character == L'#' && m_Cells.empty() && !m_Begin);
        if (!m_IsComment)
            parse(character, bytes);
        advance(character);
    }

    std::optional<PlanProblem> end() {
        if (!m_Problem && csv_fini(&m_Parser, cellEnds, rowEnds, this) != 0)
            fail(m_Begin.value_or(m_Place), "The quote that begins here never ends.");
        return m_Problem;
    }

private:
    void parse(wchar_t character, std::string_view bytes) {
        const bool isBlank =
            (character == L' ' || character == L'\t') && character != static_cast<wchar_t>(m_Separator);
        const bool isEmptyRow = m_Cells.empty() && isLineEnd(character);
        if (!m_Begin && !isBlank && !isEmptyRow) {
            m_Begin = m_Place;
            m_IsQuoted = character == L'"';
        }
        if (csv_parse(&m_Parser, bytes.data(), bytes.size(), cellEnds, rowEnds, this) != bytes.size())
            fail(m_Place,
                 "A quote is out of place. A cell with quotes in it is quoted as a whole, and they are doubled.");
    }

    void advance(wchar_t character) {
        if (!isLineEnd(character))
            ++m_Place.character;
        else if (character == L'\r' || m_Last != L'\r')
            m_Place = {m_Place.line + 1, 1};
        m_Last = character;
    }

    void fail(const PlanPlace &place, const char *text) { m_Problem = PlanProblem{place.line, place.character, text}; }

    static void cellEnds(void *text, std::size_t length, void *self) {
        auto &rows = *static_cast<Rows *>(self);
        rows.m_Cells.push_back({std::string(static_cast<const char *>(text), length),
                                rows.m_Begin.value_or(rows.m_Place), rows.m_Begin && rows.m_IsQuoted});
        rows.m_Begin.reset();
        if (rows.m_Cells.size() > MaxCells)
            rows.fail(rows.m_Place, "This line has more than 1024 cells: this is no plan.");
    }

    static void rowEnds(int /*character*/, void *self) {
        auto &rows = *static_cast<Rows *>(self);
        rows.m_Visit(rows.m_Cells);
        rows.m_Cells.clear();
    }

    csv_parser m_Parser{};
    char m_Separator;
    const Visitor &m_Visit;
    std::vector<CsvCell> m_Cells; ///< of the row so far
    PlanPlace m_Place{1, 1};
    wchar_t m_Last = 0;               ///< the character before; 0 for none
    std::optional<PlanPlace> m_Begin; ///< of the cell, once it is known
    bool m_IsQuoted = false;
    bool m_IsComment = false;
    std::optional<PlanProblem> m_Problem;
};

} // namespace

std::optional<PlanProblem> readCsv(const std::string &text, char separator,
                                   const std::function<void(const std::vector<CsvCell> &)> &visit) {
    Rows rows(separator, visit);
    forEachCharacter(text, [&](wchar_t character, std::string_view bytes) { rows.take(character, bytes); });
    return rows.end();
}

} // namespace commissioning
