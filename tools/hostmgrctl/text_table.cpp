#include "text_table.h"

#include <algorithm>

#include "safe_text.h"

namespace hostmgrctl {
namespace {

constexpr size_t GAP = 2;           // blanks between columns
constexpr size_t LEAST_COLUMN = 8;  // a last column is never squeezed below that

std::string Blanks(size_t count) {
    return std::string(count, ' ');
}

/** Where to break: after the last comma or semicolon that fits, unless that leaves most of the line empty; else at the
 * last blank; else where the columns end. */
size_t BreakOf(const std::string& text, size_t from, size_t columns) {
    const size_t fits = BytesThatFit(text, from, columns);
    if (from + fits >= text.size()) {
        return text.size() - from;
    }
    for (size_t at = from + fits - 1; at > from + fits / 2; --at) {
        if ((text[at] == ',' || text[at] == ';') && text[at + 1] == ' ') {
            return at + 1 - from;
        }
    }
    const size_t blank = text.rfind(' ', from + fits);
    return blank == std::string::npos || blank <= from ? fits : blank - from;
}

std::vector<std::string> Wrap(const std::string& text, size_t columns) {
    std::vector<std::string> lines;
    size_t at = 0;
    do {
        const size_t bytes = BreakOf(text, at, columns);
        lines.push_back(text.substr(at, bytes));
        at += bytes;
        at += at < text.size() && text[at] == ' ' ? 1 : 0;
    } while (at < text.size());
    return lines;
}

std::string TrimmedEnd(const std::string& line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

void TextTable::AddColumn(const std::string& heading, Align align) {
    m_columns.push_back({heading, align});
}

void TextTable::AddRow(std::vector<std::string> cells) {
    cells.resize(m_columns.size());
    m_rows.push_back(std::move(cells));
}

std::vector<size_t> TextTable::Widths() const {
    std::vector<size_t> widths;
    for (size_t column = 0; column < m_columns.size(); ++column) {
        size_t width = DisplayWidth(m_columns[column].heading);
        for (const std::vector<std::string>& row : m_rows) {
            width = std::max(width, DisplayWidth(row[column]));
        }
        widths.push_back(width);
    }
    return widths;
}

void TextTable::PrintRow(FILE* out, size_t indent, const std::vector<std::string>& cells,
                         const std::vector<size_t>& widths) const {
    std::string line = Blanks(indent);
    for (size_t column = 0; column + 1 < cells.size(); ++column) {
        const std::string pad = Blanks(widths[column] - DisplayWidth(cells[column]));
        const bool right = m_columns[column].align == Align::Right;
        line += (right ? pad + cells[column] : cells[column] + pad) + Blanks(GAP);
    }
    const size_t place = DisplayWidth(line);
    const size_t room = std::max(LEAST_COLUMN, SCREEN_COLUMNS > place ? SCREEN_COLUMNS - place : 0);
    const std::string& last = cells.back();
    if (m_columns.back().align == Align::Right) {
        line += Blanks(std::min(widths.back(), room) - std::min(DisplayWidth(last), std::min(widths.back(), room)));
    }
    for (const std::string& part : Wrap(last, room)) {
        fprintf(out, "%s\n", TrimmedEnd(line + part).c_str());
        line = Blanks(place);
    }
}

void TextTable::Print(FILE* out, size_t indent) const {
    if (m_rows.empty()) {
        return;
    }
    const std::vector<size_t> widths = Widths();
    std::vector<std::string> headings;
    for (const Column& column : m_columns) {
        headings.push_back(column.heading);
    }
    if (std::any_of(headings.begin(), headings.end(), [](const std::string& text) { return !text.empty(); })) {
        PrintRow(out, indent, headings, widths);
    }
    for (const std::vector<std::string>& row : m_rows) {
        PrintRow(out, indent, row, widths);
    }
}

}  // namespace hostmgrctl
