#pragma once

#include "app/account/Section.h"

namespace tesserine::app {

class InfoRow;

/// Who is signed in, how sync is doing, and what it has to ask.
class AccountSection final : public Section {
    Q_OBJECT

public:
    AccountSection(AppEnvironment& environment, QWidget* parent);

private:
    void follow();
    void askToSignOut();
    void answerQuestion();

    InfoRow* const account_;
    InfoRow* const state_;
    QPushButton* const syncNow_;
    QPushButton* const answer_;
};

}  // namespace tesserine::app
