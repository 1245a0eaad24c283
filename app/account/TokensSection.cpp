#include "app/account/TokensSection.h"

#include "app/account/RowList.h"
#include "app/look/PageParts.h"
#include "app/state/DateWords.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {

TokensSection::TokensSection(AppEnvironment& environment, QWidget* parent)
    : Section(tr("Personal API tokens"), environment, parent),
      rows_(new RowList(tr("Personal API tokens"), this)),
      label_(new QLineEdit(this)),
      create_(makeButton(tr("Make Token"), "createToken")),
      made_(new QWidget(this)),
      secret_(new QLineEdit(made_)) {
    rows_->setObjectName("tokens");
    connect(this, &Section::notAnswered, rows_, &RowList::stopAsking);
    rows_->showAsking();
    column().addWidget(rows_);
    addFields();
    connect(rows_, &RowList::pressed, this, &TokensSection::remove);
    connect(create_, &QPushButton::clicked, this, &TokensSection::create);
    connect(label_, &QLineEdit::returnPressed, create_, &QPushButton::click);
    connect(label_, &QLineEdit::textChanged, this, [this](const QString& text) {
        create_->setDisabled(text.trimmed().isEmpty());
    });
}

void TokensSection::addFields() {
    label_->setObjectName("tokenLabel");
    label_->setAccessibleName(tr("What the token is for"));
    label_->setPlaceholderText(tr("What it is for, such as “Backup script”"));
    create_->setEnabled(false);
    auto* const making = new QHBoxLayout;
    making->setSpacing(space::medium);
    making->addWidget(label_, 1);
    making->addWidget(create_);
    column().addLayout(making);

    secret_->setObjectName("tokenSecret");
    secret_->setAccessibleName(tr("The new token"));
    secret_->setReadOnly(true);
    secret_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    QPushButton* const copy = makeButton(tr("Copy"), "copyToken");
    auto* const secretRow = new QHBoxLayout;
    secretRow->setSpacing(space::medium);
    secretRow->addWidget(secret_, 1);
    secretRow->addWidget(copy);
    auto* const lines = new QVBoxLayout(made_);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(space::small);
    lines->addLayout(secretRow);
    lines->addWidget(
        makeText(tr("Keep it now: it is not shown again."), TextRole::emphasis, made_));
    lines->addWidget(makeHint(
        tr("A personal API token can read and write this account's notes, exactly like a signed-in "
           "device. It cannot create another token, sign another device out, change this account, "
           "or share a note."),
        made_));
    made_->setVisible(false);
    column().addWidget(made_);
    connect(copy, &QPushButton::clicked, this, [this] {
        QGuiApplication::clipboard()->setText(secret_->text());
    });
}

void TokensSection::refresh() {
    ask<Tokens>(
        [](SyncClient& client, const std::stop_token& stop) { return client.apiTokens(stop); },
        [this](const Tokens& tokens) { showTokens(tokens); });
}

/// The list is a question of its own: when it fails, the secret is there nevertheless.
void TokensSection::create() {
    ask<APITokenCreated>(
        [label = label_->text().trimmed().toStdString()](
            SyncClient& client, const std::stop_token& stop) {
            return client.createAPIToken(label, stop);
        },
        [this](const APITokenCreated& token) {
            label_->clear();
            showSecret(token);
            refresh();
        });
}

void TokensSection::remove(const QString& id) {
    ask<Tokens>(
        [token = id.toStdString()](SyncClient& client, const std::stop_token& stop) {
            end([&] { client.revokeAPIToken(token, stop); });
            return client.apiTokens(stop);
        },
        [this](const Tokens& tokens) { showTokens(tokens); });
}

/// It stays until its token is gone, whatever is done beside it.
void TokensSection::showSecret(const APITokenCreated& token) {
    madeID_ = token.id;
    secret_->setText(QString::fromStdString(token.token));
    secret_->setCursorPosition(0);
    made_->setVisible(true);
}

void TokensSection::showTokens(const Tokens& tokens) {
    const auto time = [this](Instant instant) {
        return shownTime(instant, environment().now(), environment().calendar());
    };
    std::vector<RowList::Row> rows;
    for (const APITokenInfo& token : tokens) {
        QString hint = tr("Made: %1").arg(time(token.createdAt));
        if (token.lastUsedAt) hint += tr(" · last used: %1").arg(time(*token.lastUsedAt));
        if (token.expiresAt) hint += tr(" · ends: %1").arg(time(*token.expiresAt));
        rows.push_back(
            {.title = QString::fromStdString(token.label),
             .hint = hint,
             .button = tr("Delete"),
             .id = QString::fromStdString(token.id)});
    }
    rows_->setRows(rows);
    if (rows.empty()) rows_->setHint(tr("There is none."));
    if (std::ranges::find(tokens, madeID_, &APITokenInfo::id) == tokens.end()) {
        secret_->clear();
        made_->setVisible(false);
    }
}

}  // namespace tesserine::app
