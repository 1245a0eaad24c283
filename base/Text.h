#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Unicode text rules. All texts are valid UTF-8 without U+0000 unless a function says otherwise;
/// `sanitized` makes them so at the program's doors.
namespace tesserine::text {

/// `bytes` as valid UTF-8: every bad sequence becomes U+FFFD (one per maximal subpart,
/// Unicode 3.9), U+0000 is removed. Valid text comes back unchanged and without a copy of a copy.
std::string sanitized(std::string bytes);
/// Whether `bytes` is valid UTF-8 without U+0000.
bool isClean(std::string_view bytes);

/// Without Unicode `White_Space` at both ends. The result is a view into `text`.
std::string_view trimmed(std::string_view text);
/// Whether nothing but `White_Space` is left.
bool isBlank(std::string_view text);

/// The pieces between `White_Space`, as views into `text`.
std::vector<std::string_view> words(std::string_view text);
/// The words joined by single spaces.
std::string collapsed(std::string_view text);
/// All `parts`, empty ones too, with `separator` between them.
std::string joined(std::span<const std::string> parts, std::string_view separator);

/// Full default case folding, no diacritic folding: straße = STRASSE, Café ≠ Cafe.
std::string caseFolded(std::string_view text);
/// Case folding with combining marks stripped: Café = cafe, İstanbul = istanbul.
std::string folded(std::string_view text);
/// Without nonspacing marks, otherwise as it was and composed: Café becomes Cafe.
std::string withoutMarks(std::string_view text);
/// Lower case by the root locale, the same on every machine.
std::string lowercased(std::string_view text);
/// ASCII only; for names of protocols and formats.
std::string asciiLowercased(std::string_view text);
/// Canonical composition (NFC).
std::string composed(std::string_view text);

/// How many extended grapheme clusters `text` holds ("characters" as a person counts them).
std::size_t characterCount(std::string_view text);
/// The first `limit` extended grapheme clusters. A view into `text`; O(result).
std::string_view prefix(std::string_view text, std::size_t limit);
/// Calls `take` with each extended grapheme cluster in order, until it returns false.
void forEachCharacter(
    std::string_view text, const std::function<bool(std::string_view cluster)>& take);

/// Length in UTF-16 units, as editors and outlines count.
std::size_t utf16Length(std::string_view text);
std::u16string toUTF16(std::string_view text);
/// Unpaired surrogates become U+FFFD.
std::string fromUTF16(std::u16string_view text);

/// Sorts names as a reader of `locale` expects, ignoring case (ICU collation, secondary strength).
class Collator {
public:
    /// `locale` is an ICU or POSIX locale name; empty or unknown is the root collation.
    explicit Collator(const std::string& locale);
    Collator(Collator&&) noexcept;
    Collator& operator=(Collator&&) noexcept;
    Collator(const Collator&) = delete;
    Collator& operator=(const Collator&) = delete;
    ~Collator();

    /// Less than, equal to or greater than zero. Safe from several threads.
    int compare(std::string_view a, std::string_view b) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tesserine::text
