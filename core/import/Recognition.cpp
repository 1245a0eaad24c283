#include "core/import/Recognition.h"

#include "base/Text.h"
#include "core/body/HTMLTreeBuilder.h"

#include <charconv>
#include <utility>

namespace tesserine {
namespace {

constexpr int leastWeight = 50;

/// Reads `<item><t w="87">word</t>…</item>`: places with the words that each may be.
class TextFinder final : public HTMLSink {
public:
    void open(
        HTMLElement, std::string_view name, std::span<const HTMLAttribute> attributes) override {
        if (name == "item") endPlace();
        isWanted_ = false;
        if (name != "t") return;
        const std::string_view weight = attributeNamed(attributes, "w").value_or("");
        int value = 0;
        std::from_chars(weight.data(), weight.data() + weight.size(), value);
        isWanted_ = value >= leastWeight;
    }
    void close() override { isWanted_ = false; }
    void text(std::string_view text) override {
        if (!isWanted_ || text::isBlank(text)) return;
        if (!place_.empty()) place_ += ' ';
        place_ += text::trimmed(text);
    }
    void comment(std::string_view) override {}

    std::string result() {
        endPlace();
        return std::move(text_);
    }

private:
    void endPlace() {
        if (place_.empty()) return;
        if (!text_.empty()) text_ += '\n';
        text_ += std::exchange(place_, {});
    }

    std::string text_;
    std::string place_;
    bool isWanted_ = false;
};

}  // namespace

std::string recognisedText(std::string_view xml) {
    TextFinder reader;
    parseHTML(xml, reader);
    return reader.result();
}

}  // namespace tesserine
