#pragma once

#include <set>
#include <string>
#include <vector>

namespace commandline {

/// Rows of texts as columns for people. Texts are made harmless.
class Table {
public:
    using Row = std::vector<std::string>;

    /// \param flexible columns that may be cut, down to the width of their headings, when the table is too wide.
    Table(Row header, std::set<std::size_t> flexible) : m_Rows{std::move(header)}, m_Flexible(std::move(flexible)) {}
    void add(Row row) { m_Rows.push_back(std::move(row)); }
    /// \param width columns of the terminal, 0 for no limit.
    std::string text(int width) const;

private:
    std::vector<int> columnWidths(int width) const;

    std::vector<Row> m_Rows;
    std::set<std::size_t> m_Flexible;
};

} // namespace commandline
