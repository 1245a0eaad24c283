#pragma once

#include "app/account/Section.h"

namespace tesserine::app {

/// What sync is for, and the way in: by a page in the browser, which calls the program back.
class SignInSection final : public Section {
    Q_OBJECT

public:
    SignInSection(AppEnvironment& environment, QWidget* parent);

private:
    void follow();
    void signIn();

    QLabel* const ended_;
    QPushButton* const signIn_;
    QWidget* const pending_;
};

}  // namespace tesserine::app
