#include "app/look/LongWords.h"

#include "app/look/PageParts.h"

#include <gtest/gtest.h>
#include <QLabel>

#include <memory>

namespace tesserine::app {
namespace {

TEST(LongWords, MakeATextNoWiderThanItsPlace) {
    for (const QString& words :
         {QString(500, 'W'),
          "/home/" + QString(300, 'x') + "/a.enex",
          QString(200, QChar(0x754C))}) {
        const std::unique_ptr<QLabel> label(makeText(withBreaks(words), TextRole::body, nullptr));
        EXPECT_LT(label->minimumSizeHint().width(), 300) << words.toStdString();
        EXPECT_EQ(label->text().remove(QChar(0x200B)), words);
    }
}

TEST(LongWords, LeaveUsualWordsAndLettersOfSeveralSignsWhole) {
    for (const QString& words : {QString(), QString("A shopping list for Saturday")}) {
        EXPECT_EQ(withBreaks(words), words);
    }
    const QString accented = QString::fromUtf8("e\u0301");  // one letter, two signs
    EXPECT_EQ(withBreaks(accented.repeated(17)), accented.repeated(16) + QChar(0x200B) + accented);
}

}  // namespace
}  // namespace tesserine::app
