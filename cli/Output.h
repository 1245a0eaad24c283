#pragma once

#include "cli/Environment.h"

#include <boost/json/value.hpp>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::cli {

/// Standard output takes no more.
class OutputError final : public std::runtime_error {
public:
    enum class Kind {
        closed,  ///< whoever was reading has left
        failed,  ///< the disk is full, for instance
    };
    OutputError(Kind kind, const std::string& sentence)
        : std::runtime_error(sentence), kind_(kind) {}
    Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

/// How a piece of text stands out on a terminal with colours.
enum class Style { plain, strong, faint, accent, warning };

/// Rows of text under each other, made to stand in columns.
struct Table {
    struct Column {
        std::string title;
        Style style = Style::plain;
        bool isNumber = false;   ///< stands at the right
        bool mayShrink = false;  ///< gives way when the terminal is narrow
    };
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows{};
};

/// What a command writes to standard output: one JSON document, or text for people.
///
/// Text is coloured, cut to the width of the terminal and freed of control characters only where a
/// terminal is at the other end; a file or a pipe gets the whole of it.
class Output {
public:
    enum class Format { text, json };
    Output(const Environment& environment, Format format);

    bool isJSON() const { return format_ == Format::json; }
    bool isTerminal() const { return isTerminal_; }

    /// Writes a JSON document, or one of several, on a line of its own.
    void json(const boost::json::value& value);
    /// Writes text and a line break. Titles and names in it went through `oneLine` before.
    void line(std::string_view text);
    /// Writes a body of many lines, ended by a line break.
    void text(std::string_view body);
    /// With titles on a terminal, without elsewhere. Cells are made harmless lines.
    void table(const Table& table);
    /// Bytes as they are.
    void raw(std::string_view bytes);
    void flush();

    std::string styled(std::string_view text, Style style) const;

private:
    std::vector<std::size_t> columnWidths(const Table& table) const;
    void row(
        const Table& table,
        const std::vector<std::string>& cells,
        const std::vector<std::size_t>& widths,
        std::optional<Style> style);

    std::ostream& stream_;
    Format format_;
    bool isTerminal_;
    bool hasColours_;
    std::size_t terminalColumns_;
};

/// Tells on a terminal how far long work is, in one line that is overwritten; silent elsewhere.
class Progress {
public:
    /// `verb` begins the line, as "Importing".
    Progress(const Environment& environment, std::string verb);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Wipes the line away.
    ~Progress();

    /// Shown at most ten times in a second. `total` 0: unknown.
    void show(std::size_t done, std::size_t total, std::string_view what = {});

private:
    const Environment& environment_;
    std::string verb_;
    std::optional<std::int64_t> shownAt_;  // nanoseconds of the monotonic clock
};

/// "1 note", "2 notes".
std::string counted(std::size_t count, std::string_view one, std::string_view many = {});
/// "12 bytes", "3.4 kB", "12 MB".
std::string byteText(std::uint64_t bytes);

}  // namespace tesserine::cli
