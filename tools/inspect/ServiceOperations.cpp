#include "base/Encoding.h"
#include "core/services/MIMEType.h"
#include "core/services/NoteService.h"
#include "core/services/StoredNames.h"
#include "tools/inspect/Operations.h"

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

value textOrNull(const std::optional<std::string>& text) {
    if (!text) return nullptr;
    return boost::json::string(*text);
}

/// `mime.normalise`: a declared type in its clean form.
value normalisedType(const object& input) {
    return textOrNull(mime::normalised(optionalText(input, "declared")));
}

/// `mime.sniff`: the type that bytes in hex show, null for none.
value sniffedType(const object& input) {
    const auto bytes = fromHex(text(input, "hex"));
    if (!bytes) throw InputError("“hex” is not hexadecimal");
    return textOrNull(mime::sniffed(*bytes));
}

/// `mime.ocrStatus`: whether text recognition has something to do with files of a type.
value ocrStatusOfType(const object& input) {
    return textOrNull(mime::ocrStatus(text(input, "mime")));
}

/// `name.stored`: the name under which a notebook, tag or saved search is stored, null for none.
value storedName(const object& input) {
    const std::string kind = text(input, "kind");
    const std::string name = optionalText(input, "name").value_or("");
    if (kind == "notebook") return textOrNull(storedNotebookName(name));
    if (kind == "tag") return textOrNull(storedTagName(name));
    if (kind == "savedSearch") return textOrNull(storedSavedSearchName(name));
    throw InputError("“kind” is none of notebook, tag and savedSearch");
}

/// `note.duplicateTitle`: the title of a note's duplicate.
value titleOfDuplicate(const object& input) {
    return textOrNull(NoteService::duplicateTitle(optionalText(input, "title")));
}

}  // namespace

void addServiceOperations(Operations& operations) {
    const auto registry = mime::TypeRegistry::find({});
    operations.add("mime.normalise", normalisedType);
    operations.add("mime.sniff", sniffedType);
    operations.add("mime.ocrStatus", ocrStatusOfType);
    operations.add("mime.extension", [registry](const object& input) -> value {
        return textOrNull(mime::extensionOf(text(input, "mime"), registry));
    });
    operations.add("mime.ofExtension", [registry](const object& input) -> value {
        return textOrNull(mime::ofExtension(text(input, "extension"), registry));
    });
    operations.add("name.stored", storedName);
    operations.add("note.duplicateTitle", titleOfDuplicate);
}

}  // namespace tesserine::inspect
