#include "base/Text.h"

#include <unicode/coll.h>
#include <unicode/locid.h>

#include <new>

namespace tesserine::text {
namespace {

icu::StringPiece pieceOf(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

icu::Locale collationLocale(const std::string& name) {
    // The POSIX default locale would sort capitals before all small letters.
    const bool isPOSIX = name.empty() || name == "POSIX" || name == "C" || name.starts_with("C.");
    if (isPOSIX) return icu::Locale::getRoot();
    const icu::Locale locale = icu::Locale::createCanonical(name.c_str());
    return locale.isBogus() ? icu::Locale::getRoot() : locale;
}

}  // namespace

struct Collator::Implementation {
    std::unique_ptr<icu::Collator> collator;
};

Collator::Collator(const std::string& locale)
    : implementation_(std::make_unique<Implementation>()) {
    UErrorCode status = U_ZERO_ERROR;
    implementation_->collator.reset(icu::Collator::createInstance(collationLocale(locale), status));
    if (U_FAILURE(status) || implementation_->collator == nullptr) throw std::bad_alloc();
    implementation_->collator->setStrength(icu::Collator::SECONDARY);
}

Collator::Collator(Collator&&) noexcept = default;
Collator& Collator::operator=(Collator&&) noexcept = default;
Collator::~Collator() = default;

int Collator::compare(std::string_view a, std::string_view b) const {
    UErrorCode status = U_ZERO_ERROR;
    return implementation_->collator->compareUTF8(pieceOf(a), pieceOf(b), status);
}

}  // namespace tesserine::text
