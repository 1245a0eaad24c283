#include "app/editor/ForeignSurvey.h"

#include "app/editor/ForeignLists.h"
#include "app/editor/InlineStyle.h"
#include "core/body/HTMLTreeBuilder.h"

#include <cstddef>

namespace tesserine::app::paste {
namespace {

class Surveyor final : public HTMLSink {
public:
    void open(
        HTMLElement element,
        std::string_view /*name*/,
        std::span<const HTMLAttribute> attributes) override {
        open_.push_back(element);
        const std::string_view style = attribute(attributes, "style");
        if (element == HTMLElement::table) {
            openTable(attribute(attributes, "role"));
        } else if (element == HTMLElement::td || element == HTMLElement::th) {
            if (!tables_.empty()) ++tables_.back().cells;
        } else if (element == HTMLElement::p && itemMark(style)) {
            survey.labels.emplace_back();
        } else if (labelDepth_ == 0 && isItemLabel(style)) {
            labelDepth_ = open_.size();
        }
    }
    void close() override {
        if (open_.size() == labelDepth_) labelDepth_ = 0;
        if (open_.back() == HTMLElement::table) {
            if (tables_.back().cells <= 1) survey.isLayout[tables_.back().place] = true;
            tables_.pop_back();
        }
        open_.pop_back();
    }
    void text(std::string_view text) override {
        if (labelDepth_ > 0 && !survey.labels.empty()) survey.labels.back() += text;
    }
    void comment(std::string_view /*text*/) override {}

    Survey survey;

private:
    struct Table {
        std::size_t place;  // among all
        std::size_t cells = 0;
    };

    void openTable(std::string_view role) {
        if (!tables_.empty()) survey.isLayout[tables_.back().place] = true;
        tables_.push_back({survey.isLayout.size()});
        survey.isLayout.push_back(role == "presentation" || role == "none");
    }

    std::vector<HTMLElement> open_;
    std::vector<Table> tables_;
    std::size_t labelDepth_ = 0;  // of the label that is being read; 0: none is
};

}  // namespace

Survey surveyed(std::string_view foreign) {
    Surveyor surveyor;
    parseHTML(foreign, surveyor);
    return std::move(surveyor.survey);
}

}  // namespace tesserine::app::paste
