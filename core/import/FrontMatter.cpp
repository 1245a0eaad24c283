#include "core/import/FrontMatter.h"

#include "base/Text.h"
#include "core/import/YAMLScalar.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace tesserine {
namespace {

using Lines = std::vector<std::string_view>;

std::string_view withoutTrailingBlanks(std::string_view line) {
    const auto last = line.find_last_not_of(" \t");
    return last == std::string_view::npos ? std::string_view{} : line.substr(0, last + 1);
}

bool isBlankLine(std::string_view line) { return withoutTrailingBlanks(line).empty(); }

std::size_t indentation(std::string_view line) {
    return std::min(line.find_first_not_of(" \t"), line.size());
}

bool isListItem(std::string_view line) { return line == "-" || line.starts_with("- "); }

/// The lines between the two marks; `end` becomes the place after the closing one.
std::optional<Lines> linesBetweenMarks(std::string_view text, std::size_t& end) {
    Lines lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t stop = std::min(text.find('\n', begin), text.size());
        const std::string_view line = text.substr(begin, stop - begin);
        const std::string_view mark = withoutTrailingBlanks(line);
        const bool isFirst = begin == 0;
        begin = std::min(stop + 1, text.size());
        if (isFirst && mark != "---") return std::nullopt;
        if (!isFirst && (mark == "---" || mark == "...")) {
            end = begin;
            return lines;
        }
        if (!isFirst) lines.push_back(line);
    }
    return std::nullopt;
}

/// `lines` without the indentation that all of them have, and without blank lines at the end.
std::string dedented(Lines lines) {
    while (!lines.empty() && isBlankLine(lines.back())) {
        lines.pop_back();
    }
    std::size_t common = SIZE_MAX;
    for (const std::string_view line : lines) {
        if (!isBlankLine(line)) common = std::min(common, indentation(line));
    }
    std::string result;
    for (const std::string_view line : lines) {
        result += line.substr(std::min(common, line.size()));
        result += '\n';
    }
    if (!result.empty()) result.pop_back();
    return result;
}

/// The text of a block scalar: of its lines as they are, or folded into paragraphs.
std::string blockScalar(const Lines& lines, bool isFolded) {
    std::string text = dedented(lines);
    if (!isFolded) return text;
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\n') {
            result += text[i];
            continue;
        }
        std::size_t breaks = 1;
        for (; i + 1 < text.size() && text[i + 1] == '\n'; ++i) {
            ++breaks;
        }
        if (breaks == 1) {
            result += ' ';
        } else {
            result.append(breaks - 1, '\n');
        }
    }
    return result;
}

/// Reads one key after the other.
class Reader {
public:
    explicit Reader(const Lines& lines) : lines_(lines) {}

    /// None when a line is no part of a front matter.
    std::optional<std::vector<FrontMatterField>> fields() {
        while (next_ < lines_.size()) {
            const std::string_view line = lines_[next_];
            if (isBlankLine(line) || line.starts_with('#')) {
                ++next_;
                continue;
            }
            if (!readField()) return std::nullopt;
        }
        return std::move(fields_);
    }

private:
    bool readField() {
        const auto key = yaml::leadingKey(lines_[next_]);
        if (!key) return false;
        ++next_;
        FrontMatterField field = value(std::string(text::trimmed(key->rest)));
        field.key = key->key;
        const auto [known, isNew] = places_.try_emplace(field.key, fields_.size());
        if (isNew) {
            fields_.push_back(std::move(field));
        } else {
            fields_[known->second] = std::move(field);
        }
        return true;
    }

    /// What follows the colon of a key, with the lines that belong to it.
    FrontMatterField value(std::string first) {
        if (first.empty() || first.front() == '#') return valueBelow();
        if (first.front() == '|' || first.front() == '>') {
            return scalar(blockScalar(takeIndented(), first.front() == '>'));
        }
        if (first.front() == '[' || first.front() == '{') return flowValue(std::move(first));
        const bool isQuoted = first.front() == '"' || first.front() == '\'';
        if (!isQuoted) first = std::string(yaml::withoutComment(first));
        for (const std::string_view line : takeIndented()) {
            if (isBlankLine(line)) continue;
            first += ' ';
            first += isQuoted ? text::trimmed(line) : yaml::withoutComment(text::trimmed(line));
        }
        return scalar(yaml::scalar(yaml::withoutComment(first)));
    }

    static FrontMatterField scalar(std::string text) {
        FrontMatterField field;
        if (!text.empty()) field.values.push_back(std::move(text));
        return field;
    }

    /// A list or map in brackets, which may go on for several lines.
    FrontMatterField flowValue(std::string first) {
        yaml::BracketCount brackets;
        brackets.add(first);
        while (brackets.areOpen() && next_ < lines_.size() && !yaml::leadingKey(lines_[next_])) {
            first += ' ';
            first += text::trimmed(lines_[next_]);
            brackets.add(lines_[next_++]);
        }
        if (const auto items = yaml::flowList(first)) return {.values = *items, .isList = true};
        return scalar(first);
    }

    /// The value of a key that has nothing on its own line: a list, a text, or nested keys.
    FrontMatterField valueBelow() {
        const std::size_t begin = next_;
        while (next_ < lines_.size() && (isContinuation(next_) || isListItem(lines_[next_]))) {
            ++next_;
        }
        const Lines below(lines_.begin() + offset(begin), lines_.begin() + offset(next_));
        const std::string text = dedented(below);
        if (isListItem(text.substr(0, text.find('\n')))) return listFrom(text);
        return scalar(text);
    }

    static FrontMatterField listFrom(const std::string& text) {
        std::vector<std::string> items;
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t stop = std::min(text.find('\n', begin), text.size());
            const std::string_view line = std::string_view(text).substr(begin, stop - begin);
            begin = stop + 1;
            if (isListItem(line)) {
                items.emplace_back(line.substr(1));
            } else {
                items.back().append("\n").append(text::trimmed(line));
            }
        }
        FrontMatterField field{.isList = true};
        for (const std::string& item : items) {
            std::string value = yaml::scalar(yaml::withoutComment(item));
            if (!value.empty()) field.values.push_back(std::move(value));
        }
        return field;
    }

    bool isContinuation(std::size_t line) const {
        if (indentation(lines_[line]) > 0) return true;
        return isBlankLine(lines_[line]);
    }
    Lines takeIndented() {
        const std::size_t begin = next_;
        while (next_ < lines_.size() && isContinuation(next_)) {
            ++next_;
        }
        return {lines_.begin() + offset(begin), lines_.begin() + offset(next_)};
    }
    static std::ptrdiff_t offset(std::size_t line) { return static_cast<std::ptrdiff_t>(line); }

    const Lines& lines_;
    std::size_t next_ = 0;
    std::vector<FrontMatterField> fields_;
    std::unordered_map<std::string, std::size_t> places_;  // of the keys among the fields
};

}  // namespace

std::string FrontMatterField::text() const {
    std::string result;
    for (const std::string& value : values) {
        if (!result.empty()) result += ", ";
        result += value;
    }
    return result;
}

const FrontMatterField* FrontMatter::field(std::string_view key) const {
    const auto found = std::ranges::find(fields, key, &FrontMatterField::key);
    return found == fields.end() ? nullptr : &*found;
}

std::optional<FrontMatter> parseFrontMatter(std::string_view text) {
    if (!text.starts_with("---")) return std::nullopt;
    FrontMatter result;
    const auto lines = linesBetweenMarks(text, result.end);
    if (!lines) return std::nullopt;
    auto fields = Reader(*lines).fields();
    if (!fields) return std::nullopt;
    result.fields = std::move(*fields);
    return result;
}

}  // namespace tesserine
