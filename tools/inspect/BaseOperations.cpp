#include "base/Digest.h"
#include "base/Encoding.h"
#include "tools/inspect/Operations.h"

namespace tesserine::inspect {
namespace {

/// `hash.sha256`: the digest of the bytes in hex, repeated so often.
boost::json::value sha256OfRepeated(const boost::json::object& input) {
    const auto bytes = fromHex(text(input, "hex"));
    if (!bytes) throw InputError("“hex” is not hexadecimal");
    const std::int64_t times = integer(input, "repeat", 1);
    if (times < 0) throw InputError("“repeat” is negative");

    SHA256 digest;
    for (std::int64_t i = 0; i < times && !bytes->empty(); ++i) {
        digest.update(*bytes);
    }
    return boost::json::string(hex(digest.finish()));
}

}  // namespace

void addBaseOperations(Operations& operations) { operations.add("hash.sha256", sha256OfRepeated); }

}  // namespace tesserine::inspect
