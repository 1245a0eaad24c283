#include "bench/RawDatabase.h"

#include <sqlite3.h>

#include <stdexcept>

namespace tesserine::bench {
namespace {

void require(bool isDone, sqlite3* connection) {
    if (!isDone) throw std::runtime_error(sqlite3_errmsg(connection));
}

}  // namespace

void RawStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

RawStatement::RawStatement(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* made = nullptr;
    const int code = sqlite3_prepare_v2(connection, sql.c_str(), -1, &made, nullptr);
    statement_.reset(made);
    require(code == SQLITE_OK, connection);
}

void RawStatement::bind(int place, std::string_view text) {
    sqlite3_bind_text(
        statement_.get(), place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

void RawStatement::bind(int place, std::span<const std::uint8_t> blob) {
    sqlite3_bind_blob(
        statement_.get(), place, blob.data(), static_cast<int>(blob.size()), SQLITE_STATIC);
}

void RawStatement::bind(int place, double value) {
    sqlite3_bind_double(statement_.get(), place, value);
}

void RawStatement::bind(int place, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), place, value);
}

void RawStatement::bindNull(int place) { sqlite3_bind_null(statement_.get(), place); }

bool RawStatement::step() {
    const int code = sqlite3_step(statement_.get());
    require(code == SQLITE_ROW || code == SQLITE_DONE, sqlite3_db_handle(statement_.get()));
    return code == SQLITE_ROW;
}

void RawStatement::reset() { sqlite3_reset(statement_.get()); }

void RawStatement::run() {
    step();
    reset();
}

bool RawStatement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::string_view RawStatement::text(int column) const {
    const unsigned char* const text = sqlite3_column_text(statement_.get(), column);
    if (text == nullptr) return {};
    const int count = sqlite3_column_bytes(statement_.get(), column);
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(count)};
}

std::int64_t RawStatement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

double RawStatement::real(int column) const {
    return sqlite3_column_double(statement_.get(), column);
}

std::span<const std::uint8_t> RawStatement::blob(int column) const {
    const void* const bytes = sqlite3_column_blob(statement_.get(), column);
    const int count = sqlite3_column_bytes(statement_.get(), column);
    return {static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(count)};
}

void RawDatabase::Close::operator()(sqlite3* connection) const noexcept {
    sqlite3_close_v2(connection);
}

RawDatabase::RawDatabase(const std::filesystem::path& file, Settings settings) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open(file.c_str(), &opened);
    connection_.reset(opened);
    require(code == SQLITE_OK, opened);
    execute(
        settings == Settings::library
            ? "PRAGMA page_size = 8192; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; "
              "PRAGMA cache_size = -65536;"
            : "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;");
}

void RawDatabase::execute(const std::string& sql) {
    const int code = sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, nullptr);
    require(code == SQLITE_OK, connection_.get());
}

RawStatement RawDatabase::prepare(const std::string& sql) { return {connection_.get(), sql}; }

}  // namespace tesserine::bench
