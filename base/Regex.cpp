#include "base/Regex.h"

#include <unicode/regex.h>
#include <unicode/utext.h>

#include <cassert>
#include <mutex>
#include <new>
#include <utility>

namespace tesserine {
namespace {

/// In the matcher's own steps of about a millisecond; no honest search comes near it.
constexpr std::int32_t timeLimit = 250;

/// UTF-8 text as ICU reads it, without a copy; offsets are byte offsets.
class TextView {
public:
    explicit TextView(std::string_view text) {
        UErrorCode status = U_ZERO_ERROR;
        const char* const start = text.data() == nullptr ? "" : text.data();
        utext_openUTF8(&view_, start, static_cast<std::int64_t>(text.size()), &status);
        if (U_FAILURE(status)) throw std::bad_alloc();
    }
    TextView(const TextView&) = delete;
    TextView& operator=(const TextView&) = delete;
    ~TextView() { utext_close(&view_); }
    UText* get() { return &view_; }

private:
    UText view_ = UTEXT_INITIALIZER;
};

Regex::Match matchOf(const icu::RegexMatcher& matcher) {
    Regex::Match match;
    const std::int32_t count = matcher.groupCount() + 1;
    match.groups.reserve(static_cast<std::size_t>(count));
    for (std::int32_t group = 0; group < count; ++group) {
        UErrorCode status = U_ZERO_ERROR;
        const std::int64_t begin = matcher.start64(group, status);
        const std::int64_t end = matcher.end64(group, status);
        const bool tookPart = U_SUCCESS(status) && begin >= 0;
        match.groups.push_back(
            tookPart ? Regex::Range{static_cast<std::size_t>(begin), static_cast<std::size_t>(end)}
                     : Regex::Range{});
    }
    return match;
}

}  // namespace

struct Regex::Implementation {
    class Loan;

    // Fixed after construction; must outlive its matchers.
    std::unique_ptr<icu::RegexPattern> pattern;

    std::mutex mutex;
    // Behind mutex. A matcher serves one search at a time, and is dearer to make than to use.
    std::vector<std::unique_ptr<icu::RegexMatcher>> idleMatchers;

    std::unique_ptr<icu::RegexMatcher> take() {
        const std::lock_guard lock(mutex);
        if (idleMatchers.empty()) return make();
        auto matcher = std::move(idleMatchers.back());
        idleMatchers.pop_back();
        return matcher;
    }

    void giveBack(std::unique_ptr<icu::RegexMatcher> matcher) noexcept {
        try {
            const std::lock_guard lock(mutex);
            idleMatchers.push_back(std::move(matcher));
        } catch (const std::bad_alloc&) {
            return;  // one matcher fewer to reuse
        }
    }

    std::unique_ptr<icu::RegexMatcher> make() const {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> made(pattern->matcher(status));
        if (U_FAILURE(status) || made == nullptr) throw std::bad_alloc();
        made->setTimeLimit(timeLimit, status);
        return made;
    }
};

/// A matcher taken for one search and set to its text.
class Regex::Implementation::Loan {
public:
    Loan(Implementation& owner, std::string_view text)
        : owner_(owner), view_(text), matcher_(owner.take()) {
        matcher_->reset(view_.get());
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() { owner_.giveBack(std::move(matcher_)); }
    icu::RegexMatcher* operator->() { return matcher_.get(); }
    const icu::RegexMatcher& operator*() const { return *matcher_; }

private:
    Implementation& owner_;
    TextView view_;
    std::unique_ptr<icu::RegexMatcher> matcher_;
};

Regex::Regex(std::string_view pattern, Case matching)
    : implementation_(std::make_unique<Implementation>()) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError place{};
    const std::uint32_t flags = matching == Case::insensitive ? UREGEX_CASE_INSENSITIVE : 0;
    const auto text = icu::UnicodeString::fromUTF8(
        icu::StringPiece(pattern.data(), static_cast<std::int32_t>(pattern.size())));
    implementation_->pattern.reset(icu::RegexPattern::compile(text, flags, place, status));
    assert(U_SUCCESS(status) && "the patterns of the program are well formed");
}

Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;
Regex::~Regex() = default;

std::optional<Regex::Match> Regex::find(std::string_view text, std::size_t from) const {
    if (from > text.size()) return std::nullopt;
    Implementation::Loan matcher(*implementation_, text);
    UErrorCode status = U_ZERO_ERROR;
    const bool isFound = matcher->find(static_cast<std::int64_t>(from), status) != 0;
    if (!isFound || U_FAILURE(status)) return std::nullopt;
    return matchOf(*matcher);
}

void Regex::forEach(std::string_view text, const std::function<bool(const Match&)>& take) const {
    Implementation::Loan matcher(*implementation_, text);
    UErrorCode status = U_ZERO_ERROR;
    while (matcher->find(status) != 0 && U_SUCCESS(status)) {
        if (!take(matchOf(*matcher))) return;
    }
}

bool Regex::matches(std::string_view text) const {
    Implementation::Loan matcher(*implementation_, text);
    UErrorCode status = U_ZERO_ERROR;
    return matcher->matches(status) != 0 && U_SUCCESS(status);
}

}  // namespace tesserine
