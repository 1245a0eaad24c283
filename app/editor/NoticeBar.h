#pragma once

#include <QFrame>
#include <QString>

#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;
class QTimer;

namespace tesserine::app {

/// One line above a note that tells something about it, with what can be done about it.
class NoticeBar final : public QFrame {
    Q_OBJECT

public:
    enum class Lasting { untilClosed, moment };
    struct Action {
        QString title;
        std::function<void()> act;
    };

    /// Gives the keys to its focus proxy, else to its window, when it goes.
    explicit NoticeBar(QWidget* parent = nullptr);

    /// Shows `text` in the place of what was shown.
    void tell(
        const QString& text,
        const std::vector<Action>& actions = {},
        Lasting lasting = Lasting::untilClosed);
    QString text() const;

private:
    void hideEvent(QHideEvent* event) override;
    void leaveKeys();

    QLabel* const label_;
    QHBoxLayout* const buttons_;
    QTimer* const timer_;
};

}  // namespace tesserine::app
