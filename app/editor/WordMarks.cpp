#include "app/editor/WordMarks.h"

#include "core/body/PlainText.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

/// A text as a search compares it: small letters without accents.
struct Folded {
    QString text;
    QList<qsizetype> places;  ///< where each unit stands, and the end

    explicit Folded(const QString& original);
};

QChar folded(QChar unit) {
    if (unit.unicode() < 0x80) return unit.toLower();
    const QString parts = QString(unit).normalized(QString::NormalizationForm_D);
    const QChar base = parts.front().isLetter() ? parts.front() : unit;
    return base.toLower();
}

/// An accent may stand behind its letter, as a unit of its own.
Folded::Folded(const QString& original) {
    text.reserve(original.size());
    places.reserve(original.size() + 1);
    for (qsizetype i = 0; i < original.size(); ++i) {
        if (original[i].category() == QChar::Mark_NonSpacing) continue;
        text.append(folded(original[i]));
        places.append(i);
    }
    places.append(original.size());
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

/// Of the table, or whatever else stands there as one object.
QString wordsOf(const NoteDocument& note, int object) {
    return QString::fromStdString(PlainText::fromHTML(note.styleAt(object).object));
}

/// Of the line in which the cursor stands, in pixels.
int lineHeight(const QTextCursor& cursor) {
    const QTextLine line = cursor.block().layout()->lineForTextPosition(cursor.positionInBlock());
    return line.isValid() ? static_cast<int>(line.height()) : 0;
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

std::vector<PassageRange> placesOf(const NoteDocument& note, const QStringList& sought) {
    QStringList plain;
    for (const QString& words : sought) {
        if (!words.isEmpty()) plain.append(Folded(words).text);
    }
    std::vector<PassageRange> places;
    const auto add = [&](const QTextBlock& block, qsizetype begin, qsizetype end) {
        const auto start = static_cast<std::size_t>(block.position() + begin);
        places.push_back({start, static_cast<std::size_t>(end - begin)});
    };
    for (QTextBlock block = note.begin(); block.isValid(); block = block.next()) {
        const QString text = block.text();
        const Folded words(text);
        for (const Range& range : rangesIn(words.text, plain)) {
            add(block, words.places[range.begin], words.places[range.end]);
        }
        qsizetype object = text.indexOf(QChar::ObjectReplacementCharacter);
        for (; object >= 0; object = text.indexOf(QChar::ObjectReplacementCharacter, object + 1)) {
            const QString inside = wordsOf(note, block.position() + static_cast<int>(object));
            if (!rangesIn(Folded(inside).text, plain).isEmpty()) add(block, object, object + 1);
        }
    }
    std::ranges::sort(places, {}, &PassageRange::start);
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
    const QTextCursor beginning = first;
    if (note.characterAt(first.position()) == QChar::ObjectReplacementCharacter) {
        first.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    }
    body_.setTextCursor(first);
    isShown_ = true;
    marks_.show(std::move(places));
    // With some of what stands before it, as far as there is room beside a table.
    const int top = body_.cursorRect(beginning).top();
    const int room = body_.viewport()->height();
    const int above = std::max(std::min(room / 3, room - lineHeight(beginning)), 0);
    QScrollBar& bar = *body_.verticalScrollBar();
    bar.setValue(bar.value() + top - above);
}

void WordMarks::clear() {
    if (!isShown_) return;
    isShown_ = false;
    marks_.clear();
}

}  // namespace tesserine::app
