#include "sync/WireCoding.h"

#include "base/JSON.h"
#include "sync/WireDate.h"
#include "sync/WireDescriptions.h"

#include <cmath>
#include <limits>

namespace tesserine::wire {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

enum class Absent { leftOut, null };

template <class Record>
object encodeRecord(const Record& record, Absent absent);

/// Turns single values into JSON; `Absent` goes on to records inside.
struct ValueEncoder {
    Absent absent;

    value operator()(bool truth) const { return truth; }
    value operator()(std::int64_t number) const { return number; }
    value operator()(const std::string& text) const { return boost::json::string(text); }
    value operator()(const Uuid& id) const { return boost::json::string(id.wireText()); }
    value operator()(Instant date) const { return boost::json::string(formatDate(date)); }
    value operator()(const JSONValue& any) const { return any.toJSON(); }
    value operator()(const JSONObject& members) const { return toJSON(members); }
    template <class Element>
    value operator()(const std::vector<Element>& elements) const {
        array result;
        result.reserve(elements.size());
        for (const Element& element : elements) {
            result.push_back((*this)(element));
        }
        return result;
    }
    template <class Record>
    value operator()(const Record& record) const {
        return encodeRecord(record, absent);
    }
};

class Encoder {
public:
    explicit Encoder(Absent absent) : absent_(absent) {}

    void required(std::string_view key, const auto& member) {
        object_.emplace(key, ValueEncoder{absent_}(member));
    }
    void defaulted(std::string_view key, const auto& member) { required(key, member); }
    void optional(std::string_view key, const auto& member) {
        if (member) {
            required(key, *member);
        } else if (absent_ == Absent::null) {
            object_.emplace(key, nullptr);
        }
    }
    object take() { return std::move(object_); }

private:
    Absent absent_;
    object object_;
};

template <class Record>
object encodeRecord(const Record& record, Absent absent) {
    Encoder encoder(absent);
    describe(encoder, record);
    return encoder.take();
}

/// A value is of the wrong type; the decoder adds the key.
struct Mismatch {};

/// Whole numbers only, and never by way of a double that might have lost digits.
std::int64_t integerOf(const value& json) {
    if (json.is_int64()) return json.get_int64();
    constexpr double exact = 9'007'199'254'740'992.0;  // 2^53
    const double* const number = json.if_double();
    const bool isWhole =
        number != nullptr && std::abs(*number) <= exact && std::trunc(*number) == *number;
    if (!isWhole) throw Mismatch{};
    return static_cast<std::int64_t>(*number);
}

template <class Record>
Record decodeRecord(const value& json);

template <class Value>
Value decodeValue(const value& json);

template <class Element>
void take(const value& json, std::vector<Element>& elements) {
    if (!json.is_array()) throw Mismatch{};
    elements.reserve(json.get_array().size());
    for (const value& element : json.get_array()) {
        elements.push_back(decodeValue<Element>(element));
    }
}
void take(const value& json, bool& truth) {
    if (!json.is_bool()) throw Mismatch{};
    truth = json.get_bool();
}
void take(const value& json, std::int64_t& number) { number = integerOf(json); }
void take(const value& json, std::string& text) {
    if (!json.is_string()) throw Mismatch{};
    text = std::string(json.get_string());
}
void take(const value& json, Uuid& id) {
    if (!json.is_string()) throw Mismatch{};
    const auto read = Uuid::parse(json.get_string());
    if (!read) throw Mismatch{};
    id = *read;
}
void take(const value& json, Instant& date) {
    if (!json.is_string()) throw Mismatch{};
    const auto read = parseDate(json.get_string());
    if (!read) throw Mismatch{};
    date = *read;
}
void take(const value& json, JSONValue& any) { any = JSONValue::from(json); }
void take(const value& json, JSONObject& members) {
    if (!json.is_object()) throw Mismatch{};
    members = jsonObject(json.get_object());
}
template <class Record>
void take(const value& json, Record& record) {
    record = decodeRecord<Record>(json);
}

template <class Value>
Value decodeValue(const value& json) {
    Value result;
    take(json, result);
    return result;
}

class Decoder {
public:
    explicit Decoder(const object& members) : members_(members) {}

    void required(std::string_view key, auto& member) {
        const value* const json = find(key);
        if (json == nullptr) throw WireError("the key “" + std::string(key) + "” is missing");
        read(key, *json, member);
    }
    void defaulted(std::string_view key, auto& member) {
        if (const value* const json = find(key)) read(key, *json, member);
    }
    template <class Value>
    void optional(std::string_view key, std::optional<Value>& member) {
        if (const value* const json = find(key)) read(key, *json, member.emplace());
    }
    /// A text that is no date leaves an optional date out.
    void optional(std::string_view key, std::optional<Instant>& member) {
        std::optional<std::string> text;
        optional(key, text);
        if (text) member = parseDate(*text);
    }

private:
    const value* find(std::string_view key) const {
        const value* const json = members_.if_contains(key);
        return json == nullptr || json->is_null() ? nullptr : json;
    }
    void read(std::string_view key, const value& json, auto& member) const {
        try {
            take(json, member);
        } catch (const Mismatch&) {
            throw WireError("the key “" + std::string(key) + "” holds something else");
        }
    }

    const object& members_;
};

template <class Record>
Record decodeRecord(const value& json) {
    if (!json.is_object()) throw WireError("not an object");
    Record record{};
    Decoder decoder(json.get_object());
    describe(decoder, record);
    return record;
}

}  // namespace

template <class Record>
object encode(const Record& record) {
    return encodeRecord(record, Absent::leftOut);
}

template <class Record>
Record decode(const value& json) {
    return decodeRecord<Record>(json);
}

template <class Record>
Record decodeText(std::string_view text) {
    try {
        return decodeRecord<Record>(json::parse(text));
    } catch (const json::JSONError&) {
        throw WireError("not the expected JSON");
    }
}

template <class Record>
object listed(const Record& record) {
    return encodeRecord(record, Absent::null);
}

std::string pushBody(const std::vector<SyncPush>& changes) {
    return json::write(object{{"changes", ValueEncoder{Absent::leftOut}(changes)}});
}

#define TESSERINE_WIRE_RECORD(Record)                                                              \
    template object encode<Record>(const Record&);                                                 \
    template Record decode<Record>(const value&);                                                  \
    template Record decodeText<Record>(std::string_view);                                          \
    template object listed<Record>(const Record&);

TESSERINE_WIRE_RECORD(SyncRecord)
TESSERINE_WIRE_RECORD(SyncPush)
TESSERINE_WIRE_RECORD(PushResult)
TESSERINE_WIRE_RECORD(PushResponse)
TESSERINE_WIRE_RECORD(ChangesResponse)
TESSERINE_WIRE_RECORD(SyncStateResponse)
TESSERINE_WIRE_RECORD(BlobUsage)
TESSERINE_WIRE_RECORD(AccountInfo)
TESSERINE_WIRE_RECORD(TokenResponse)
TESSERINE_WIRE_RECORD(ShareLink)
TESSERINE_WIRE_RECORD(ShareStatus)
TESSERINE_WIRE_RECORD(APITokenCreated)
TESSERINE_WIRE_RECORD(APITokenInfo)
TESSERINE_WIRE_RECORD(RecordRevision)
TESSERINE_WIRE_RECORD(RevisionsReply)
TESSERINE_WIRE_RECORD(BlobCheckReply)
TESSERINE_WIRE_RECORD(BlobDeleteReply)
TESSERINE_WIRE_RECORD(SessionsReply)
TESSERINE_WIRE_RECORD(APITokensReply)

#undef TESSERINE_WIRE_RECORD

}  // namespace tesserine::wire
