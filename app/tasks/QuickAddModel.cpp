#include "app/tasks/QuickAddModel.h"

#include "app/tasks/TaskWords.h"
#include "base/Clock.h"
#include "base/Text.h"
#include "core/tasks/TaskSnapshot.h"

#include <QStringList>

#include <algorithm>

namespace tesserine::app {
namespace {

/// Between positions in a text of UTF-8 bytes and of UTF-16 units.
class Positions {
public:
    explicit Positions(const QString& text) : text_(text) {}

    TextRange bytes(const QuickAddToken& token) const {
        return {bytesBefore(token.begin), bytesBefore(token.end)};
    }
    static int unitsBefore(std::string_view sentence, std::size_t byte) {
        return static_cast<int>(text::utf16Length(sentence.substr(0, byte)));
    }

private:
    std::size_t bytesBefore(int unit) const {
        return static_cast<std::size_t>(QStringView(text_).left(unit).toUtf8().size());
    }
    const QString& text_;
};

/// Where an edit has moved what lies outside it; none for what it went through.
std::optional<QuickAddToken> moved(
    QuickAddToken token, int editBegin, int editEnd, int lengthChange) {
    if (token.end <= editBegin) return token;
    if (token.begin < editEnd) return std::nullopt;
    token.begin += lengthChange;
    token.end += lengthChange;
    return token;
}

int commonPrefix(QStringView a, QStringView b) {
    return static_cast<int>(std::ranges::mismatch(a, b).in1 - a.begin());
}

bool isSamePlace(const QuickAddToken& a, const QuickAddToken& b) {
    return a.kind == b.kind && a.begin == b.begin;
}

bool isNumberAlone(const RecognisedToken& token) {
    return token.kind == TokenKind::priority && text::characterCount(token.text) == 1;
}

}  // namespace

void QuickAddModel::setText(const QString& text, QuickAddMoment moment) {
    const QString composed = text.normalized(QString::NormalizationForm_C);
    followEdit(composed);
    text_ = composed;
    moment_ = std::move(moment);
    if (text_.trimmed().isEmpty()) isSuggestionRefused_ = false;
    parse();
}

void QuickAddModel::clear() {
    text_.clear();
    result_ = {};
    tokens_.clear();
    turnedBack_.clear();
    appeared_.clear();
    isSuggestionRefused_ = false;
}

void QuickAddModel::followEdit(const QString& newText) {
    const int begin = commonPrefix(text_, newText);
    int oldEnd = static_cast<int>(text_.size());
    int newEnd = static_cast<int>(newText.size());
    while (oldEnd > begin && newEnd > begin && text_[oldEnd - 1] == newText[newEnd - 1]) {
        --oldEnd;
        --newEnd;
    }
    for (auto* tokens : {&turnedBack_, &appeared_}) {
        std::vector<QuickAddToken> kept;
        for (const QuickAddToken& token : *tokens) {
            if (const auto at = moved(token, begin, oldEnd, newEnd - oldEnd)) kept.push_back(*at);
        }
        *tokens = std::move(kept);
    }
}

void QuickAddModel::parse() {
    const Positions positions(text_);
    leftAlone_.clear();
    for (const QuickAddToken& token : turnedBack_) {
        leftAlone_.push_back(positions.bytes(token));
    }
    const std::string sentence = text_.toStdString();
    const QuickAddParser parser(moment_->now, moment_->calendar);
    result_ = parser.parse(sentence, leftAlone_);
    // Without its first number the sentence may show another one as its priority.
    for (auto number = std::ranges::find_if(result_.recognisedTokens, isNumberAlone);
         !moment_->isNumberPriority && number != result_.recognisedTokens.end();
         number = std::ranges::find_if(result_.recognisedTokens, isNumberAlone)) {
        leftAlone_.push_back(number->range);
        result_ = parser.parse(sentence, leftAlone_);
    }

    tokens_.clear();
    for (const RecognisedToken& token : result_.recognisedTokens) {
        tokens_.push_back(
            {token.kind,
             Positions::unitsBefore(result_.sentence, token.range.begin),
             Positions::unitsBefore(result_.sentence, token.range.end)});
    }
    std::ranges::sort(tokens_, {}, &QuickAddToken::begin);
    noteAppearances();
}

void QuickAddModel::noteAppearances() {
    std::vector<QuickAddToken> inOrder;
    const auto add = [&](const QuickAddToken& like) {
        const auto isLike = [&](const auto& token) { return isSamePlace(token, like); };
        const auto token = std::ranges::find_if(tokens_, isLike);
        if (token != tokens_.end() && std::ranges::none_of(inOrder, isLike)) {
            inOrder.push_back(*token);
        }
    };
    std::ranges::for_each(appeared_, add);
    std::ranges::for_each(tokens_, add);
    appeared_ = std::move(inOrder);
}

std::optional<QuickAddToken> QuickAddModel::tokenAt(int position) const {
    for (const QuickAddToken& token : tokens_) {
        if (token.begin <= position && position < token.end) return token;
    }
    return std::nullopt;
}

std::optional<QuickAddToken> QuickAddModel::tokenEndingAt(int position) const {
    const auto found = std::ranges::find(tokens_, position, &QuickAddToken::end);
    return found == tokens_.end() ? std::nullopt : std::optional(*found);
}

void QuickAddModel::turnBack(const QuickAddToken& token) {
    turnedBack_.push_back(token);
    std::ranges::sort(turnedBack_, {}, &QuickAddToken::begin);
    parse();
}

bool QuickAddModel::turnBackNewest() {
    if (appeared_.empty()) return false;
    turnBack(QuickAddToken(appeared_.back()));
    return true;
}

bool QuickAddModel::recogniseAgain(int position) {
    const auto isThere = [&](const QuickAddToken& token) {
        return token.begin <= position && position < token.end;
    };
    if (std::erase_if(turnedBack_, isThere) == 0) return false;
    parse();
    return true;
}

bool QuickAddModel::isDueSuggested() const {
    return !text_.isEmpty() && !isSuggestionRefused_ && !result_.dueDate && draft().due.has_value();
}

/// The list's day, where that is another one than today and the sentence names none.
std::optional<Instant> QuickAddModel::otherDay() const {
    const bool namesDay = std::ranges::count(tokens_, TokenKind::date, &QuickAddToken::kind) > 0;
    if (!defaults_.dueDay || isSuggestionRefused_ || namesDay) return std::nullopt;
    const bool isToday = moment_->calendar.isSameDay(*defaults_.dueDay, moment_->now);
    return isToday ? std::nullopt : defaults_.dueDay;
}

/// A time or a rule then counts from that day: the sentence is read as at its beginning.
TaskDraft QuickAddModel::draftFor(Instant day) const {
    const FixedClock morning(moment_->calendar.startOfDay(day));
    const QuickAddParser parser(morning.now(), moment_->calendar);
    const QuickAddResult result = parser.parse(result_.sentence, leftAlone_);
    return TaskService(morning).draftOf(result, moment_->calendar);
}

TaskDraft QuickAddModel::draft() const {
    if (!moment_) return {};
    const auto day = otherDay();
    TaskDraft draft = day ? draftFor(*day) : tasks_.draftOf(result_, moment_->calendar);
    if (!draft.due && defaults_.dueDay) draft.due = TaskDue{.date = *defaults_.dueDay};
    if (isSuggestionRefused_ && !result_.dueDate) draft.due.reset();
    if (draft.projectName.empty()) draft.projectName = defaults_.projectName.toStdString();
    const std::string label = defaults_.label.toStdString();
    const auto isLabel = [&](const std::string& name) {
        return text::caseFolded(name) == text::caseFolded(label);
    };
    if (!label.empty() && std::ranges::none_of(draft.labels, isLabel)) {
        draft.labels.push_back(label);
    }
    return draft;
}

QString QuickAddModel::words() const {
    if (!moment_ || text_.trimmed().isEmpty()) return {};
    const TaskDraft draft = this->draft();
    QStringList parts;
    if (draft.due) parts += TaskWords(moment_->now, moment_->calendar).longDue(*draft.due);
    if (draft.recurrence) parts += QString::fromStdString(draft.recurrence->description());
    if (draft.priority != TaskPriority::p4) {
        parts += QString::fromStdString(shortLabel(draft.priority));
    }
    if (!draft.projectName.empty()) parts += QString::fromStdString("#" + draft.projectName);
    for (const std::string& label : draft.labels) {
        parts += QString::fromStdString("@" + label);
    }
    return parts.join(QStringLiteral(" · "));
}

}  // namespace tesserine::app
