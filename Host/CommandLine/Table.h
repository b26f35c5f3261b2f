#pragma once

#include <string>
#include <vector>

namespace commandline {

/// Rows of texts as columns for people. Texts are made harmless.
class Table {
public:
    using Row = std::vector<std::string>;

    explicit Table(Row header) : m_Rows{std::move(header)} {}
    void add(Row row) { m_Rows.push_back(std::move(row)); }
    /// \param width columns of the terminal, 0 for no limit: the widest columns are cut until the table fits, never
    /// below their headings.
    std::string text(int width) const;

private:
    std::vector<int> columnWidths(int width) const;

    std::vector<Row> m_Rows;
};

} // namespace commandline
