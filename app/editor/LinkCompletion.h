#pragma once

#include "base/Uuid.h"

#include <QObject>

#include <optional>

class QListWidget;

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;

/// Offers the titles of notes while "[[" and a few letters are typed, and puts a link to the chosen
/// one in their place; the last entry makes a new note with this title.
class LinkCompletion final : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t mostOffered = 8;

    LinkCompletion(AppEnvironment& environment, BodyEdit& body);

    /// Types "[[" at the cursor.
    void begin();
    bool isOpen() const;

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void update();
    void offer(const QString& title);
    void accept();
    void move(int rows);
    /// What was typed behind "[[" in the cursor's paragraph; none when nothing was.
    std::optional<QString> typed() const;

    AppEnvironment& environment_;
    BodyEdit& body_;
    QListWidget* const list_;
    bool isDismissed_ = false;
};

}  // namespace tesserine::app
