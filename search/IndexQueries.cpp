#include "base/Text.h"
#include "search/SearchAnalyzer.h"
#include "search/SearchIndex.h"

#include <algorithm>

/// What `SearchIndex` reads.
namespace tesserine {
namespace {

std::string cellText(const Statement& row, int column) { return row.text(column).value_or(""); }

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

/// The first column of every row.
std::vector<std::string> column(Statement& rows) {
    std::vector<std::string> values;
    while (rows.step()) {
        values.push_back(cellText(rows, 0));
    }
    return values;
}

std::vector<std::vector<std::string>> splitColumn(Statement& rows, char separator) {
    std::vector<std::vector<std::string>> values;
    while (rows.step()) {
        values.push_back(split(rows.textView(0), separator));
    }
    return values;
}

/// The first column of every row that is a word somebody wrote.
std::vector<std::string> words(Statement& rows) {
    std::vector<std::string> terms = column(rows);
    std::erase_if(terms, SearchAnalyzer::isKey);
    return terms;
}

}  // namespace

std::vector<std::string> SearchIndex::descendantTags(const std::string& name) {
    return perform([&](SQLiteDatabase& database) {
        Statement rows = database.prepare(
            "WITH RECURSIVE descendants(name, depth) AS (SELECT name, 0 FROM tag_tree WHERE name = "
            "? UNION ALL SELECT t.name, d.depth + 1 FROM tag_tree t JOIN descendants d ON t.parent "
            "= d.name WHERE d.depth < 64) SELECT DISTINCT name FROM descendants WHERE name != ?;");
        const std::string lower = text::lowercased(name);
        rows.bindText(1, lower);
        rows.bindText(2, lower);
        return column(rows);
    });
}

std::optional<std::string> SearchIndex::meta(const std::string& key) {
    return perform([&](SQLiteDatabase& database) {
        Statement& row = database.cached("SELECT value FROM meta WHERE key = ?;");
        row.bindText(1, key);
        std::optional<std::string> value;
        if (row.step()) value = row.text(0);
        row.reset();
        return value;
    });
}

void SearchIndex::setMeta(const std::string& key, const std::string& value) {
    perform([&](SQLiteDatabase& database) {
        Statement& row = database.cached("INSERT OR REPLACE INTO meta(key, value) VALUES(?, ?);");
        row.bindText(1, key);
        row.bindText(2, value);
        row.step();
        row.reset();
    });
}

void SearchIndex::deleteMeta(const std::string& key) {
    perform([&](SQLiteDatabase& database) {
        Statement& row = database.cached("DELETE FROM meta WHERE key = ?;");
        row.bindText(1, key);
        row.step();
        row.reset();
    });
}

std::int64_t SearchIndex::countDocuments() {
    return perform(
        [](SQLiteDatabase& database) { return database.integer("SELECT COUNT(*) FROM docs;"); });
}

SearchIndex::Counts SearchIndex::counts() {
    return perform([](SQLiteDatabase& database) {
        Counts counts;
        Statement kinds = database.prepare("SELECT kind, COUNT(*) FROM docs GROUP BY kind;");
        while (kinds.step()) {
            const bool isTask = kinds.textView(0) == nameOf(SearchKind::task);
            (isTask ? counts.tasks : counts.notes) += kinds.integer(1);
        }
        Statement files =
            database.prepare("SELECT COUNT(*), COALESCE(SUM(has_text), 0) FROM atts;");
        files.step();
        counts.attachments = files.integer(0);
        counts.attachmentsWithText = files.integer(1);
        return counts;
    });
}

void SearchIndex::visitEntries(const std::function<void(const Entry&)>& visit) {
    perform([&](SQLiteDatabase& database) {
        Statement rows = database.prepare("SELECT uid, kind, sig FROM docs;");
        while (rows.step()) {
            visit({rows.textView(0), rows.textView(1), rows.textView(2)});
        }
    });
}

std::optional<std::string> SearchIndex::ownerOfAttachment(const Uuid& attachment) {
    return perform([&](SQLiteDatabase& database) -> std::optional<std::string> {
        Statement row = database.prepare("SELECT note_uid FROM atts WHERE uid = ?;");
        row.bindText(1, attachment.text());
        if (!row.step()) return std::nullopt;
        return row.text(0);
    });
}

std::vector<SearchIndex::Term> SearchIndex::terms() {
    return perform([](SQLiteDatabase& database) {
        Statement rows = database.prepare("SELECT term, doc FROM vocab;");
        std::vector<Term> terms;
        while (rows.step()) {
            if (SearchAnalyzer::isKey(rows.textView(0))) continue;
            terms.push_back({cellText(rows, 0), rows.integer(1)});
        }
        return terms;
    });
}

bool SearchIndex::hasTerm(const std::string& from, const std::string& to) {
    return perform([&](SQLiteDatabase& database) {
        Statement row =
            database.prepare("SELECT 1 FROM vocab WHERE term >= ? AND term < ? LIMIT 1;");
        row.bindText(1, from);
        row.bindText(2, to);
        return row.step();
    });
}

std::vector<std::string> SearchIndex::termsBetween(const std::string& from, const std::string& to) {
    return perform([&](SQLiteDatabase& database) {
        Statement rows = database.prepare(
            "SELECT term FROM vocab WHERE term >= ? AND term < ? ORDER BY doc DESC LIMIT 40;");
        rows.bindText(1, from);
        rows.bindText(2, to);
        return words(rows);
    });
}

std::vector<std::string> SearchIndex::termsLike(const std::string& pattern, std::int64_t limit) {
    return perform([&](SQLiteDatabase& database) {
        Statement rows = database.prepare(
            R"(SELECT term FROM vocab WHERE term LIKE ? ESCAPE '\' ORDER BY term LIMIT ?;)");
        rows.bindText(1, pattern);
        rows.bindInteger(2, limit);
        return words(rows);
    });
}

std::vector<std::string> SearchIndex::years() {
    return perform([](SQLiteDatabase& database) {
        Statement rows = database.prepare(
            "SELECT DISTINCT CAST(strftime('%Y', created, 'unixepoch') AS TEXT) AS y FROM docs "
            "WHERE created > 0 ORDER BY y DESC;");
        return column(rows);
    });
}

std::vector<SearchIndex::NotebookCount> SearchIndex::notebookCounts() {
    return perform([](SQLiteDatabase& database) {
        Statement rows = database.prepare(
            "SELECT notebook, COUNT(*) FROM docs WHERE trashed = 0 AND notebook != '' GROUP BY "
            "notebook ORDER BY COUNT(*) DESC, notebook;");
        std::vector<NotebookCount> counts;
        while (rows.step()) {
            counts.push_back({cellText(rows, 0), rows.integer(1)});
        }
        return counts;
    });
}

std::vector<std::vector<std::string>> SearchIndex::tagLists() {
    return perform([](SQLiteDatabase& database) {
        Statement rows =
            database.prepare("SELECT tags FROM docs WHERE trashed = 0 AND tags != '';");
        return splitColumn(rows, tagSeparator);
    });
}

std::vector<std::vector<std::string>> SearchIndex::typeLists() {
    return perform([](SQLiteDatabase& database) {
        Statement rows = database.prepare("SELECT types FROM docs WHERE types != '' LIMIT 3000;");
        return splitColumn(rows, ' ');
    });
}

std::vector<std::string> SearchIndex::titlesLike(const std::string& pattern, std::int64_t limit) {
    return perform([&](SQLiteDatabase& database) {
        Statement rows = database.prepare(
            R"(SELECT DISTINCT title FROM docs WHERE trashed = 0 AND title_fold LIKE ? ESCAPE '\' ORDER BY updated DESC LIMIT ?;)");
        rows.bindText(1, pattern);
        rows.bindInteger(2, limit);
        return column(rows);
    });
}

std::int64_t SearchIndex::fileGeneration() {
    return perform([this](SQLiteDatabase& database) {
        constexpr int bitsOfVersion = 40;
        return (openings_ << bitsOfVersion) + database.dataVersion();
    });
}

}  // namespace tesserine
