#pragma once

#include "base/sqlite/SQLiteDatabase.h"

#include <cstddef>
#include <list>
#include <string>

namespace tesserine {

/// The statements of the last searches, kept prepared: searches as one types differ in what is
/// bound only, and preparing one takes a quarter of the time in which it finds a rare word.
class RecentStatements {
public:
    /// What users and scripts may ask has too many forms to keep them all.
    static constexpr std::size_t most = 16;

    /// The statement for `sql` on `database`, which is the same in every call. Good until `most`
    /// others were asked for; to be reset after use.
    Statement& prepared(SQLiteDatabase& database, const std::string& sql) {
        for (auto kept = statements_.begin(); kept != statements_.end(); ++kept) {
            if (kept->sql != sql) continue;
            statements_.splice(statements_.begin(), statements_, kept);
            return kept->statement;
        }
        statements_.push_front({sql, database.prepare(sql)});
        if (statements_.size() > most) statements_.pop_back();
        return statements_.front().statement;
    }
    /// Before the database is closed.
    void clear() { statements_.clear(); }

private:
    struct Kept {
        std::string sql;
        Statement statement;
    };
    std::list<Kept> statements_;  // the last one used is first
};

}  // namespace tesserine
