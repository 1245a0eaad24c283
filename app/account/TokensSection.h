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
    /// What the service said: its tokens, and the secret of one that was just made.
    struct Answer {
        std::vector<APITokenInfo> tokens;
        QString secret{};
    };
    void addFields();
    void create();
    void remove(const QString& id);
    void showAnswer(const Answer& answer);

    RowList* const rows_;
    QLineEdit* const label_;
    QPushButton* const create_;
    QWidget* const made_;  // the new secret and what it is good for
    QLineEdit* const secret_;
};

}  // namespace tesserine::app
