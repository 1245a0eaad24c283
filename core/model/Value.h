#pragma once

#include "base/Encoding.h"
#include "base/Instant.h"
#include "base/Uuid.h"

#include <cstdint>
#include <string>
#include <variant>

namespace tesserine {

/// The value of one attribute of one object, or none (null).
using Value = std::variant<
    std::monostate,
    bool,
    std::int16_t,
    std::int64_t,
    double,
    std::string,
    Instant,
    Uuid,
    Bytes>;

inline bool isNull(const Value& value) { return std::holds_alternative<std::monostate>(value); }

/// What an attribute may hold; each names one alternative of `Value`.
enum class AttributeType { boolean, int16, int64, real, string, date, uuid, binary };

/// The attribute type of a C++ type, as `attributeTypeOf<Instant>`.
template <class T>
inline constexpr AttributeType attributeTypeOf = AttributeType::binary;
template <>
inline constexpr AttributeType attributeTypeOf<bool> = AttributeType::boolean;
template <>
inline constexpr AttributeType attributeTypeOf<std::int16_t> = AttributeType::int16;
template <>
inline constexpr AttributeType attributeTypeOf<std::int64_t> = AttributeType::int64;
template <>
inline constexpr AttributeType attributeTypeOf<double> = AttributeType::real;
template <>
inline constexpr AttributeType attributeTypeOf<std::string> = AttributeType::string;
template <>
inline constexpr AttributeType attributeTypeOf<Instant> = AttributeType::date;
template <>
inline constexpr AttributeType attributeTypeOf<Uuid> = AttributeType::uuid;

}  // namespace tesserine
