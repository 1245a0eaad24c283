#include "core/import/MarkdownProperties.h"

#include "base/Text.h"
#include "core/import/SourceDate.h"
#include "core/import/SourceNames.h"

#include <algorithm>
#include <array>

namespace tesserine {
namespace {

std::vector<std::string> split(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        if (const auto part = text::trimmed(text.substr(0, end)); !part.empty()) {
            parts.emplace_back(part);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

/// Whether `text` is written as "#one #two".
bool areHashWords(std::string_view text) {
    const auto words = split(text, " \t\n");
    return std::ranges::all_of(words, [](const auto& word) { return word.starts_with('#'); });
}

std::string withoutHash(std::string_view tag) {
    tag = text::trimmed(tag);
    if (tag.starts_with('#')) tag.remove_prefix(1);
    return std::string(text::trimmed(tag));
}

std::optional<bool> truth(std::string_view text) {
    const std::string word = text::asciiLowercased(text);
    for (const char* yes : {"true", "yes", "on", "1"}) {
        if (word == yes) return true;
    }
    for (const char* no : {"false", "no", "off", "0"}) {
        if (word == no) return false;
    }
    return std::nullopt;
}

bool isWebAddress(std::string_view text) {
    const std::string begin = text::asciiLowercased(text.substr(0, 8));
    return begin.starts_with("http://") || begin.starts_with("https://");
}

/// Takes over one field after the other; what it does not know or understand is metadata.
class Reading {
public:
    explicit Reading(const Calendar& calendar) : calendar_(calendar) {}

    void take(const FrontMatterField& field) {
        if (field.values.empty()) return;
        const std::string key = text::asciiLowercased(field.key);
        for (const auto& [name, read] : readers) {
            if (name != key) continue;
            if ((this->*read)(field)) return;
            break;
        }
        result_.metadata.emplace_back(field.key, field.text());
    }
    MarkdownProperties result() && { return std::move(result_); }

private:
    struct Reader {
        std::string_view key;
        /// Tells whether the field was understood and is wanted.
        bool (Reading::*read)(const FrontMatterField&);
    };

    bool title(const FrontMatterField& field) {
        if (text::isBlank(field.text()) || result_.title) return false;
        result_.title = sourceTitle(field.text(), result_.warnings);
        return true;
    }
    bool tags(const FrontMatterField& field) {
        std::vector<std::string> names = field.values;
        if (!field.isList) {
            names =
                split(field.values.front(), areHashWords(field.values.front()) ? " \t\n," : ",");
        }
        for (const std::string& name : names) {
            tags_.add(withoutHash(name), result_.warnings);
        }
        result_.tags = tags_.names();
        return true;
    }
    bool date(const FrontMatterField& field, std::optional<Instant>& into) {
        if (into) return false;
        into = sourceDate(field.text(), calendar_);
        if (!into) {
            result_.warnings.push_back("The date in “" + field.key + "” could not be read.");
        }
        return into.has_value();
    }
    bool created(const FrontMatterField& field) { return date(field, result_.created); }
    bool updated(const FrontMatterField& field) { return date(field, result_.updated); }
    bool pinned(const FrontMatterField& field) {
        const auto value = truth(field.text());
        result_.isPinned = result_.isPinned || value.value_or(false);
        return value.has_value();
    }
    bool notebook(const FrontMatterField& field) {
        result_.notebookPath = field.isList ? field.values : pathNames(field.text());
        return true;
    }
    bool source(const FrontMatterField& field) {
        if (!isWebAddress(field.text())) return false;
        result_.sourceURL = field.text();
        return true;
    }

    static constexpr std::array readers = {
        Reader{"title", &Reading::title},
        Reader{"tags", &Reading::tags},
        Reader{"created", &Reading::created},
        Reader{"date", &Reading::created},
        Reader{"updated", &Reading::updated},
        Reader{"modified", &Reading::updated},
        Reader{"pinned", &Reading::pinned},
        Reader{"favorite", &Reading::pinned},
        Reader{"notebook", &Reading::notebook},
        Reader{"source", &Reading::source},
    };

    const Calendar& calendar_;
    MarkdownProperties result_;
    SourceTags tags_;
};

}  // namespace

MarkdownProperties markdownProperties(const FrontMatter& matter, const Calendar& calendar) {
    Reading reading(calendar);
    for (const FrontMatterField& field : matter.fields) {
        reading.take(field);
    }
    return std::move(reading).result();
}

std::vector<std::string> pathNames(std::string_view text) { return split(text, "/"); }

}  // namespace tesserine
