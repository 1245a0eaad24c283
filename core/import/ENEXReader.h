#pragma once

#include "core/import/ENEXNote.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace tesserine {

/// Reads the notes of an ENEX file one after the other, with one in memory at a time.
///
/// The file is read as XML from front to back. Nothing outside it is ever fetched, and a file that
/// declares entities of its own is refused. Characters that XML does not allow are replaced. A
/// place that cannot be read becomes a note with a failure, and reading goes on with the next
/// `<note>`; so does the end of a file that breaks off. Not synchronised.
class ENEXReader {
public:
    /// A note without its files may have so many bytes; the text of a larger one is not kept.
    static constexpr std::size_t mostSourceBytes = 32'000'000;
    /// More files of a note are named in a failure.
    static constexpr std::size_t mostResources = 5'000;
    /// After so many places that cannot be read the rest of the file is given up.
    static constexpr std::size_t mostFailures = 1'000;

    /// What is wanted of the files besides their sizes and names.
    enum class Files {
        content,  ///< their bytes, and the MD5 digests by which the text names them
        names,    ///< these digests only
        digests,  ///< their SHA-256 digests only
    };
    /// Opens a regular file. Throws `FileError`.
    ENEXReader(const std::filesystem::path& file, Files files);
    ENEXReader(const ENEXReader&) = delete;
    ENEXReader& operator=(const ENEXReader&) = delete;
    ~ENEXReader();

    /// The next note; none at the end. Throws `FileError`.
    std::optional<ENEXNote> next();

private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace tesserine
