#include "base/sqlite/Statement.h"

#include "base/sqlite/SQLiteDatabase.h"
#include "base/Text.h"

#include <sqlite3.h>

#include <utility>

namespace tesserine {

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3_stmt* statement, std::weak_ptr<sqlite3> connection, std::string query)
    : statement_(statement), connection_(std::move(connection)), query_(std::move(query)) {}

Statement::Statement(Statement&&) noexcept = default;
Statement& Statement::operator=(Statement&&) noexcept = default;
Statement::~Statement() = default;

void Statement::bindText(int index, const std::string& text) {
    sqlite3_bind_text(statement_.get(), index, text.c_str(), -1, SQLITE_TRANSIENT);
}

void Statement::bindInteger(int index, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), index, value);
}

void Statement::bindDouble(int index, double value) {
    sqlite3_bind_double(statement_.get(), index, value);
}

void Statement::bindBlob(int index, std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) {
        sqlite3_bind_zeroblob(statement_.get(), index, 0);
        return;
    }
    sqlite3_bind_blob64(statement_.get(), index, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

void Statement::bindNull(int index) { sqlite3_bind_null(statement_.get(), index); }

bool Statement::step() {
    // A statement keeps a closed connection half alive, so SQLite itself would not notice.
    const bool isGone = connection_.expired();
    const int code = isGone ? SQLITE_MISUSE : sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;

    const auto connection = connection_.lock();
    const std::string message =
        isGone || connection == nullptr ? "no database" : sqlite3_errmsg(connection.get());
    throw SQLiteDatabase::Error(
        SQLiteDatabase::Error::Kind::step, code, query_ + " failed: " + message, message);
}

void Statement::reset() { sqlite3_reset(statement_.get()); }

void Statement::clearBindings() { sqlite3_clear_bindings(statement_.get()); }

int Statement::columnCount() const { return sqlite3_column_count(statement_.get()); }

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::optional<std::string> Statement::text(int column) const {
    if (isNull(column)) return std::nullopt;
    const std::string_view stored = textView(column);
    // The file may have been damaged or made by somebody else: one bad cell must not stop a list.
    if (text::isClean(stored)) return std::string(stored);
    return text::sanitized(std::string(stored));
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const { return sqlite3_column_double(statement_.get(), column); }

std::span<const std::uint8_t> Statement::blob(int column) const {
    // The order matters: asking for the bytes may convert the value, and the size is then its size.
    const void* const bytes = sqlite3_column_blob(statement_.get(), column);
    const int count = sqlite3_column_bytes(statement_.get(), column);
    return {static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(count)};
}

std::string_view Statement::textView(int column) const {
    const unsigned char* const text = sqlite3_column_text(statement_.get(), column);
    if (text == nullptr) return {};
    const int count = sqlite3_column_bytes(statement_.get(), column);
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(count)};
}

Statement::Type Statement::type(int column) const {
    switch (sqlite3_column_type(statement_.get(), column)) {
    case SQLITE_INTEGER: return Type::integer;
    case SQLITE_FLOAT: return Type::real;
    case SQLITE_TEXT: return Type::text;
    case SQLITE_BLOB: return Type::blob;
    default: return Type::null;
    }
}

std::string Statement::sql() const {
    const char* const text = sqlite3_sql(statement_.get());
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace tesserine
