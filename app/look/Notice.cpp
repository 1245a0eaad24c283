#include "app/look/Notice.h"

#include "base/Product.h"

#include <QApplication>
#include <QMessageBox>
#include <QString>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr const char* objectName = "notice";

bool isShown(const QString& text) {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget* widget) {
        const auto* const box = qobject_cast<const QMessageBox*>(widget);
        return box != nullptr && box->objectName() == objectName && box->isVisible()
               && box->text() == text;
    });
}

}  // namespace

void showNotice(QWidget* parent, const std::string& sentence) {
    const auto name = QString::fromUtf8(product::name.data(), qsizetype(product::name.size()));
    const QString text = QString::fromStdString(sentence);
    if (isShown(text)) return;
    // Not of the part itself: it would be disabled with it, and could not be closed any more.
    QWidget* const window = parent == nullptr ? nullptr : parent->window();
    auto* box = new QMessageBox(QMessageBox::Warning, name, text, QMessageBox::Ok, window);
    box->setObjectName(objectName);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

}  // namespace tesserine::app
