#pragma once

#include "base/Uuid.h"
#include "bench/Dice.h"
#include "bench/Vocabulary.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tesserine::bench {

/// Writes one made-up note body, as HTML in its stored form and as the plain text of it at once.
class GeneratedBody {
public:
    /// A note to link to.
    struct Target {
        Uuid id;
        std::string title;
    };
    /// `dice` and `vocabulary` outlive it; `target` gives some note to link to.
    GeneratedBody(Dice& dice, const Vocabulary& vocabulary, std::function<Target()> target)
        : dice_(dice), vocabulary_(vocabulary), target_(std::move(target)) {}

    /// Adds blocks until there are at least `byteCount` bytes of plain text.
    void write(std::size_t byteCount);
    void addPicture(const Uuid& attachment);
    void addFile(const Uuid& attachment, const std::string& filename);

    const std::string& html() const { return html_; }
    const std::string& plainText() const { return plainText_; }

private:
    void block();
    void heading();
    void paragraph();
    void list(std::string_view tag);
    void checklist();
    void quote();
    void code();
    void table();
    void rule();

    void beginLine();
    void markup(std::string_view text) { html_ += text; }
    void text(std::string_view text);
    void sentence(std::size_t words);
    void phrase(std::size_t words, bool isCapitalised);
    void styledWord(const std::string& word);
    void webLink();
    void noteLink();

    Dice& dice_;
    const Vocabulary& vocabulary_;
    std::function<Target()> target_;
    std::size_t wanted_ = 0;
    std::string html_;
    std::string plainText_;
};

/// `word` with its first letter as a capital, if that is an ASCII letter.
std::string capitalised(std::string word);

}  // namespace tesserine::bench
