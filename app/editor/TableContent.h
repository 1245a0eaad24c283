#pragma once

#include "core/body/InlineStyle.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::app {

/// A simple table: rows of cells with text in a line. Cells whose text is not changed keep their
/// links and styles.
class TableContent {
public:
    struct Cell {
        std::string text{};
        bool isHeader = false;
        OwnedAttributes attributes{};
        std::string html{};      ///< what the text was read from
        std::string readText{};  ///< what it was then
    };

    /// With a row of headers, all empty.
    TableContent(std::size_t rows, std::size_t columns);
    /// None when there is more to the table than rows and cells: cells that span, tables inside.
    static std::optional<TableContent> of(std::string_view html);

    std::size_t rowCount() const { return rows_.size(); }
    std::size_t columnCount() const { return rows_.empty() ? 0 : rows_.front().size(); }
    const Cell& cell(std::size_t row, std::size_t column) const { return rows_[row][column]; }
    void setText(std::size_t row, std::size_t column, std::string text);

    /// Before `row` or `column`, or at the end.
    void insertRow(std::size_t row);
    void insertColumn(std::size_t column);
    /// The last row and the last column stay.
    void removeRow(std::size_t row);
    void removeColumn(std::size_t column);

    /// To be sanitised like any other body.
    std::string html() const;

private:
    TableContent() = default;

    std::vector<std::vector<Cell>> rows_;
};

}  // namespace tesserine::app
