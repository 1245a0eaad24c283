#pragma once

#include "base/Clock.h"
#include "base/Encoding.h"
#include "core/model/NoteEntities.h"
#include "core/services/AttachmentReferences.h"
#include "core/services/MIMEType.h"
#include "core/services/NoteService.h"
#include "core/services/ServiceErrors.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreContext;

/// A file on its way into a note.
struct AttachmentDraft {
    /// Its name, also with a path, of which the last component is used; may be empty.
    std::string filename{};
    std::optional<std::string> declaredType{};
    Bytes data{};
    /// "file", "paste", "scan", "recording" or "import".
    std::string sourceKind = "file";
    std::optional<Uuid> id{};  ///< none: a new one
};

/// Puts files into notes and takes them out.
///
/// Works in the context it is handed and never saves. An attachment is never deleted because its
/// reference left the body: an earlier revision may need it. Not synchronised: call it on the
/// thread that owns the context. `clock` and `registry` outlive it.
class AttachmentService {
public:
    AttachmentService(const Clock& clock, const mime::TypeRegistry& registry)
        : clock_(clock), registry_(registry), notes_(clock) {}

    /// Gives the note an attachment, with its type, digest, size and name; does not touch the body.
    /// Bytes that the note holds already come back as the row that holds them. Throws
    /// `AttachmentError` (empty, tooLarge, tooMany); nothing is changed then.
    CDAttachment& insert(StoreContext& context, CDNote& note, AttachmentDraft draft) const;
    /// The same with a regular file. Throws `FileError` as well.
    CDAttachment& insertFile(
        StoreContext& context,
        CDNote& note,
        const std::filesystem::path& file,
        const std::string& sourceKind = "file") const;

    /// The canonical HTML that shows the attachment in a body: a picture, or a block with its name.
    static std::string bodyElement(const CDAttachment& attachment);
    /// Adds the elements of `attachments` at the end of the note's body, as one update of the note.
    void appendToBody(
        StoreContext& context,
        CDNote& note,
        const std::vector<const CDAttachment*>& attachments) const;

    /// For a note that was made from another one: clones every attachment that its body refers to
    /// and that is not its own, and points the body to the clones. The bytes are kept once. Part of
    /// making the note: raises no version. Tells how many were cloned.
    std::size_t cloneReferenced(StoreContext& context, CDNote& note) const;
    /// A new attachment of `note` with the same file; recognised text and thumbnail come along.
    CDAttachment& clone(StoreContext& context, const CDAttachment& source, CDNote& note) const;

    enum class IfExists { refuse, replace };
    enum class Integrity { intact, damaged };
    /// Writes the attachment's bytes to `file`, whole or not at all. `damaged` tells that they are
    /// not those that were attached; they are written nevertheless, being the best there is. Throws
    /// `AttachmentError` (missingData, exists) and `FileError`.
    Integrity saveToFile(
        const CDAttachment& attachment,
        const std::filesystem::path& file,
        IfExists ifExists = IfExists::refuse) const;
    /// A sentence for a person whose saved attachment was `damaged`.
    static std::string damageWarning(const CDAttachment& attachment);

    /// Revisions of its note whose body refers to the attachment, newest first: what a person is
    /// told before deleting it.
    std::vector<CDNoteRevision*> referringRevisions(const CDAttachment& attachment) const;
    /// Deletes the attachment. Its element, if any, leaves the note's body first, as an update.
    void deleteAttachment(StoreContext& context, CDAttachment& attachment) const;

    /// Throws `StoreError::notFound` ("The attachment could not be found.").
    CDAttachment& getAttachment(StoreContext& context, const Uuid& id) const;
    /// The note's attachments in the order they were added.
    std::vector<CDAttachment*> attachments(const CDNote& note) const;
    /// The name an attachment of this type is stored under: `filename`'s last component, made safe;
    /// its extension replaced unless it already gives `type` or `type` is unknown. Without a name:
    /// "Image" or "Attachment" and the extension.
    std::string storedFilename(std::string_view filename, const std::string& type) const;

private:
    const Clock& clock_;
    const mime::TypeRegistry& registry_;
    NoteService notes_;
};

}  // namespace tesserine
