#include "core/import/AppleNotesFixture.h"

#include "base/sqlite/SQLiteDatabase.h"
#include "base/Text.h"

#include <zlib.h>

#include <stdexcept>

namespace tesserine::test {
namespace {

/// A reference to an object of a table.
std::string place(std::uint64_t index) { return ProtobufWriter().number(6, index).message(); }

/// The objects of a table, which name each other by their places.
class TableObjects {
public:
    std::uint64_t add(const std::string& object) {
        objects_.push_back(object);
        return objects_.size() - 1;
    }
    /// An object that stands for the identifier at `index`.
    std::uint64_t addIdentifier(std::uint64_t index) {
        const std::string entry = ProtobufWriter()
                                      .number(1, 0)
                                      .bytes(2, ProtobufWriter().number(2, index).message())
                                      .message();
        return add(ProtobufWriter()
                       .bytes(13, ProtobufWriter().number(1, 1).bytes(3, entry).message())
                       .message());
    }
    std::uint64_t addDictionary(
        const std::vector<std::pair<std::uint64_t, std::uint64_t>>& elements) {
        ProtobufWriter dictionary;
        for (const auto& [key, value] : elements) {
            dictionary.bytes(
                1, ProtobufWriter().bytes(1, place(key)).bytes(2, place(value)).message());
        }
        return add(ProtobufWriter().bytes(6, dictionary.message()).message());
    }
    /// `identifiers` in their order.
    std::uint64_t addOrder(const std::vector<std::string>& identifiers) {
        ProtobufWriter array;
        for (const std::string& identifier : identifiers) {
            array.bytes(2, ProtobufWriter().bytes(2, identifier).message());
        }
        const std::string ordering = ProtobufWriter().bytes(1, array.message()).message();
        return add(
            ProtobufWriter().bytes(16, ProtobufWriter().bytes(1, ordering).message()).message());
    }
    const std::vector<std::string>& all() const { return objects_; }

private:
    std::vector<std::string> objects_;
};

std::string property(unsigned key, std::uint64_t object) {
    return ProtobufWriter().number(1, key).bytes(2, place(object)).message();
}

using Values = std::vector<std::pair<std::string, std::string>>;

constexpr const char* objectTable = "ZICCLOUDSYNCINGOBJECT";

void insert(SQLiteDatabase& database, const std::string& table, const Values& values) {
    std::string names;
    std::string marks;
    for (const auto& [name, value] : values) {
        names += (names.empty() ? "" : ", ") + name;
        marks += marks.empty() ? "?" : ", ?";
    }
    Statement statement =
        database.prepare("INSERT INTO " + table + " (" + names + ") VALUES (" + marks + ")");
    int index = 0;
    for (const auto& [name, value] : values) {
        const bool isData = name == "ZDATA" || name.starts_with("ZMERGEABLEDATA");
        ++index;
        if (isData) {
            statement.bindBlob(index, bytesOf(value));
        } else {
            statement.bindText(index, value);  // columns have the affinity of their type
        }
    }
    statement.step();
}

constexpr const char* newerObjects =
    "CREATE TABLE ZICCLOUDSYNCINGOBJECT (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, ZIDENTIFIER "
    "VARCHAR, ZTITLE1 VARCHAR, ZTITLE2 VARCHAR, ZTITLE VARCHAR, ZFOLDER INTEGER, ZPARENT INTEGER, "
    "ZFOLDERTYPE INTEGER, ZCREATIONDATE3 TIMESTAMP, ZMODIFICATIONDATE1 TIMESTAMP, ZISPINNED INTEGER, "
    "ZISPASSWORDPROTECTED INTEGER, ZMARKEDFORDELETION INTEGER, ZTYPEUTI VARCHAR, ZMEDIA INTEGER, "
    "ZFILENAME VARCHAR, ZMERGEABLEDATA1 BLOB, ZALTTEXT VARCHAR, ZURLSTRING VARCHAR, "
    "ZTOKENCONTENTIDENTIFIER VARCHAR);";
constexpr const char* olderObjects =
    "CREATE TABLE ZICCLOUDSYNCINGOBJECT (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, ZIDENTIFIER "
    "VARCHAR, ZTITLE1 VARCHAR, ZTITLE2 VARCHAR, ZFOLDER INTEGER, ZCREATIONDATE1 TIMESTAMP);";

void insertFolder(SQLiteDatabase& database, const StoredFolder& folder, StoreVersion version) {
    Values values{
        {"Z_PK", std::to_string(folder.key)},
        {"Z_ENT", "14"},
        {"ZTITLE2", folder.name},
        {"ZIDENTIFIER", folder.type == 1 ? "TrashFolder-CloudKit" : folder.name}};
    if (version == StoreVersion::newer) {
        values.emplace_back("ZFOLDERTYPE", std::to_string(folder.type));
        if (folder.parent != 0) values.emplace_back("ZPARENT", std::to_string(folder.parent));
    }
    insert(database, objectTable, values);
}

void insertNote(SQLiteDatabase& database, int key, const StoredNote& note, StoreVersion version) {
    const bool isNewer = version == StoreVersion::newer;
    Values values{
        {"Z_PK", std::to_string(key)},
        {"Z_ENT", "11"},
        {"ZIDENTIFIER", note.identifier},
        {"ZTITLE1", note.title},
        {"ZFOLDER", std::to_string(note.folder)},
        {isNewer ? "ZCREATIONDATE3" : "ZCREATIONDATE1", std::to_string(note.created)}};
    if (isNewer) {
        values.emplace_back("ZMODIFICATIONDATE1", std::to_string(note.created + 60));
        values.emplace_back("ZISPINNED", note.isPinned ? "1" : "0");
        values.emplace_back("ZISPASSWORDPROTECTED", note.isLocked ? "1" : "0");
        values.emplace_back("ZMARKEDFORDELETION", note.isDeleted ? "1" : "0");
    }
    insert(database, objectTable, values);
    insert(database, "ZICNOTEDATA", {{"ZNOTE", std::to_string(key)}, {"ZDATA", note.data}});
}

/// Takes the two keys from `key` on: for the attachment and for its file.
void insertAttachment(SQLiteDatabase& database, int key, const StoredAttachment& attachment) {
    Values values{
        {"Z_PK", std::to_string(key)},
        {"Z_ENT", "4"},
        {"ZIDENTIFIER", attachment.identifier},
        {"ZTYPEUTI", attachment.type},
        {"ZTITLE", attachment.title},
        {"ZALTTEXT", attachment.text},
        {"ZURLSTRING", attachment.address},
        {"ZTOKENCONTENTIDENTIFIER", attachment.target},
        {"ZMERGEABLEDATA1", attachment.table}};
    if (!attachment.media.empty()) {
        values.emplace_back("ZMEDIA", std::to_string(key + 1));
        insert(
            database,
            objectTable,
            {{"Z_PK", std::to_string(key + 1)},
             {"Z_ENT", "10"},
             {"ZIDENTIFIER", attachment.media},
             {"ZFILENAME", attachment.filename}});
    }
    insert(database, objectTable, values);
}

}  // namespace

ProtobufWriter& ProtobufWriter::number(unsigned field, std::uint64_t value) {
    varint(field << 3U);
    varint(value);
    return *this;
}

ProtobufWriter& ProtobufWriter::bytes(unsigned field, std::string_view value) {
    varint((field << 3U) | 2U);
    varint(value.size());
    message_ += value;
    return *this;
}

void ProtobufWriter::varint(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7U) {
        message_ += static_cast<char>((value & 0x7FU) | 0x80U);
    }
    message_ += static_cast<char>(value);
}

std::string gzip(std::string_view content) {
    z_stream stream{};
    if (deflateInit2(&stream, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    std::string input(content);
    std::string result(deflateBound(&stream, input.size()) + 32, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    const int status = deflate(&stream, Z_FINISH);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    if (status != Z_STREAM_END) throw std::runtime_error("deflate");
    return result;
}

std::string noteMessage(const std::vector<NoteRun>& runs) {
    std::string text;
    for (const NoteRun& run : runs) {
        text += run.text;
    }
    ProtobufWriter message;
    message.bytes(2, text);
    for (const NoteRun& run : runs) {
        ProtobufWriter paragraph;
        if (run.style) paragraph.number(1, *run.style);
        if (run.indent > 0) paragraph.number(4, run.indent);
        if (run.isDone) {
            paragraph.bytes(
                5,
                ProtobufWriter()
                    .bytes(1, "0123456789abcdef")
                    .number(2, *run.isDone ? 1 : 0)
                    .message());
        }
        if (run.isQuote) paragraph.number(8, 1);
        ProtobufWriter one;
        one.number(1, text::utf16Length(run.text)).bytes(2, paragraph.message());
        if (run.weight > 0) one.number(5, run.weight);
        if (run.isUnderlined) one.number(6, 1);
        if (run.isStruck) one.number(7, 1);
        if (run.baseline != 0) {
            one.number(8, static_cast<std::uint64_t>(static_cast<std::int64_t>(run.baseline)));
        }
        if (!run.link.empty()) one.bytes(9, run.link);
        if (!run.attachment.empty()) {
            one.bytes(12, ProtobufWriter().bytes(1, run.attachment).bytes(2, run.type).message());
        }
        message.bytes(5, one.message());
    }
    return message.message();
}

std::string noteData(const std::vector<NoteRun>& runs) {
    const std::string version = ProtobufWriter().number(1, 0).bytes(3, noteMessage(runs)).message();
    return gzip(ProtobufWriter().number(1, 0).bytes(2, version).message());
}

std::string tableData(const std::vector<std::vector<std::string>>& cells) {
    TableObjects objects;
    std::vector<std::string> rows;
    std::vector<std::string> columns;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        rows.push_back("row " + std::to_string(i));
    }
    for (std::size_t i = 0; i < cells.front().size(); ++i) {
        columns.push_back("column " + std::to_string(i));
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> byColumn;
    for (std::size_t column = 0; column < columns.size(); ++column) {
        std::vector<std::pair<std::uint64_t, std::uint64_t>> byRow;
        for (std::size_t row = 0; row < rows.size(); ++row) {
            const std::string text = noteMessage({{.text = cells[row][column]}});
            const std::uint64_t cell = objects.add(ProtobufWriter().bytes(10, text).message());
            byRow.emplace_back(objects.addIdentifier(row), cell);
        }
        byColumn.emplace_back(
            objects.addIdentifier(rows.size() + column), objects.addDictionary(byRow));
    }
    const std::uint64_t rowOrder = objects.addOrder(rows);
    const std::uint64_t columnOrder = objects.addOrder(columns);
    const std::uint64_t cellColumns = objects.addDictionary(byColumn);
    objects.add(ProtobufWriter()
                    .bytes(
                        13,
                        ProtobufWriter()
                            .number(1, 0)
                            .bytes(3, property(0, rowOrder))
                            .bytes(3, property(1, columnOrder))
                            .bytes(3, property(2, cellColumns))
                            .message())
                    .message());

    ProtobufWriter data;
    for (const std::string& object : objects.all()) {
        data.bytes(3, object);
    }
    for (const char* key : {"crRows", "crColumns", "cellColumns"}) {
        data.bytes(4, key);
    }
    for (const char* type : {"com.apple.notes.ICTable", "com.apple.CRDT.NSUUID"}) {
        data.bytes(5, type);
    }
    for (const auto& list : {rows, columns}) {
        for (const std::string& identifier : list) {
            data.bytes(6, identifier);
        }
    }
    const std::string object = ProtobufWriter().number(1, 0).bytes(3, data.message()).message();
    return gzip(ProtobufWriter().bytes(2, object).message());
}

void AppleNotesFixture::makeStore(const StoreContent& content) const {
    SQLiteDatabase database(storeFile(), {.keepsLog = true});
    database.execute("CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER, Z_NAME VARCHAR);");
    database.execute(
        "INSERT INTO Z_PRIMARYKEY VALUES (4, 'ICAttachment'), (10, 'ICMedia'), (11, 'ICNote'), (14, "
        "'ICFolder');");
    database.execute(
        "CREATE TABLE ZICNOTEDATA (Z_PK INTEGER PRIMARY KEY, ZNOTE INTEGER, ZDATA BLOB);");
    database.execute(content.version == StoreVersion::newer ? newerObjects : olderObjects);
    for (const StoredFolder& one : content.folders) {
        insertFolder(database, one, content.version);
    }
    int key = 100;
    for (const StoredNote& note : content.notes) {
        insertNote(database, ++key, note, content.version);
    }
    for (const StoredAttachment& attachment : content.attachments) {
        key += 2;
        insertAttachment(database, key, attachment);
    }
}

}  // namespace tesserine::test
