#include "app/assistant/WhatIsSent.h"

#include "app/assistant/Assistant.h"
#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "base/Files.h"
#include "base/JSON.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

enum Column { sentColumn, destinationColumn, purposeColumn, sizeColumn, titlesColumn, columnCount };

QString joinedTitles(const std::vector<std::string>& titles) {
    QStringList all;
    for (const std::string& title : titles) {
        all << qt(title);
    }
    return all.join(", ");
}

QVBoxLayout* columnOf(QWidget* page) {
    auto* const column = new QVBoxLayout(page);
    column->setContentsMargins(space::large, space::large, space::large, space::large);
    column->setSpacing(space::medium);
    return column;
}

}  // namespace

WhatIsSent::WhatIsSent(
    AppEnvironment& environment, const std::optional<Request>& request, QWidget* parent)
    : QDialog(parent), environment_(environment), tabs_(new QTabWidget(this)) {
    setObjectName("whatIsSent");
    setWindowTitle("What Is Sent");
    setAttribute(Qt::WA_DeleteOnClose);
    resize(760, 560);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    if (request) {
        tabs_->addTab(makeRequest(*request), "This Request");
        QPushButton* const send = makeMainButton("Send", this);
        send->setObjectName("sendRequest");
        buttons->addButton(send, QDialogButtonBox::AcceptRole);
        connect(send, &QPushButton::clicked, this, [this] {
            emit sendingWanted();
            accept();
        });
    }
    tabs_->addTab(makeRecord(), "Sent Before");
    auto* const all = new QVBoxLayout(this);
    all->addWidget(tabs_);
    all->addWidget(buttons);
}

QWidget* WhatIsSent::makeRequest(const Request& request) {
    auto* const page = new QWidget(tabs_);
    QVBoxLayout* const column = columnOf(page);
    column->addWidget(makeHint(
        "Exactly this would be sent to " + qt(request.destination)
            + ". Nothing has been sent so far.",
        page));
    auto* const body = new QPlainTextEdit(page);
    body->setObjectName("exactRequest");
    body->setAccessibleName("The exact request");
    body->setReadOnly(true);
    body->setTabChangesFocus(true);
    body->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    body->setPlainText(qt(json::write(json::parse(request.body), json::Layout::pretty)));
    column->addWidget(body, 1);
    return page;
}

QWidget* WhatIsSent::makeRecord() {
    auto* const page = new QWidget(tabs_);
    QVBoxLayout* const column = columnOf(page);
    column->addWidget(makeHint(
        "When something was sent, how much, and the titles of the notes it came from. The record "
        "holds no text of your notes and stays on this computer.",
        page));
    record_ = new QTableWidget(0, columnCount, page);
    record_->setObjectName("sentRecord");
    record_->setAccessibleName("The record of what was sent");
    record_->setHorizontalHeaderLabels({"Sent", "To", "For", "Characters", "Notes"});
    record_->verticalHeader()->hide();
    record_->setShowGrid(false);
    record_->setTabKeyNavigation(false);
    record_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    record_->setSelectionBehavior(QAbstractItemView::SelectRows);
    record_->horizontalHeader()->setHighlightSections(false);
    record_->horizontalHeader()->setStretchLastSection(true);
    record_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    column->addWidget(record_, 1);
    auto* const forget = new QPushButton("Delete Record", page);
    forget->setObjectName("deleteRecord");
    forget->setAutoDefault(false);
    connect(forget, &QPushButton::clicked, this, &WhatIsSent::deleteRecord);
    column->addWidget(forget, 0, Qt::AlignLeft);
    fillRecord();
    return page;
}

void WhatIsSent::fillRecord() {
    record_->setRowCount(0);
    std::vector<SentRequest> all;
    try {
        all = sentLogOf(environment_).all();
    } catch (const FileError& error) {
        showNotice(this, error.what());
    }
    for (const SentRequest& sent : all) {
        const int row = record_->rowCount();
        record_->insertRow(row);
        const auto put = [&](Column column, const QString& text) {
            record_->setItem(row, column, new QTableWidgetItem(text));
        };
        put(sentColumn, shownTime(sent.sentAt, environment_.now(), environment_.calendar()));
        put(destinationColumn, qt(sent.destination));
        put(purposeColumn, qt(sent.purpose));
        put(sizeColumn, QString::number(sent.characterCount));
        record_->item(row, sizeColumn)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        put(titlesColumn, joinedTitles(sent.titles));
    }
    record_->resizeColumnsToContents();
    for (int column = 0; column < titlesColumn; ++column) {
        record_->setColumnWidth(column, record_->columnWidth(column) + space::large);
    }
}

void WhatIsSent::deleteRecord() {
    try {
        sentLogOf(environment_).clear();
    } catch (const FileError& error) {
        showNotice(this, error.what());
    }
    fillRecord();
}

}  // namespace tesserine::app
