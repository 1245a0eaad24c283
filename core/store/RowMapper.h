#pragma once

#include "core/model/StoreObject.h"
#include "core/store/ExternalValues.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

class Statement;

/// Moves values between the rows of one entity's table and its objects. Holds the texts of the
/// entity's statements, made once. Immutable.
class RowMapper {
public:
    explicit RowMapper(const EntityDescription& entity);

    const EntityDescription& entity() const { return *entity_; }
    /// "Z_PK, Z_OPT", the header attributes and the references.
    const std::string& headerColumns() const { return headerColumns_; }
    const std::string& selectDetails() const { return selectDetails_; }
    /// Reads one large value and the row's version.
    const std::string& selectLarge(std::size_t attribute) const { return selectLarge_[attribute]; }
    const std::string& insertStatement() const { return insertStatement_; }

    /// Fills the header of `object` from the current row, leaving changed values alone. Details and
    /// large values that were read from an older version are forgotten.
    void readHeader(const Statement& row, StoreObject& object) const;
    /// Fills the details from a row of `selectDetails`.
    void readDetails(const Statement& row, StoreObject& object) const;
    /// The column of a header attribute, and that of a reference, among `headerColumns`.
    int headerColumn(std::size_t attribute) const { return columnOfHeader_[attribute]; }
    int referenceColumn(std::size_t relationship) const { return columnOfReference_[relationship]; }
    /// The value of a column, none for NULL.
    static void read(const Statement& row, int column, std::optional<bool>& value);
    static void read(const Statement& row, int column, std::optional<std::int16_t>& value);
    static void read(const Statement& row, int column, std::optional<std::int64_t>& value);
    static void read(const Statement& row, int column, std::optional<double>& value);
    static void read(const Statement& row, int column, std::optional<std::string>& value);
    static void read(const Statement& row, int column, std::optional<Instant>& value);
    static void read(const Statement& row, int column, std::optional<Uuid>& value);
    /// Fills one attribute from a column.
    static void read(
        const Statement& row,
        int column,
        StoreObject& object,
        std::size_t attribute,
        const ExternalValues& external);
    /// The value of a column as the type of `attribute`; external values stay unread and are null.
    static Value readValue(const Statement& row, int column, const AttributeDescription& attribute);
    static void bind(Statement& statement, int place, StoreObject& object, std::size_t attribute);
    /// Marks every attribute as read: nothing of the object is in the file, or all of it is here.
    static void markAllLoaded(StoreObject& object);
    /// Lets go of unchanged large values.
    void releaseLarge(StoreObject& object) const;

    /// Attributes in the order of `insertStatement`'s parameters from 3 on, then the references.
    const std::vector<std::size_t>& insertOrder() const { return insertOrder_; }
    const std::vector<std::size_t>& references() const { return references_; }

private:
    const EntityDescription* entity_;
    std::vector<std::size_t> headers_;
    std::vector<int> columnOfHeader_;
    std::vector<int> columnOfReference_;
    std::vector<std::size_t> details_;
    std::vector<std::size_t> references_;
    std::vector<std::size_t> insertOrder_;
    std::string headerColumns_;
    std::string selectDetails_;
    std::string insertStatement_;
    std::vector<std::string> selectLarge_;
};

}  // namespace tesserine
