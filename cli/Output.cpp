#include "cli/Output.h"

#include "base/JSON.h"
#include "cli/DisplayText.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace tesserine::cli {

namespace {

constexpr std::string_view columnGap = "  ";
constexpr std::size_t leastFlexibleColumns = 12;
constexpr std::int64_t progressInterval = 100'000'000;  // nanoseconds

std::string_view escapeFor(Style style) {
    switch (style) {
    case Style::plain: return {};
    case Style::strong: return "\x1b[1m";
    case Style::faint: return "\x1b[2m";
    case Style::accent: return "\x1b[36m";
    case Style::warning: return "\x1b[33m";
    }
    return {};
}

}  // namespace

Output::Output(const Environment& environment, Format format)
    : stream_(environment.output),
      format_(format),
      isTerminal_(environment.outputIsTerminal),
      hasColours_(
          isTerminal_ && !environment.variable("NO_COLOR")
          && environment.variable("TERM").value_or("dumb") != "dumb"),
      terminalColumns_(environment.terminalColumns) {}

void Output::json(const boost::json::value& value) {
    stream_ << tesserine::json::write(value) << '\n';
}

void Output::line(std::string_view text) { stream_ << text << '\n'; }

void Output::text(std::string_view body) {
    if (isTerminal_) {
        stream_ << harmless(body);
    } else {
        stream_ << body;
    }
    if (!body.ends_with('\n')) stream_ << '\n';
}

void Output::raw(std::string_view bytes) { stream_ << bytes; }

void Output::flush() { stream_.flush(); }

std::string Output::styled(std::string_view text, Style style) const {
    if (!hasColours_ || style == Style::plain || text.empty()) return std::string(text);
    return std::string(escapeFor(style)) + std::string(text) + "\x1b[0m";
}

void Output::table(const Table& table) {
    if (table.rows.empty()) return;
    Table clean{.columns = table.columns};
    clean.rows.reserve(table.rows.size());
    for (const auto& cells : table.rows) {
        std::vector<std::string>& lines = clean.rows.emplace_back();
        for (const std::string& cell : cells) {
            lines.push_back(oneLine(cell));
        }
    }

    const auto widths = columnWidths(clean);
    const bool hasTitles = std::ranges::any_of(
        clean.columns, [](const Table::Column& column) { return !column.title.empty(); });
    if (isTerminal_ && hasTitles) {
        std::vector<std::string> titles;
        for (const Table::Column& column : clean.columns) {
            titles.push_back(column.title);
        }
        row(clean, titles, widths, Style::faint);
    }
    for (const auto& cells : clean.rows) {
        row(clean, cells, widths, std::nullopt);
    }
}

std::vector<std::size_t> Output::columnWidths(const Table& table) const {
    std::vector<std::size_t> widths(table.columns.size(), 0);
    for (const auto& cells : table.rows) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            widths[i] = std::max(widths[i], displayWidth(cells[i]));
        }
    }
    if (!isTerminal_) return widths;

    std::size_t total = columnGap.size() * (widths.size() - 1);
    for (std::size_t i = 0; i < widths.size(); ++i) {
        widths[i] = std::max(widths[i], displayWidth(table.columns[i].title));
        total += widths[i];
    }
    // The columns that may shrink pay for what is too much, the last of them first.
    for (std::size_t i = widths.size(); i-- > 0 && total > terminalColumns_;) {
        if (!table.columns[i].mayShrink || widths[i] <= leastFlexibleColumns) continue;
        const std::size_t cut =
            std::min(total - terminalColumns_, widths[i] - leastFlexibleColumns);
        widths[i] -= cut;
        total -= cut;
    }
    return widths;
}

void Output::row(
    const Table& table,
    const std::vector<std::string>& cells,
    const std::vector<std::size_t>& widths,
    std::optional<Style> style) {
    std::string line;
    std::size_t owed = 0;  // spaces that are written only when something follows
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Table::Column& column = table.columns[i];
        const std::string cell = isTerminal_ ? fitted(cells[i], widths[i]) : cells[i];
        const std::size_t width = displayWidth(cell);
        const std::size_t padding = widths[i] > width ? widths[i] - width : 0;
        if (!cell.empty()) {
            line.append(owed + (column.isNumber ? padding : 0), ' ');
            line += styled(cell, style.value_or(column.style));
            owed = column.isNumber ? 0 : padding;
        } else {
            owed += padding;
        }
        owed += columnGap.size();
    }
    stream_ << line << '\n';
}

Progress::Progress(const Environment& environment, std::string verb)
    : environment_(environment), verb_(std::move(verb)) {}

Progress::~Progress() {
    if (shownAt_) environment_.error << "\r\x1b[K" << std::flush;
}

void Progress::show(std::size_t done, std::size_t total, std::string_view what) {
    if (!environment_.errorIsTerminal) return;
    const std::int64_t now = environment_.clock.monotonic().count();
    if (shownAt_ && now - *shownAt_ < progressInterval) return;
    shownAt_ = now;

    std::string line = verb_ + " " + std::to_string(done);
    if (total > 0) line += " of " + std::to_string(total);
    if (!what.empty()) line += "  " + oneLine(what);
    const std::size_t columns = std::max<std::size_t>(environment_.terminalColumns, 2) - 1;
    environment_.error << "\r\x1b[K" << fitted(line, columns) << std::flush;
}

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
    std::string text = std::to_string(count) + " ";
    if (count == 1) return text + std::string(one);
    return many.empty() ? text + std::string(one) + "s" : text + std::string(many);
}

std::string byteText(std::uint64_t bytes) {
    static constexpr std::array<std::string_view, 4> units{"kB", "MB", "GB", "TB"};
    if (bytes < 1000) return counted(bytes, "byte");
    std::uint64_t scale = 1000;
    std::size_t unit = 0;
    while (unit + 1 < units.size() && bytes >= scale * 1000) {
        scale *= 1000;
        ++unit;
    }
    const std::uint64_t tenths = bytes / (scale / 10);
    std::string text = std::to_string(tenths / 10);
    if (tenths < 100) text += "." + std::to_string(tenths % 10);
    return text + " " + std::string(units[unit]);
}

}  // namespace tesserine::cli
