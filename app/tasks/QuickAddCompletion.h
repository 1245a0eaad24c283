#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tesserine::app {

/// The name of a project (#) or label (@) that is being typed.
struct NameBeingTyped {
    QChar sign;
    int begin = 0;  ///< of the sign, in UTF-16 units
    QString letters{};

    friend bool operator==(const NameBeingTyped&, const NameBeingTyped&) = default;
};

/// The name whose last letter stands before `cursor`; none elsewhere.
std::optional<NameBeingTyped> nameBeingTyped(const QString& text, int cursor);

/// At most `limit` of `names` that hold the letters, ignoring case and marks; those that begin with
/// them first, otherwise in the order given.
QStringList namesLike(const QString& letters, const QStringList& names, int limit);

/// Whether the name begins with the letters, ignoring case and marks.
bool beginsWith(const QString& name, const QString& letters);

/// The name as a sentence holds it: #Work, #"Home renovation".
QString nameInSentence(QChar sign, const QString& name);

}  // namespace tesserine::app
