#include "base/JSON.h"
#include "base/Random.h"
#include "sync/AccountSession.h"
#include "sync/AuthCallback.h"
#include "sync/SyncReply.h"
#include "sync/SyncRetryPolicy.h"
#include "sync/WireCoding.h"
#include "sync/WireDate.h"
#include "tools/inspect/DateInputs.h"
#include "tools/inspect/Operations.h"
#include "tools/inspect/SyncInputs.h"

#include <array>
#include <string>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

using Decode = object (*)(std::string_view text);

template <class Record>
object decodeAs(std::string_view text) {
    return wire::listed(wire::decodeText<Record>(text));
}

struct DecodedRecord {
    std::string_view name;
    Decode decode;
};

constexpr std::array decodedRecords = {
    DecodedRecord{"SyncRecord", decodeAs<SyncRecord>},
    DecodedRecord{"SyncPush", decodeAs<SyncPush>},
    DecodedRecord{"PushResult", decodeAs<PushResult>},
    DecodedRecord{"PushResponse", decodeAs<PushResponse>},
    DecodedRecord{"ChangesResponse", decodeAs<ChangesResponse>},
    DecodedRecord{"SyncStateResponse", decodeAs<SyncStateResponse>},
    DecodedRecord{"BlobUsage", decodeAs<BlobUsage>},
    DecodedRecord{"AccountInfo", decodeAs<AccountInfo>},
    DecodedRecord{"TokenResponse", decodeAs<TokenResponse>},
    DecodedRecord{"ShareLink", decodeAs<ShareLink>},
    DecodedRecord{"ShareStatus", decodeAs<ShareStatus>},
    DecodedRecord{"APITokenCreated", decodeAs<APITokenCreated>},
    DecodedRecord{"APITokenInfo", decodeAs<APITokenInfo>},
};

/// `wire.decode`: a record's members under their wire names, or that it is none.
value wireDecode(const object& input) {
    const std::string name = text(input, "record");
    for (const DecodedRecord& record : decodedRecords) {
        if (record.name != name) continue;
        try {
            object fields = record.decode(text(input, "text"));
            fields.emplace("decodable", true);
            return fields;
        } catch (const WireError&) {
            return object{{"decodable", false}};
        }
    }
    throw InputError("there is no record “" + name + "”");
}

Uuid identifier(const object& fields) {
    const auto id = Uuid::parse(text(fields, "id"));
    if (!id) throw InputError("“id” is no identifier");
    return *id;
}

JSONObject payload(const object& fields) {
    const value& found = member(fields, "payload");
    if (!found.is_object()) throw InputError("“payload” is not an object");
    return jsonObject(found.get_object());
}

Instant updatedAt(const object& fields) {
    return Instant::fromMilliseconds(integer(fields, "updatedAtEpochMs"));
}

/// `wire.encode`: what is written for a record that is given member by member.
value wireEncode(const object& input) {
    const std::string name = text(input, "record");
    const value& given = member(input, "value");
    if (!given.is_object()) throw InputError("“value” is not an object");
    const object& fields = given.get_object();
    if (name == "SyncRecord") {
        return wire::encode(SyncRecord{
            .id = identifier(fields),
            .kind = text(fields, "kind"),
            .rev = integer(fields, "rev"),
            .seq = integer(fields, "seq"),
            .deleted = truth(fields, "deleted"),
            .payload = payload(fields),
            .updatedAt = updatedAt(fields)});
    }
    if (name == "SyncPush") {
        return wire::encode(SyncPush{
            .id = identifier(fields),
            .kind = text(fields, "kind"),
            .baseRev = integer(fields, "baseRev"),
            .deleted = truth(fields, "deleted"),
            .updatedAt = updatedAt(fields),
            .payload = payload(fields)});
    }
    if (name == "AccountInfo") {
        return wire::encode(AccountInfo{
            .id = text(fields, "id"),
            .email = text(fields, "email"),
            .name = optionalText(fields, "name"),
            .pictureURL = optionalText(fields, "pictureURL")});
    }
    throw InputError("no record “" + name + "” is sent");
}

/// `wire.formatDate` and `wire.parseDate`.
value wireFormatDate(const object& input) {
    const auto instant = Instant::fromMilliseconds(integer(input, "epochMs"));
    return boost::json::string(wire::formatDate(instant));
}

value wireParseDate(const object& input) {
    const auto instant = wire::parseDate(text(input, "text"));
    if (!instant) return nullptr;
    return instant->milliseconds();
}

const char* caseName(JSONValue::Case kind) {
    switch (kind) {
    case JSONValue::Case::boolean: return "bool";
    case JSONValue::Case::number: return "number";
    case JSONValue::Case::string: return "string";
    case JSONValue::Case::array: return "array";
    case JSONValue::Case::object: return "object";
    case JSONValue::Case::null: return "null";
    }
    return "";
}

/// `json.kind`: which case a JSON text is, with its value where it is a scalar.
value jsonKind(const object& input) {
    try {
        const JSONValue decoded = JSONValue::decode(text(input, "text"));
        object answer{{"case", caseName(decoded.kind())}};
        const bool isScalar = decoded.array() == nullptr && decoded.object() == nullptr;
        if (isScalar) answer.emplace("value", decoded.toJSON());
        return answer;
    } catch (const WireError& error) {
        return object{{"error", error.what()}};
    }
}

/// `sync.backoff`: the delay before a retry.
value syncBackoff(const object& input) {
    SecureRandom random;
    const std::optional<double> retryAfter = optionalNumber(input, "retryAfter");
    const auto asked = retryAfter ? std::optional(Seconds(*retryAfter)) : std::nullopt;
    return policyOf(input).delay(static_cast<int>(integer(input, "n")), asked, random).count();
}

/// `sync.classify`: what one reply means.
value syncClassify(const object& input) {
    const Instant now = optionalInstant(input, "now").value_or(Instant());
    try {
        checkReply(replyOf(input), now, After500::mayRepeat);
    } catch (const SyncError& error) {
        return described(error);
    }
    return object{{"ok", true}};
}

/// `sync.errorText`: the sentence and the predicates of a case.
value syncErrorText(const object& input) {
    const std::string name = text(input, "case");
    const auto error = [&] {
        if (name == "server") {
            const auto status = static_cast<int>(integer(input, "status"));
            return SyncError::server({.status = status, .message = text(input, "message")});
        }
        if (name == "malformed") return SyncError::malformed(text(input, "description"));
        if (name == "offline") return SyncError::offline();
        if (name == "signedOut") return SyncError::signedOut();
        if (name == "notInvited") return SyncError::notInvited();
        if (name == "cancelled") return SyncError::cancelled();
        if (name == "keychainUnavailable") return SyncError::keychainUnavailable();
        throw InputError("there is no case “" + name + "”");
    }();
    return object{
        {"message", error.what()},
        {"retryable", error.isRetryable()},
        {"transient", error.isTransient()}};
}

/// `sync.retryAfter`: seconds, or null.
value syncRetryAfter(const object& input) {
    const auto delay = parseRetryAfter(text(input, "header"), instant(input, "now"));
    if (!delay) return nullptr;
    return delay->count();
}

/// `auth.callback`: what a sign-in callback says; its scheme counts as the program's own.
value authCallback(const object& input) {
    const std::string url = text(input, "url");
    try {
        const auto callback = AuthCallback::parse(url, url.substr(0, url.find(':')));
        if (!callback) return object{{"result", "ignored"}};
        if (callback->kind == AuthCallback::Kind::code) {
            return object{{"result", "code"}, {"code", callback->text}};
        }
        return object{{"result", "failed"}, {"message", callback->text}};
    } catch (const SyncError& error) {
        return object{{"result", nameOf(error.kind())}, {"message", error.what()}};
    }
}

/// `auth.tokenUsable`: whether a token with so many seconds left is used as it is.
value authTokenUsable(const object& input) {
    const auto left = optionalNumber(input, "expiresInSeconds");
    if (!left) throw InputError("the input needs “expiresInSeconds”, a number");
    const Instant now;
    return AccountSession::isUsable(now + Instant::Duration(*left), now);
}

}  // namespace

void addSyncOperations(Operations& operations) {
    operations.add("auth.callback", authCallback);
    operations.add("auth.tokenUsable", authTokenUsable);
    operations.add("json.kind", jsonKind);
    operations.add("sync.backoff", syncBackoff);
    operations.add("sync.classify", syncClassify);
    operations.add("sync.errorText", syncErrorText);
    operations.add("sync.retryAfter", syncRetryAfter);
    operations.add("wire.decode", wireDecode);
    operations.add("wire.encode", wireEncode);
    operations.add("wire.formatDate", wireFormatDate);
    operations.add("wire.parseDate", wireParseDate);
}

}  // namespace tesserine::inspect
