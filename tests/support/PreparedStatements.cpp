#include "tests/support/PreparedStatements.h"

#include "base/sqlite/SQLiteDatabase.h"

#include <sqlite3.h>

namespace tesserine::test {

std::string newestStatement(SQLiteDatabase& database, std::string_view part) {
    // SQLite lists the newest first.
    sqlite3_stmt* statement = nullptr;
    while ((statement = sqlite3_next_stmt(database.handle(), statement)) != nullptr) {
        std::string text = sqlite3_sql(statement);
        if (text.find(part) != std::string::npos) return text;
    }
    return {};
}

}  // namespace tesserine::test
