#pragma once

#include "base/Uuid.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

class QListWidget;

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;
class OpenNote;

/// Offers the titles of notes while "[[" and a few letters are typed, and puts a link to the chosen
/// one in their place; the last entry makes a new note with this title. The open note itself, which
/// is rarely meant, comes behind the others.
///
/// Titles are looked through in the background. What is chosen before the answer to the last letter
/// is there is taken from that answer.
class LinkCompletion final : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t mostOffered = 8;

    LinkCompletion(AppEnvironment& environment, const OpenNote& open, BodyEdit& body);

    /// Types "[[" at the cursor.
    void begin();
    bool isOpen() const;

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// A note whose title has the letters.
    struct Offer {
        Uuid note;
        QString title;
    };
    static std::vector<Offer> find(StoreContext& context, const QString& title);
    void update();
    void ask(const QString& title);
    void answer(const QString& title, std::vector<Offer> offers);
    void place();
    void accept();
    void move(int rows);
    /// What was typed behind "[[" in the cursor's paragraph; none when nothing was.
    std::optional<QString> typed() const;

    AppEnvironment& environment_;
    const OpenNote& open_;
    BodyEdit& body_;
    QListWidget* const list_;
    bool isDismissed_ = false;
    bool isAsking_ = false;
    bool acceptsAnswer_ = false;     // the next one; a choice was made before it was there
    std::optional<QString> wanted_;  // the letters to find notes for; none: nothing is typed
    std::optional<QString> shown_;   // those that the list answers
};

}  // namespace tesserine::app
