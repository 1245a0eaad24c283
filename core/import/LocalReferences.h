#pragma once

#include "base/Encoding.h"
#include "core/import/LinkTable.h"
#include "core/import/ReferenceRewriter.h"
#include "core/import/SourceFolder.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// The files of an import and how they are found.
struct SourceIndex {
    explicit SourceIndex(const SourceFolder& files)
        : folder(files),
          notes(files.notes(), LinkTable::Extension::optional),
          others(files.others(), LinkTable::Extension::required) {}

    const SourceFolder& folder;
    LinkTable notes;
    LinkTable others;
};

/// Resolves the references of one Markdown file: to other notes of the import, to files beside it,
/// and to what is neither. Nothing outside the chosen folders is ever looked at.
class LocalReferences : public ReferenceResolver {
public:
    /// `warnings` gets a sentence for every reference that is lost.
    LocalReferences(
        const SourceIndex& index,
        const SourceFile& from,
        bool keepsRemoteImages,
        std::vector<std::string>& warnings)
        : index_(index), from_(from), keepsRemoteImages_(keepsRemoteImages), warnings_(warnings) {}

    ReferenceChange picture(std::string_view address) final;
    ReferenceChange link(std::string_view address) final;

protected:
    /// The address of a note of the import; none when that note failed.
    virtual std::optional<std::string> noteAddress(std::size_t note) = 0;
    /// The body element of an attachment made from a file; none when it was refused, and then a
    /// warning was given.
    virtual std::optional<std::string> fileElement(const SourceFile& file) = 0;
    /// The same for a picture that stands in the address itself.
    virtual std::optional<std::string> dataElement(std::string_view type, Bytes bytes) = 0;

    void warn(std::string sentence) { warnings_.push_back(std::move(sentence)); }

private:
    ReferenceChange wikiLink(std::string_view target, bool isEmbedded);
    ReferenceChange noteLink(std::size_t note);
    ReferenceChange file(const SourceFile& file);
    ReferenceChange data(std::string_view address);
    ReferenceChange lost(
        std::string_view address, std::string_view why, ReferenceChange::Kind left);
    std::optional<SourceFile> otherFile(const std::string& path) const;

    const SourceIndex& index_;
    const SourceFile& from_;
    bool keepsRemoteImages_;
    std::vector<std::string>& warnings_;
};

}  // namespace tesserine
