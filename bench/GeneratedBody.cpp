#include "bench/GeneratedBody.h"

#include <algorithm>
#include <array>

namespace tesserine::bench {

std::string capitalised(std::string word) {
    if (!word.empty() && word[0] >= 'a' && word[0] <= 'z') {
        word[0] = static_cast<char>(word[0] - 'a' + 'A');
    }
    return word;
}

void GeneratedBody::write(std::size_t byteCount) {
    wanted_ = plainText_.size() + byteCount;
    while (plainText_.size() < wanted_) {
        block();
    }
}

void GeneratedBody::block() {
    const std::size_t left = wanted_ - plainText_.size();
    if (left < 120) {  // a small note is a line or two
        markup("<p>");
        beginLine();
        sentence(std::max<std::size_t>(2, left / 6));
        markup("</p>");
        return;
    }
    const std::size_t thrown = dice_.below(100);
    if (thrown < 10) return heading();
    if (thrown < 74) return paragraph();
    if (thrown < 83) return list("ul");
    if (thrown < 86) return list("ol");
    if (thrown < 91) return checklist();
    if (thrown < 94) return quote();
    if (thrown < 97) return code();
    if (thrown < 99) return table();
    rule();
}

void GeneratedBody::beginLine() {
    if (!plainText_.empty() && plainText_.back() != '\n') plainText_ += '\n';
}

/// Both forms of a text that neither begins nor ends a line with a space.
void GeneratedBody::text(std::string_view text) {
    plainText_ += text;
    for (const char c : text) {
        switch (c) {
        case '&': html_ += "&amp;"; break;
        case '<': html_ += "&lt;"; break;
        case '>': html_ += "&gt;"; break;
        default: html_ += c;
        }
    }
}

void GeneratedBody::heading() {
    const std::string level = dice_.chance(600) ? "h2" : "h3";
    markup("<" + level + ">");
    beginLine();
    phrase(dice_.between(2, 6), true);
    markup("</" + level + ">");
}

void GeneratedBody::paragraph() {
    markup("<p>");
    beginLine();
    const std::size_t sentences = dice_.between(1, 6);
    for (std::size_t i = 0; i < sentences && (i == 0 || plainText_.size() < wanted_); ++i) {
        if (i > 0) text(" ");
        sentence(dice_.between(5, 22));
    }
    markup("</p>");
}

void GeneratedBody::list(std::string_view tag) {
    markup("<" + std::string(tag) + ">");
    const std::size_t items = dice_.between(2, 8);
    for (std::size_t i = 0; i < items; ++i) {
        markup("<li>");
        beginLine();
        plainText_ += "• ";
        phrase(dice_.between(2, 10), true);
        markup("</li>");
    }
    markup("</" + std::string(tag) + ">");
}

void GeneratedBody::checklist() {
    markup("<ul class=\"ts-checklist\">");
    const std::size_t items = dice_.between(2, 8);
    for (std::size_t i = 0; i < items; ++i) {
        const bool isDone = dice_.chance(400);
        markup(isDone ? "<li data-checked=\"true\">" : "<li data-checked=\"false\">");
        beginLine();
        plainText_ += isDone ? "[x] " : "[ ] ";
        phrase(dice_.between(2, 8), true);
        markup("</li>");
    }
    markup("</ul>");
}

void GeneratedBody::quote() {
    markup("<blockquote><p>");
    beginLine();
    sentence(dice_.between(8, 30));
    markup("</p></blockquote>");
}

void GeneratedBody::code() {
    markup("<pre><code>");
    beginLine();
    const std::size_t lines = dice_.between(2, 10);
    for (std::size_t i = 0; i < lines; ++i) {
        if (i > 0) text("\n");
        if (i % 3 != 0) markup("    ");  // the plain text has no indentation
        text(vocabulary_.rareWord(dice_) + " = ");
        text(vocabulary_.word(dice_) + "(");
        text(vocabulary_.rareWord(dice_));
        text(dice_.chance(200) ? " < 7);" : ");");
    }
    markup("</code></pre>");
}

void GeneratedBody::table() {
    markup("<table><tbody>");
    const std::size_t columns = dice_.between(2, 4);
    const std::size_t rows = dice_.between(2, 6);
    for (std::size_t row = 0; row < rows; ++row) {
        markup("<tr>");
        beginLine();
        for (std::size_t column = 0; column < columns; ++column) {
            if (column > 0) plainText_ += '\t';
            markup("<td>");
            text(vocabulary_.word(dice_));
            markup("</td>");
        }
        markup("</tr>");
    }
    markup("</tbody></table>");
}

void GeneratedBody::rule() {
    beginLine();
    markup("<hr>");
    plainText_ += "———";
}

void GeneratedBody::sentence(std::size_t words) {
    phrase(words, true);
    constexpr std::array endings = {".", ".", ".", ".", ".", ".", "?", "!"};
    text(endings[dice_.below(endings.size())]);
}

void GeneratedBody::phrase(std::size_t words, bool isCapitalised) {
    for (std::size_t i = 0; i < words; ++i) {
        if (i > 0) text(dice_.chance(60) ? ", " : " ");
        const std::size_t thrown = i == 0 ? 1000 : dice_.below(1000);
        if (thrown < 5) {
            noteLink();
        } else if (thrown < 15) {
            webLink();
        } else if (thrown < 50) {
            styledWord(vocabulary_.word(dice_));
        } else if (thrown < 70) {
            text(std::to_string(dice_.below(3000)));
        } else if (thrown < 73) {
            text("R&D");
        } else if (i == 0 && isCapitalised) {
            text(capitalised(vocabulary_.word(dice_)));
        } else {
            text(vocabulary_.word(dice_));
        }
    }
}

void GeneratedBody::styledWord(const std::string& word) {
    constexpr std::array tags = {"strong", "strong", "em", "em", "code", "mark", "u", "s"};
    const std::string tag = tags[dice_.below(tags.size())];
    markup("<" + tag + ">");
    text(word);
    markup("</" + tag + ">");
}

void GeneratedBody::webLink() {
    const std::size_t number = dice_.below(10'000);
    markup("<a href=\"https://www.example.org/article/" + std::to_string(number) + "?from=note\">");
    text(vocabulary_.rareWord(dice_));
    markup("</a>");
}

void GeneratedBody::noteLink() {
    const Target target = target_();
    markup("<a href=\"tesserine://note/" + target.id.text() + "\">");
    text(target.title);
    markup("</a>");
}

void GeneratedBody::addPicture(const Uuid& attachment) {
    markup("<p><img src=\"tesserine-attachment://" + attachment.text() + "\"></p>");
}

void GeneratedBody::addFile(const Uuid& attachment, const std::string& filename) {
    markup("<div data-ts-attachment=\"" + attachment.text() + R"(" data-ts-kind="file">)");
    beginLine();
    text(filename);
    markup("</div>");
}

}  // namespace tesserine::bench
