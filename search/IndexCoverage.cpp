#include "search/IndexCoverage.h"

#include "base/Text.h"
#include "search/IndexSchema.h"

#include <unicode/locid.h>
#include <unicode/numberformatter.h>

#include <new>
#include <vector>

namespace tesserine {
namespace {

/// Writes numbers in one locale.
class Numbers {
public:
    explicit Numbers(const std::string& locale)
        : formatter_(icu::number::NumberFormatter::withLocale(icu::Locale(locale.c_str()))) {}

    std::string text(std::int64_t number) const {
        UErrorCode status = U_ZERO_ERROR;
        const auto formatted = formatter_.formatInt(number, status);
        const icu::UnicodeString digits = formatted.toString(status);
        if (U_FAILURE(status)) throw std::bad_alloc();  // it fails for want of memory only
        std::string result;
        return digits.toUTF8String(result);
    }

private:
    icu::number::LocalizedNumberFormatter formatter_;
};

}  // namespace

bool IndexCoverage::isHealthy() const {
    return missing == 0 && stale == 0 && orphaned == 0 && !interruptedRebuild
           && schemaVersion == indexschema::version
           && indexedAttachmentsWithText == attachmentsWithText;
}

std::string IndexCoverage::summary(const std::string& locale) const {
    const Numbers numbers(locale);
    const auto of = [&](std::int64_t indexed, std::int64_t all) {
        return numbers.text(indexed) + " of " + numbers.text(all);
    };
    const std::string counts = of(indexedNotes, notes) + " notes, " + of(indexedTasks, tasks)
                               + " tasks, " + of(indexedAttachmentsWithText, attachmentsWithText)
                               + " attachments with text indexed";
    if (isHealthy()) return counts + " — up to date";

    std::vector<std::string> problems;
    if (missing > 0) problems.push_back(numbers.text(missing) + " missing");
    if (stale > 0) problems.push_back(numbers.text(stale) + " out of date");
    if (orphaned > 0) problems.push_back(numbers.text(orphaned) + " leftover");
    const bool differs = indexedAttachmentsWithText != attachmentsWithText;
    if (missing == 0 && stale == 0 && differs) problems.emplace_back("attachment text differs");
    if (interruptedRebuild) problems.emplace_back("a rebuild was interrupted");
    if (schemaVersion != indexschema::version) problems.emplace_back("old index format");
    return counts + " — " + text::joined(problems, ", ");
}

}  // namespace tesserine
