#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What kind of file some bytes are, by what is declared, by their content and by their name.
namespace tesserine::mime {

/// The type of bytes of which nothing is known: "application/octet-stream".
inline constexpr std::string_view unknownType = "application/octet-stream";

/// The platform's registry of file types (the shared MIME-info database).
///
/// Immutable after reading; safe from any thread.
class TypeRegistry {
public:
    /// A registry that knows nothing.
    TypeRegistry() = default;
    /// Reads "globs2" and "aliases" in `folder`, such as /usr/share/mime. What cannot be read is
    /// left out.
    static TypeRegistry read(const std::filesystem::path& folder);
    /// The first database below the folders of `dataDirectories` (as in `XDG_DATA_DIRS`, separated
    /// by ":"; empty: /usr/local/share:/usr/share).
    static TypeRegistry find(std::string_view dataDirectories);

    /// The preferred type of files with this extension (without dot, lower case).
    std::optional<std::string> typeOfExtension(const std::string& extension) const;
    /// The preferred extension of files of this type: the first that the type's own description in
    /// the database's folder names.
    std::optional<std::string> extensionOfType(const std::string& type) const;

private:
    struct Claim {
        int weight = 0;
        std::string type;
    };
    void readGlobs(const std::string& list);
    void readAliases(const std::string& list);
    std::optional<std::string> describedExtension(const std::string& type) const;

    // Fixed after reading.
    std::filesystem::path folder_;
    std::map<std::string, Claim, std::less<>> typeOfExtension_;
    std::map<std::string, std::string, std::less<>> extensionOfType_;
    std::map<std::string, std::string, std::less<>> aliases_;
};

/// A declared type in its clean form: trimmed, lower case, without parameters. None, nothing, or a
/// character that no type has gives `unknownType`.
std::string normalised(const std::optional<std::string>& declared);
/// The type that the first bytes of a file show, if any.
std::optional<std::string> sniffed(std::span<const std::uint8_t> bytes);
/// The type of files with this extension (without dot, in either case): the registry's answer in
/// lower case, else that of the own table, else `unknownType`.
std::string ofExtension(std::string_view extension, const TypeRegistry& registry);
/// The extension for files of this type: that of the own table, else the registry's, else "bin".
std::string extensionOf(const std::string& type, const TypeRegistry& registry);

/// What is known of a file's type: as it was declared (normalised), as its content shows it, and
/// after its name's extension.
struct Evidence {
    std::string declared{unknownType};
    std::optional<std::string> sniffed{};
    std::string ofExtension{unknownType};
};
/// The type a file is given: what its content shows, except where that says no more than "an
/// archive", "begins with BM" or "some MP4", and the name or the declaration know better.
std::string chosen(const Evidence& evidence);

/// Whether text recognition has something to do: "pending" for pictures and PDF files, otherwise
/// "notApplicable".
std::string ocrStatus(std::string_view type);

}  // namespace tesserine::mime
