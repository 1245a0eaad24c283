#include "core/store/RowMapper.h"

#include "base/sqlite/Statement.h"
#include "core/store/ListedRow.h"

namespace tesserine {

RowMapper::RowMapper(const EntityDescription& entity)
    : entity_(&entity),
      columnOfHeader_(entity.attributes.size(), -1),
      columnOfReference_(entity.relationships.size(), -1) {
    int listed = 2;  // after the key and the version
    headerColumns_ = "Z_PK, Z_OPT";
    std::string detailColumns = "Z_OPT";
    std::string insertColumns = "Z_PK, Z_OPT";
    std::string places = "?, ?";
    const std::string byKey = " FROM " + entity.table + " WHERE Z_PK = ?";
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        const AttributeDescription& attribute = entity.attributes[i];
        selectLarge_.push_back("SELECT Z_OPT, " + attribute.column + byKey);
        insertColumns += ", " + attribute.column;
        places += ", ?";
        insertOrder_.push_back(i);
        if (attribute.tier == Tier::header) {
            headers_.push_back(i);
            columnOfHeader_[i] = listed++;
            headerColumns_ += ", " + attribute.column;
        } else if (attribute.tier == Tier::detail) {
            details_.push_back(i);
            detailColumns += ", " + attribute.column;
        }
    }
    for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
        if (entity.relationships[i].isToMany) continue;
        references_.push_back(i);
        columnOfReference_[i] = listed++;
        headerColumns_ += ", " + entity.relationships[i].column;
        insertColumns += ", " + entity.relationships[i].column;
        places += ", ?";
    }
    selectDetails_ = "SELECT " + detailColumns + byKey;
    insertStatement_ =
        "INSERT INTO " + entity.table + " (" + insertColumns + ") VALUES (" + places + ")";
}

void RowMapper::readHeader(const Statement& row, StoreObject& object) const {
    object.version_ = row.integer(1);
    int column = 2;
    static const ExternalValues none{std::nullopt};
    for (const std::size_t attribute : headers_) {
        if (!object.isChanged(attribute)) read(row, column, object, attribute, none);
        ++column;
    }
    for (const std::size_t reference : references_) {
        if (!object.isRelationshipChanged(reference)) {
            object.linkSlot(entity_->relationships[reference]) = {.key = row.integer(column)};
        }
        ++column;
    }
    for (std::size_t i = 0; i < entity_->attributes.size(); ++i) {
        if (entity_->attributes[i].tier == Tier::header || object.isChanged(i)) continue;
        object.loaded_ &= ~(std::uint64_t{1} << i);
    }
}

void RowMapper::readDetails(const Statement& row, StoreObject& object) const {
    int column = 1;
    static const ExternalValues none{std::nullopt};
    for (const std::size_t attribute : details_) {
        if (!object.isChanged(attribute)) read(row, column, object, attribute, none);
        ++column;
    }
}

// Only a zero may stand for NULL, so only then is SQLite asked a second time.

void RowMapper::read(const Statement& row, int column, std::optional<std::int64_t>& value) {
    value = row.integer(column);
    if (*value == 0 && row.isNull(column)) value.reset();
}

void RowMapper::read(const Statement& row, int column, std::optional<bool>& value) {
    std::optional<std::int64_t> number;
    read(row, column, number);
    value = number ? std::optional(*number != 0) : std::nullopt;
}

void RowMapper::read(const Statement& row, int column, std::optional<std::int16_t>& value) {
    std::optional<std::int64_t> number;
    read(row, column, number);
    value = number ? std::optional(static_cast<std::int16_t>(*number)) : std::nullopt;
}

void RowMapper::read(const Statement& row, int column, std::optional<double>& value) {
    value = row.real(column);
    if (*value == 0 && row.isNull(column)) value.reset();
}

void RowMapper::read(const Statement& row, int column, std::optional<Instant>& value) {
    std::optional<double> seconds;
    read(row, column, seconds);
    value = seconds ? std::optional(Instant::fromReferenceSeconds(*seconds)) : std::nullopt;
}

void RowMapper::read(const Statement& row, int column, std::optional<std::string>& value) {
    value = row.text(column);
}

void RowMapper::read(const Statement& row, int column, std::optional<Uuid>& value) {
    value = Uuid::fromBytes(row.blob(column));
}

void RowMapper::read(
    const Statement& row,
    int column,
    StoreObject& object,
    std::size_t attribute,
    const ExternalValues& external) {
    const AttributeDescription& description = object.entity().attributes[attribute];
    object.loaded_ |= std::uint64_t{1} << attribute;
    const auto fill = [&]<class T>() { read(row, column, object.slot<T>(description)); };
    switch (description.type) {
    case AttributeType::boolean: return fill.operator()<bool>();
    case AttributeType::int16: return fill.operator()<std::int16_t>();
    case AttributeType::int64: return fill.operator()<std::int64_t>();
    case AttributeType::real: return fill.operator()<double>();
    case AttributeType::string: return fill.operator()<std::string>();
    case AttributeType::date: return fill.operator()<Instant>();
    case AttributeType::uuid: return fill.operator()<Uuid>();
    case AttributeType::binary: break;
    }
    std::optional<Bytes>& bytes = object.slot<Bytes>(description);
    bytes = row.isNull(column) ? std::nullopt : external.decode(row.blob(column));
}

Value RowMapper::readValue(
    const Statement& row, int column, const AttributeDescription& attribute) {
    if (row.isNull(column)) return {};
    switch (attribute.type) {
    case AttributeType::boolean: return row.integer(column) != 0;
    case AttributeType::int16: return static_cast<std::int16_t>(row.integer(column));
    case AttributeType::int64: return row.integer(column);
    case AttributeType::real: return row.real(column);
    case AttributeType::string: return row.text(column).value_or("");
    case AttributeType::date: return Instant::fromReferenceSeconds(row.real(column));
    case AttributeType::uuid:
        if (const auto id = Uuid::fromBytes(row.blob(column))) return *id;
        return {};
    case AttributeType::binary: break;
    }
    return {};
}

void RowMapper::bind(Statement& statement, int place, StoreObject& object, std::size_t attribute) {
    const AttributeDescription& description = object.entity().attributes[attribute];
    const auto with = [&]<class T>(auto bindOne) {
        const std::optional<T>& slot = object.slot<T>(description);
        if (slot) {
            bindOne(*slot);
        } else {
            statement.bindNull(place);
        }
    };
    const auto integer = [&](auto value) { statement.bindInteger(place, value); };
    switch (description.type) {
    case AttributeType::boolean: return with.operator()<bool>(integer);
    case AttributeType::int16: return with.operator()<std::int16_t>(integer);
    case AttributeType::int64: return with.operator()<std::int64_t>(integer);
    case AttributeType::real:
        return with.operator()<double>([&](double value) { statement.bindDouble(place, value); });
    case AttributeType::string:
        return with.operator()<std::string>(
            [&](const std::string& value) { statement.bindText(place, value); });
    case AttributeType::date:
        return with.operator()<Instant>(
            [&](Instant value) { statement.bindDouble(place, value.referenceSeconds()); });
    case AttributeType::uuid:
        return with.operator()<Uuid>(
            [&](const Uuid& value) { statement.bindBlob(place, value.bytes()); });
    case AttributeType::binary:
        return with.operator()<Bytes>(
            [&](const Bytes& value) { statement.bindBlob(place, value); });
    }
}

void RowMapper::markAllLoaded(StoreObject& object) { object.loaded_ = ~std::uint64_t{0}; }

void RowMapper::releaseLarge(StoreObject& object) const {
    for (std::size_t i = 0; i < entity_->attributes.size(); ++i) {
        const AttributeDescription& attribute = entity_->attributes[i];
        if (attribute.tier != Tier::large || object.isChanged(i) || !object.isLoaded(i)) continue;
        object.loaded_ &= ~(std::uint64_t{1} << i);
        if (attribute.type == AttributeType::string) {
            object.slot<std::string>(attribute).reset();
        } else {
            object.slot<Bytes>(attribute).reset();
        }
    }
}

std::int64_t ListedRow::key() const {
    return object_ != nullptr ? object_->key() : row_->integer(0);
}

std::int64_t ListedRow::reference(std::size_t relationship) const {
    return row_->integer(mapper_->referenceColumn(relationship));
}

template <class T>
void ListedRow::read(std::size_t attribute, std::optional<T>& value) const {
    RowMapper::read(*row_, mapper_->headerColumn(attribute), value);
}

template void ListedRow::read(std::size_t, std::optional<bool>&) const;
template void ListedRow::read(std::size_t, std::optional<std::int16_t>&) const;
template void ListedRow::read(std::size_t, std::optional<std::int64_t>&) const;
template void ListedRow::read(std::size_t, std::optional<double>&) const;
template void ListedRow::read(std::size_t, std::optional<std::string>&) const;
template void ListedRow::read(std::size_t, std::optional<Instant>&) const;
template void ListedRow::read(std::size_t, std::optional<Uuid>&) const;

}  // namespace tesserine
