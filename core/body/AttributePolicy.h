#pragma once

#include "core/body/HTMLElements.h"
#include "core/body/HTMLNode.h"
#include "core/body/Sanitizer.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tesserine {

/// The attributes of the stored form, in the order in which they are written.
enum class KeptAttribute : std::uint8_t {
    classes,
    checked,
    attachment,
    attachmentKind,
    cipher,
    href,
    src,
    alt,
    title,
    width,
    height,
    start,
    type,
    columnSpan,
    rowSpan,
    direction,
    language,
    style,
};

/// The attributes that one element keeps, with their values in normal form.
class KeptAttributes {
public:
    static constexpr std::size_t count = static_cast<std::size_t>(KeptAttribute::style) + 1;
    static constexpr std::array<std::string_view, count> names{
        "class",
        "data-checked",
        "data-ts-attachment",
        "data-ts-kind",
        "data-ts-cipher",
        "href",
        "src",
        "alt",
        "title",
        "width",
        "height",
        "start",
        "type",
        "colspan",
        "rowspan",
        "dir",
        "lang",
        "style"};

    static constexpr std::string_view nameOf(KeptAttribute attribute) {
        return names[index(attribute)];
    }

    bool isEmpty() const noexcept { return present_ == 0; }
    bool has(KeptAttribute attribute) const noexcept { return (present_ & bit(attribute)) != 0; }
    /// Empty when it is not there.
    std::string_view value(KeptAttribute attribute) const {
        return has(attribute) ? std::string_view(values_[index(attribute)]) : std::string_view();
    }
    /// Calls `take(name, value)` for each, in the order of `KeptAttribute`.
    template <class Take>
    void forEach(Take take) const {
        for (std::uint32_t left = present_; left != 0; left &= left - 1) {
            const auto i = static_cast<std::size_t>(std::countr_zero(left));
            take(names[i], std::string_view(values_[i]));
        }
    }

    void clear() noexcept { present_ = 0; }
    /// The value, to be written; its memory is used again for the next element.
    std::string& add(KeptAttribute attribute) {
        present_ |= bit(attribute);
        std::string& value = values_[index(attribute)];
        value.clear();
        return value;
    }
    void remove(KeptAttribute attribute) noexcept { present_ &= ~bit(attribute); }

private:
    static constexpr std::size_t index(KeptAttribute attribute) {
        return static_cast<std::size_t>(attribute);
    }
    static constexpr std::uint32_t bit(KeptAttribute attribute) { return 1U << index(attribute); }

    std::array<std::string, count> values_;
    std::uint32_t present_ = 0;
};

/// Decides which attributes survive on which element, and in what form. Normal forms stay as they
/// are when judged again.
class AttributePolicy {
public:
    /// `options` and `report` must outlive it.
    AttributePolicy(const SanitizerOptions& options, SanitizationReport& report)
        : options_(options), report_(report) {}

    /// What `attributes` of an element that is written as `element` come to; valid until the next
    /// call. Counts what is removed, lists remote images.
    const KeptAttributes& judge(HTMLElement element, std::span<const HTMLAttribute> attributes);
    /// Whether the element just judged is a locked passage: it keeps nothing but its cipher, and
    /// holds the placeholder text.
    bool isEncrypted() const noexcept { return isEncrypted_; }

private:
    bool keep(HTMLElement element, const HTMLAttribute& attribute);
    bool keepImageAddress(std::string_view value);
    void settleClasses(HTMLElement element);
    void settleAttachment();
    void drop(KeptAttribute attribute);
    void countDropped(std::string_view name);

    const SanitizerOptions& options_;
    SanitizationReport& report_;
    KeptAttributes kept_;
    bool isEncrypted_ = false;
};

}  // namespace tesserine
