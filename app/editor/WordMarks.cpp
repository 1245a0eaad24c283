#include "app/editor/WordMarks.h"

#include <QScrollBar>
#include <QTextBlock>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

/// Small letters without accents, unit by unit, so that positions stay.
QString folded(const QString& text) {
    QString result = text;
    for (QChar& unit : result) {
        const QString parts = unit.decomposition();
        if (!parts.isEmpty() && parts.front().isLetter()) unit = parts.front();
        unit = unit.toLower();
    }
    return result;
}

bool isInWord(const QString& text, qsizetype place) {
    return place >= 0 && place < text.size() && text[place].isLetterOrNumber();
}

/// Whether a word begins at `place`, or what is sought begins with none.
bool isAtBeginning(const QString& text, qsizetype place) {
    return !isInWord(text, place) || !isInWord(text, place - 1);
}

/// A place in a paragraph, with the rest of the word in which it ends.
struct Range {
    qsizetype begin;
    qsizetype end;
};

QList<Range> rangesIn(const QString& text, const QStringList& sought) {
    QList<Range> ranges;
    for (const QString& words : sought) {
        qsizetype place = text.indexOf(words);
        for (; place >= 0; place = text.indexOf(words, place + words.size())) {
            if (!isAtBeginning(text, place)) continue;
            qsizetype end = place + words.size();
            while (isInWord(text, end - 1) && isInWord(text, end)) {
                ++end;
            }
            ranges.append({place, end});
        }
    }
    std::ranges::sort(ranges, {}, &Range::begin);
    // What is sought may begin alike, such as a word and its other forms.
    QList<Range> apart;
    for (const Range& range : ranges) {
        if (apart.isEmpty() || range.begin >= apart.back().end) apart.append(range);
    }
    return apart;
}

QStringList lines(const QString& words) {
    QStringList result;
    for (const QString& line : words.split('\n', Qt::SkipEmptyParts)) {
        if (!line.trimmed().isEmpty()) result.append(line.trimmed());
    }
    return result;
}

bool isCondition(const QString& word) {
    const bool isOperator = word == "AND" || word == "OR" || word == "NOT";
    return isOperator || word.startsWith('-') || word.contains(':');
}

}  // namespace

QStringList soughtWords(const QString& query) {
    QStringList words;
    const QStringList parts = query.split('"');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const bool isQuoted = i % 2 == 1 && i + 1 < parts.size();
        if (isQuoted) {
            words.append(parts[i].simplified());
            continue;
        }
        for (const QString& word : parts[i].split(' ', Qt::SkipEmptyParts)) {
            if (isCondition(word)) continue;
            QString plain = word;
            plain.removeIf([](QChar unit) { return QString("()*+~").contains(unit); });
            words.append(plain);
        }
    }
    words.removeAll(QString());
    return words;
}

std::vector<PassageRange> placesOf(const QTextDocument& document, const QStringList& sought) {
    QStringList plain;
    for (const QString& words : sought) {
        if (!words.isEmpty()) plain.append(folded(words));
    }
    std::vector<PassageRange> places;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (const Range& range : rangesIn(folded(block.text()), plain)) {
            const auto start = static_cast<std::size_t>(block.position() + range.begin);
            places.push_back({start, static_cast<std::size_t>(range.end - range.begin)});
        }
    }
    return places;
}

WordMarks::WordMarks(BodyEdit& body)
    : QObject(&body), body_(body), marks_(body, BodyEdit::Overlay::sought) {
    connect(&body, &QTextEdit::textChanged, this, &WordMarks::clear);
}

void WordMarks::show(const QString& words) {
    const NoteDocument& note = body_.note();
    clear();
    std::vector<PassageRange> places;
    for (const QStringList& sought :
         {QStringList{words.trimmed()}, lines(words), soughtWords(words)}) {
        if (places.empty()) places = placesOf(note, sought);
    }
    if (places.empty()) return;
    QTextCursor first = body_.textCursor();
    first.setPosition(static_cast<int>(places.front().start));
    body_.setTextCursor(first);
    isShown_ = true;
    marks_.show(std::move(places));
    // With some of what stands before it.
    QScrollBar& bar = *body_.verticalScrollBar();
    bar.setValue(bar.value() + body_.cursorRect().top() - body_.viewport()->height() / 3);
}

void WordMarks::clear() {
    if (!isShown_) return;
    isShown_ = false;
    marks_.clear();
}

}  // namespace tesserine::app
