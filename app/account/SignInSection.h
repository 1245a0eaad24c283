#pragma once

#include "app/account/Section.h"

#include <QString>

class QStackedWidget;

namespace tesserine::app {

/// What sync is for, and the way in: by a page in the browser, which calls the program back.
class SignInSection final : public Section {
    Q_OBJECT

public:
    SignInSection(AppEnvironment& environment, QWidget* parent);

signals:
    /// This page of the service is to be opened in a browser.
    void pageWanted(const QString& address);

private:
    void follow();
    void signIn();

    QLabel* const ended_;
    QPushButton* const signIn_;
    QWidget* const pending_;
};

}  // namespace tesserine::app
