#pragma once

#include <string>
#include <string_view>

namespace tesserine {

class SQLiteDatabase;

namespace test {

/// The newest statement that is prepared on `database` and holds `part`; empty when there is none.
std::string newestStatement(SQLiteDatabase& database, std::string_view part);

}  // namespace test
}  // namespace tesserine
