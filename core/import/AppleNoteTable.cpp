#include "core/import/AppleNoteTable.h"

#include "core/import/Gunzip.h"
#include "core/import/ProtobufReader.h"

#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace tesserine {
namespace {

constexpr std::size_t mostBytes = 16'000'000;
constexpr std::size_t mostCells = 10'000;

using Message = std::string_view;

/// A table is a heap of objects that name each other by their places in it. What differs between
/// devices (the order of rows and columns) is a text of its own with an attachment for each; what
/// rows and columns are is an identifier, and a cell is found by the two.
namespace table_field {
constexpr std::uint64_t object = 2;
constexpr std::uint64_t data = 3;
constexpr std::uint64_t entry = 3;  // in the data
constexpr std::uint64_t key = 4;
constexpr std::uint64_t type = 5;
constexpr std::uint64_t identifier = 6;
namespace of_entry {
constexpr std::uint64_t dictionary = 6;
constexpr std::uint64_t text = 10;
constexpr std::uint64_t map = 13;
constexpr std::uint64_t orderedSet = 16;
}  // namespace of_entry
constexpr std::uint64_t mapType = 1;
constexpr std::uint64_t mapEntry = 3;
constexpr std::uint64_t element = 1;  // of a dictionary
constexpr std::uint64_t elementKey = 1;
constexpr std::uint64_t elementValue = 2;
constexpr std::uint64_t number = 2;  // of a reference: a plain number
constexpr std::uint64_t place = 6;   // or the place of an object
constexpr std::uint64_t ordering = 1;
constexpr std::uint64_t array = 1;     // of the ordering
constexpr std::uint64_t contents = 2;  // of the ordering: what stands for what
constexpr std::uint64_t attachment = 2;
constexpr std::uint64_t uuid = 2;  // of an attachment
}  // namespace table_field

/// A number field of a message; none when it has none.
std::optional<std::uint64_t> numberIn(Message message, std::uint64_t field) {
    ProtobufReader reader(message);
    while (reader.next()) {
        if (reader.field() == field) return reader.number();
    }
    return std::nullopt;
}

std::vector<Message> allIn(Message message, std::uint64_t field) {
    std::vector<Message> result;
    ProtobufReader reader(message);
    while (reader.next()) {
        if (reader.field() == field) result.push_back(reader.bytes());
    }
    return result;
}

/// One object of the heap, taken apart once: others may name it as often as they like.
struct Object {
    explicit Object(Message message) {
        ProtobufReader reader(message);
        while (reader.next()) {
            switch (reader.field()) {
            case table_field::of_entry::dictionary: dictionary = reader.bytes(); break;
            case table_field::of_entry::text: text = reader.bytes(); break;
            case table_field::of_entry::map: map = reader.bytes(); break;
            case table_field::of_entry::orderedSet: orderedSet = reader.bytes(); break;
            default: break;
            }
        }
        const Message value =
            protobufField(protobufField(map, table_field::mapEntry), table_field::elementValue);
        identifier = numberIn(value, table_field::number);
    }

    Message dictionary;
    Message text;
    Message map;
    Message orderedSet;
    std::optional<std::uint64_t> identifier;  ///< place of the identifier it stands for
};

class Table {
public:
    explicit Table(Message data)
        : keys_(allIn(data, table_field::key)),
          types_(allIn(data, table_field::type)),
          identifiers_(allIn(data, table_field::identifier)) {
        for (const Message entry : allIn(data, table_field::entry)) {
            objects_.emplace_back(entry);
        }
    }

    std::optional<std::string> html(AppleNoteReferences& references) const;

private:
    /// Rows or columns by identifier, of which each may have two.
    struct Places {
        std::map<Message, std::size_t> byIdentifier;
        std::size_t count = 0;
    };

    const Object* objectAt(Message reference) const {
        const auto place = numberIn(reference, table_field::place);
        return place && *place < objects_.size() ? &objects_[*place] : nullptr;
    }
    Message root() const;
    const Object* property(Message table, std::string_view name) const;
    Message identifierOf(Message reference) const;
    Places placesIn(const Object* order) const;
    std::vector<Message> cells(Message table, const Places& rows, const Places& columns) const;

    std::vector<Object> objects_;
    std::vector<Message> keys_;
    std::vector<Message> types_;
    std::vector<Message> identifiers_;
};

/// The object that is the table itself.
Message Table::root() const {
    for (const Object& object : objects_) {
        if (object.map.empty()) continue;
        const auto type = numberIn(object.map, table_field::mapType).value_or(0);
        if (type < types_.size() && types_[type] == "com.apple.notes.ICTable") return object.map;
    }
    return {};
}

const Object* Table::property(Message table, std::string_view name) const {
    for (const Message entry : allIn(table, table_field::mapEntry)) {
        const auto key = numberIn(entry, table_field::elementKey).value_or(keys_.size());
        if (key < keys_.size() && keys_[key] == name) {
            return objectAt(protobufField(entry, table_field::elementValue));
        }
    }
    return nullptr;
}

Message Table::identifierOf(Message reference) const {
    const Object* object = objectAt(reference);
    if (object == nullptr) return {};
    const auto place = object->identifier.value_or(identifiers_.size());
    return place < identifiers_.size() ? identifiers_[place] : Message{};
}

/// Where each row or column stands. Cells may name it by another identifier than the order does.
Table::Places Table::placesIn(const Object* order) const {
    Places places;
    if (order == nullptr) return places;
    const Message ordering = protobufField(order->orderedSet, table_field::ordering);
    for (const Message one :
         allIn(protobufField(ordering, table_field::array), table_field::attachment)) {
        const auto [entry, isNew] =
            places.byIdentifier.emplace(protobufField(one, table_field::uuid), places.count);
        if (isNew) ++places.count;
    }
    for (const Message one :
         allIn(protobufField(ordering, table_field::contents), table_field::element)) {
        const auto place =
            places.byIdentifier.find(identifierOf(protobufField(one, table_field::elementKey)));
        if (place == places.byIdentifier.end()) continue;
        const Message other = identifierOf(protobufField(one, table_field::elementValue));
        places.byIdentifier.emplace(other, place->second);
    }
    return places;
}

std::vector<Message> Table::cells(Message table, const Places& rows, const Places& columns) const {
    std::vector<Message> result(rows.count * columns.count);
    const Object* byColumn = property(table, "cellColumns");
    if (byColumn == nullptr) return result;
    std::set<const Object*> seen;  // no column shares its cells with another
    for (const Message one : allIn(byColumn->dictionary, table_field::element)) {
        const auto column =
            columns.byIdentifier.find(identifierOf(protobufField(one, table_field::elementKey)));
        const Object* byRow = objectAt(protobufField(one, table_field::elementValue));
        const bool isKnown = column != columns.byIdentifier.end() && byRow != nullptr;
        if (!isKnown || !seen.insert(byRow).second) continue;
        for (const Message cell : allIn(byRow->dictionary, table_field::element)) {
            const auto row =
                rows.byIdentifier.find(identifierOf(protobufField(cell, table_field::elementKey)));
            const Object* text = objectAt(protobufField(cell, table_field::elementValue));
            if (row == rows.byIdentifier.end() || text == nullptr) continue;
            result[row->second * columns.count + column->second] = text->text;
        }
    }
    return result;
}

std::optional<std::string> Table::html(AppleNoteReferences& references) const {
    const Message table = root();
    const Places rows = placesIn(property(table, "crRows"));
    const Places columns = placesIn(property(table, "crColumns"));
    const bool isTable =
        rows.count > 0 && columns.count > 0 && rows.count <= mostCells / columns.count;
    if (!isTable) return std::nullopt;

    std::string html = "<table>";
    std::size_t byteCount = 0;
    std::size_t place = 0;
    for (const Message cell : cells(table, rows, columns)) {
        // Many cells may name one text: together they stay within what a table may hold.
        byteCount += cell.size();
        if (byteCount > mostBytes) return std::nullopt;
        if (place % columns.count == 0) html += "<tr>";
        html += "<td>" + appleNoteHTML(appleParagraphs(cell), references) + "</td>";
        if (++place % columns.count == 0) html += "</tr>";
    }
    return html + "</table>";
}

}  // namespace

std::optional<std::string> appleNoteTable(
    std::span<const std::uint8_t> data, AppleNoteReferences& references) {
    const auto document = gunzipped(data, mostBytes);
    if (!document) return std::nullopt;
    const Message object = protobufField(*document, table_field::object);
    return Table(protobufField(object, table_field::data)).html(references);
}

}  // namespace tesserine
