#pragma once

#include "app/account/Section.h"

class QLineEdit;

namespace tesserine::app {

/// Which service the library is synced with. A new address is looked at, not contacted.
class ServiceSection final : public Section {
    Q_OBJECT

public:
    ServiceSection(AppEnvironment& environment, QWidget* parent);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void useAddress();
    void follow();

    QLineEdit* const address_;
    QPushButton* const use_;
};

}  // namespace tesserine::app
