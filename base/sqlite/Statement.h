#pragma once

#include "base/Encoding.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tesserine {

class SQLiteDatabase;

/// One prepared statement; made by `SQLiteDatabase::prepare`, finalised when it goes away.
///
/// Parameters count from 1, columns from 0. Binding never fails loudly.
class Statement {
public:
    Statement(Statement&&) noexcept;
    Statement& operator=(Statement&&) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement();

    /// SQLite copies the text, so `text` may go away at once. It ends at the first U+0000.
    void bindText(int index, const std::string& text);
    void bindInteger(int index, std::int64_t value);
    void bindDouble(int index, double value);
    /// Copied as well. An empty blob is a blob of no bytes, not NULL.
    void bindBlob(int index, std::span<const std::uint8_t> bytes);
    void bindNull(int index);

    /// Moves to the next row and tells whether there is one. Throws `SQLiteDatabase::Error` (step).
    bool step();
    /// Ready to be run again; bindings stay.
    void reset();
    void clearBindings();

    int columnCount() const;
    bool isNull(int column) const;
    /// NULL is no text; an empty string stays empty. Always valid UTF-8.
    std::optional<std::string> text(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    /// A view that is good until the next step, reset or reading of the column as another type.
    std::span<const std::uint8_t> blob(int column) const;
    /// The same for text, exactly as stored: check it before you trust its encoding. NULL is empty.
    std::string_view textView(int column) const;
    /// SQLite's type of the cell: "integer", "real", "text", "blob", "null".
    enum class Type { integer, real, text, blob, null };
    Type type(int column) const;

    /// EXPLAIN QUERY PLAN and the like need the text.
    std::string sql() const;

private:
    friend class SQLiteDatabase;
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    Statement(sqlite3_stmt* statement, std::weak_ptr<sqlite3> connection, std::string query);

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    std::weak_ptr<sqlite3> connection_;  // never keeps the connection open
    std::string query_;                  // how an error sentence begins
};

}  // namespace tesserine
