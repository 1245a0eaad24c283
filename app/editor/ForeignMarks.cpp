#include "app/editor/ForeignMarks.h"

#include "core/body/HTMLSerializer.h"

namespace tesserine::app::paste {

void ForeignMarks::open(
    HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes) {
    marks_.push_back({element, name, {attributes.begin(), attributes.end()}});
}

void ForeignMarks::close() {
    if (written_ == marks_.size()) {
        output_.close();
        --written_;
    }
    marks_.pop_back();
}

void ForeignMarks::begin() {
    for (; written_ < marks_.size(); ++written_) {
        const Mark& mark = marks_[written_];
        output_.open(mark.element, mark.name, mark.attributes);
    }
}

void ForeignMarks::interrupt() {
    for (; written_ > 0; --written_) {
        output_.close();
    }
}

}  // namespace tesserine::app::paste
