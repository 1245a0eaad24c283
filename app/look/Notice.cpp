#include "app/look/Notice.h"

#include "base/Product.h"

#include <QMessageBox>
#include <QString>

namespace tesserine::app {

void showNotice(QWidget* parent, const std::string& sentence) {
    const auto name = QString::fromUtf8(product::name.data(), qsizetype(product::name.size()));
    auto* box = new QMessageBox(
        QMessageBox::Warning, name, QString::fromStdString(sentence), QMessageBox::Ok, parent);
    box->setObjectName("notice");
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

}  // namespace tesserine::app
