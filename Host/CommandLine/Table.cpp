#include "Table.h"

#include "Text.h"

#include <algorithm>
#include <numeric>

namespace commandline {

namespace {

constexpr int Gap = 2;

/// Cut behind as many characters as leave room for the sign that something is missing.
std::string fitted(std::string text, int width) {
    if (displayWidth(text) <= width)
        return text;
    const auto dropLastCharacter = [&text] {
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0u) == 0x80u)
            text.pop_back();
        if (!text.empty())
            text.pop_back();
    };
    while (!text.empty() && displayWidth(text) > width - 1)
        dropLastCharacter();
    return text + "~";
}

} // namespace

std::vector<int> Table::columnWidths(int width) const {
    std::vector<int> widths(m_Rows.front().size(), 0);
    for (const Row &row : m_Rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(harmless(row[i])));
    }
    const int gaps = Gap * (static_cast<int>(widths.size()) - 1);
    int excess = std::accumulate(widths.begin(), widths.end(), gaps) - width;
    for (; width > 0 && excess > 0; --excess) {
        const auto spare = [&](std::size_t i) { return widths[i] - displayWidth(m_Rows.front()[i]); };
        const auto widest = std::max_element(m_Flexible.begin(), m_Flexible.end(),
                                             [&](std::size_t a, std::size_t b) { return spare(a) < spare(b); });
        if (widest == m_Flexible.end() || spare(*widest) <= 0)
            break;
        --widths[*widest];
    }
    return widths;
}

std::string Table::text(int width) const {
    const std::vector<int> widths = columnWidths(width);
    std::string result;
    for (const Row &row : m_Rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string cell = fitted(harmless(row[i]), widths[i]);
            line +=
                cell + std::string(static_cast<std::size_t>(std::max(widths[i] - displayWidth(cell), 0) + Gap), ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        result += line + '\n';
    }
    return result;
}

} // namespace commandline
