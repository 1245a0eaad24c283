#pragma once

#include "core/body/HTMLSink.h"
#include "core/body/HTMLTokenizer.h"
#include "core/body/OpenStack.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace tesserine {

/// Makes a properly nested tree out of the tokens of a note body and tells it to a sink.
///
/// Simpler than a browser's: html, head, body and unknown elements stay where they stand, nothing
/// is moved out of tables, and misnested formatting goes on as `OpenStack` says. Never fails;
/// linear in the size, no recursion.
class HTMLTreeBuilder {
public:
    /// Deeper start tags are left out; what they hold stays.
    static constexpr std::size_t maximumDepth = 512;
    /// Bytes of start tags that reopening may repeat in one body: a long attribute cannot be
    /// multiplied.
    static constexpr std::size_t maximumReopenedBytes = 1'000'000;

    HTMLTreeBuilder(std::string_view html, HTMLSink& sink) : tokenizer_(html), sink_(sink) {}

    /// Reads the whole source.
    void build();

private:
    struct Detail {
        std::string_view name;
        std::vector<HTMLAttribute> attributes;  // of formatting, which may be reopened
    };

    void take(const HTMLToken& token);
    void takeText(std::string_view text);
    void takeStart(const HTMLToken& token);
    void takeStartBelowLimit(const HTMLToken& token);
    void takeEnd(const HTMLToken& token);
    void writeEmpty(const HTMLToken& token);
    void push(
        HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes);
    void closeFrom(std::size_t first);
    void reopenFormatting();
    bool endsAtOnce(const HTMLToken& token) const;

    HTMLTokenizer tokenizer_;
    HTMLSink& sink_;
    OpenStack<Detail> open_;
    std::size_t reopenedBytes_ = 0;
    /// Start tags of the innermost element's own name that were left out for depth.
    std::size_t leftOut_ = 0;
    bool dropsNewline_ = false;
    bool isAfterText_ = false;
};

/// Reads `html` (UTF-8; anything goes) and tells its tree to `sink`. What the sink is given lies in
/// `html` or in memory that lives as long as this call.
void parseHTML(std::string_view html, HTMLSink& sink);

}  // namespace tesserine
