#pragma once

#include "app/account/Section.h"
#include "sync/WireRecords.h"

#include <vector>

class QLineEdit;

namespace tesserine::app {

class RowList;

/// Tokens with which scripts of the user reach the account. The secret of a new one is shown once.
class TokensSection final : public Section {
    Q_OBJECT

public:
    TokensSection(AppEnvironment& environment, QWidget* parent);

    void refresh();

private:
    using Tokens = std::vector<APITokenInfo>;

    void addFields();
    void create();
    void remove(const QString& id);
    void showSecret(const APITokenCreated& token);
    void showTokens(const Tokens& tokens);

    RowList* const rows_;
    QLineEdit* const label_;
    QPushButton* const create_;
    QWidget* const made_;  // the new secret and what it is good for
    QLineEdit* const secret_;
    std::string madeID_;  // of the token whose secret is shown
};

}  // namespace tesserine::app
