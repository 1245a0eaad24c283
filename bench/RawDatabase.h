#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tesserine::bench {

/// A prepared statement with nothing around it. Bound texts and blobs are not copied: they must
/// stay until the next step is done.
class RawStatement {
public:
    void bind(int place, std::string_view text);
    void bind(int place, std::span<const std::uint8_t> blob);
    void bind(int place, double value);
    void bind(int place, std::int64_t value);
    void bindNull(int place);
    bool step();
    void reset();
    /// Runs a statement that gives no rows and makes it ready for the next run.
    void run();

    bool isNull(int column) const;
    std::string_view text(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    std::span<const std::uint8_t> blob(int column) const;

private:
    friend class RawDatabase;
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    RawStatement(sqlite3* connection, const std::string& sql);
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

/// SQLite as it comes: the limit that our own store and index are measured against. Failures throw
/// `std::runtime_error` in SQLite's words.
class RawDatabase {
public:
    enum class Settings {
        library,   ///< page size, journal, synchronous mode and cache of the library
        ordinary,  ///< SQLite's own, with a write-ahead log that is synced at checkpoints
    };
    explicit RawDatabase(const std::filesystem::path& file, Settings settings = Settings::library);
    void execute(const std::string& sql);
    RawStatement prepare(const std::string& sql);

private:
    struct Close {
        void operator()(sqlite3* connection) const noexcept;
    };
    std::unique_ptr<sqlite3, Close> connection_;
};

}  // namespace tesserine::bench
