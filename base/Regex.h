#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// A compiled regular expression (ICU syntax) over UTF-8 text. Compile once, use from any thread.
/// Every search is bounded in time; one that takes too long counts as no match.
class Regex {
public:
    enum class Case { sensitive, insensitive };

    /// Byte range in the searched text; `begin == npos` for a group that took no part.
    struct Range {
        static constexpr std::size_t npos = static_cast<std::size_t>(-1);
        std::size_t begin = npos;
        std::size_t end = npos;
        explicit operator bool() const { return begin != npos; }
        std::string_view of(std::string_view text) const {
            return begin == npos ? std::string_view{} : text.substr(begin, end - begin);
        }
    };
    /// Group 0 is the whole match.
    struct Match {
        std::vector<Range> groups;
        std::string_view group(std::string_view text, std::size_t number) const {
            return groups[number].of(text);
        }
    };

    /// A bad pattern is a mistake of ours: it asserts.
    explicit Regex(std::string_view pattern, Case matching = Case::sensitive);
    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;
    ~Regex();

    /// The first match at or after byte `from`.
    std::optional<Match> find(std::string_view text, std::size_t from = 0) const;
    /// Calls `take` for each match in order until it returns false.
    void forEach(std::string_view text, const std::function<bool(const Match&)>& take) const;
    /// Whether the whole of `text` matches.
    bool matches(std::string_view text) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tesserine
