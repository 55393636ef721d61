// Tables for people, at most 80 columns wide: columns as wide as what stands in them; a last column that does not fit
// goes on below itself. Cells are printable text (safe_text.h).
#ifndef HOSTMGRCTL_TEXT_TABLE_H
#define HOSTMGRCTL_TEXT_TABLE_H

#include <cstdio>
#include <string>
#include <vector>

namespace hostmgrctl {

constexpr size_t SCREEN_COLUMNS = 80;

enum class Align { Left, Right };

class TextTable {
public:
    /** Without a heading in any column no heading line is printed. */
    void AddColumn(const std::string& heading, Align align = Align::Left);

    /** As many cells as there are columns, or fewer. */
    void AddRow(std::vector<std::string> cells);

    bool IsEmpty() const { return m_rows.empty(); }

    /** Prints the table, indented. Nothing when it has no row. */
    void Print(FILE* out, size_t indent = 2) const;

private:
    struct Column {
        std::string heading;
        Align align;
    };

    std::vector<size_t> Widths() const;
    void PrintRow(FILE* out, size_t indent, const std::vector<std::string>& cells,
                  const std::vector<size_t>& widths) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace hostmgrctl

#endif
