#include "app/tasks/QuickAddCompletion.h"

#include "base/Text.h"

#include <algorithm>

namespace tesserine::app {
namespace {

bool mayStandBare(QChar letter) {
    return letter.isLetterOrNumber() || QStringLiteral("_&/-").contains(letter);
}

std::string folded(const QString& text) { return text::folded(text.toStdString()); }

}  // namespace

std::optional<NameBeingTyped> nameBeingTyped(const QString& text, int cursor) {
    int begin = cursor - 1;
    // A quoted name may hold spaces, so its opening quote is looked for first.
    const QString before = text.left(cursor);
    const auto quote = static_cast<int>(before.lastIndexOf(u'"'));
    const bool isOpenQuote = quote > 0 && before.count(u'"') % 2 == 1;
    if (isOpenQuote) {
        begin = quote - 1;
    } else {
        while (begin >= 0 && mayStandBare(text[begin])) {
            --begin;
        }
    }
    if (begin < 0 || (text[begin] != u'#' && text[begin] != u'@')) return std::nullopt;
    if (begin > 0 && !text[begin - 1].isSpace()) return std::nullopt;
    const int letters = begin + (isOpenQuote ? 2 : 1);
    return NameBeingTyped{text[begin], begin, text.mid(letters, cursor - letters)};
}

QStringList namesLike(const QString& letters, const QStringList& names, int limit) {
    const std::string wanted = folded(letters);
    QStringList begins;
    QStringList holds;
    for (const QString& name : names) {
        const std::size_t at = folded(name).find(wanted);
        if (at == std::string::npos) continue;
        (at == 0 ? begins : holds) += name;
    }
    return (begins + holds).mid(0, limit);
}

bool beginsWith(const QString& name, const QString& letters) {
    return folded(name).starts_with(folded(letters));
}

QString nameInSentence(QChar sign, const QString& name) {
    const bool isBare = std::ranges::all_of(name, mayStandBare);
    return isBare ? sign + name : sign + u'"' + name + u'"';
}

}  // namespace tesserine::app
