#include "app/editor/PassageLocking.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/NoteObject.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/OpenNote.h"
#include "app/editor/PassageDialogs.h"
#include "app/editor/PasteRules.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "core/body/SelectiveEncryption.h"
#include "search/SearchCoordinator.h"

#include <QMessageBox>
#include <QPointer>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>

#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

/// What goes from one thread to another; each side has its part of it at its own time.
struct Sealing {
    std::string passage;
    SecretBytes passphrase;
    std::string blob;

    Sealing(std::string text, SecretBytes secret)
        : passage(std::move(text)), passphrase(std::move(secret)) {}
    Sealing(const Sealing&) = delete;
    Sealing& operator=(const Sealing&) = delete;
    ~Sealing() { wipe(passage); }
};

struct Opening {
    std::string blob;
    SecretBytes passphrase;
    SecretBytes text;
};

PassageRange selectionOf(const BodyEdit& body) {
    const QTextCursor cursor = body.textCursor();
    const auto start = static_cast<std::size_t>(cursor.selectionStart());
    return {start, static_cast<std::size_t>(cursor.selectionEnd()) - start};
}

/// Shows `text` in the place of what is shown, with nothing to undo.
void replaceContent(BodyEdit& body, const AttributedText& text, int position) {
    const int scrolled = body.verticalScrollBar()->value();
    body.note().setContent(text);
    body.note().setModified(true);
    QTextCursor cursor(&body.note());
    cursor.setPosition(std::min(position, body.note().characterCount() - 1));
    body.setTextCursor(cursor);
    body.verticalScrollBar()->setValue(scrolled);
    body.ensureCursorVisible();
}

}  // namespace

PassageLocking::PassageLocking(Parts parts, QObject* parent)
    : QObject(parent), parts_(std::move(parts)) {}

void PassageLocking::lockSelection() {
    const PassageRange range = selectionOf(parts_.body);
    if (!parts_.open.id() || !isLockable(parts_.body.note().content(), range)) {
        return showNotice(&parts_.body, PassageError::notLockable().what());
    }
    auto* const dialog = new LockDialog(&parts_.body);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog, range] {
        seal(range, dialog->takePassphrase());
    });
    dialog->open();
}

void PassageLocking::seal(const PassageRange& range, SecretBytes passphrase) {
    // Owned by the work and by what follows it on the main thread.
    const auto sealing = std::make_shared<Sealing>(
        plainText(parts_.body.note().content(), range), std::move(passphrase));
    parts_.body.setReadOnly(true);
    Random& random = parts_.environment.random();
    parts_.environment.inBackground(
        [sealing, &random](StoreContext&, const std::stop_token&) {
            sealing->blob =
                SelectiveEncryption::encrypt(sealing->passage, sealing->passphrase.text(), random);
        },
        this,
        [this, range, sealing] {
            parts_.body.setReadOnly(false);
            place(range, sealing->passage, sealing->blob);
        },
        [this](const std::string& sentence) {
            parts_.body.setReadOnly(false);
            showNotice(&parts_.body, sentence);
        });
}

void PassageLocking::place(
    const PassageRange& range, const std::string& passage, const std::string& blob) {
    AttributedText text = parts_.body.note().content();
    // The note may have been shown anew while the key was derived.
    const bool isStillThere = range.end() <= text.text.size() && isLockable(text, range)
                              && plainText(text, range) == passage;
    if (!isStillThere) return showNotice(&parts_.body, PassageError::notLockable().what());
    lockRange(text, range, blob);
    replaceContent(parts_.body, text, static_cast<int>(range.start));
    if (!parts_.save()) return;
    removeCopies(passage);
}

void PassageLocking::removeCopies(const std::string& passage) {
    CDNote* const note = parts_.open.note();
    if (note == nullptr) return;
    auto copies = PassageService::copiesOf(*note, passage);
    QString remark;
    if (copies.isInNote) {
        remark = "The text still stands in the title of the note, or elsewhere in its body. ";
    }
    if (copies.canBeRemoved()) {
        const auto answer = QMessageBox::question(
            &parts_.body,
            "Lock Selection",
            "Earlier versions of this note still contain this text. Remove them?",
            QMessageBox::Yes | QMessageBox::No,
            QMessageBox::Yes);
        if (answer == QMessageBox::Yes) {
            PassageService::remove(parts_.environment.context(), *note, copies);
            if (!parts_.environment.save(&parts_.body)) return;
        } else {
            remark += "Earlier versions of this note still hold the text. ";
        }
    }
    forgetDeleted(remark);
}

void PassageLocking::forgetDeleted(const QString& remark) {
    struct Result {
        bool isJournalEmpty = false;
        bool isIndexClean = false;
    };
    // Owned by the work and by what follows it on the main thread.
    const auto result = std::make_shared<Result>();
    AppEnvironment& environment = parts_.environment;
    SearchCoordinator& search = environment.search();
    const auto tell = [this, remark, result] {
        QString text = remark;
        if (!result->isJournalEmpty) {
            text += "Another program is using the library. Its journal may hold the text until "
                    "that program is closed. ";
        }
        if (!result->isIndexClean) text += "The search index may still hold the text. ";
        text += "Backups, exports and what a sync service keeps are older copies: they may still "
                "hold the text.";
        parts_.notice.tell(text);
    };
    environment.inBackground(
        [result, &environment, &search](StoreContext&, const std::stop_token& stop) {
            result->isJournalEmpty = environment.store().emptyJournal();
            result->isIndexClean = !search.isOn() || search.forgetDeleted({.stop = stop});
        },
        this,
        tell,
        [tell](const std::string&) { tell(); });
}

void PassageLocking::unlock(int position) {
    const NoteObject object = parts_.body.objectAt(position);
    if (object.kind != NoteObject::Kind::locked) return;
    auto* const dialog = new UnlockDialog(&parts_.body);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &UnlockDialog::passphraseGiven, this, [this, dialog, blob = object.source] {
        decrypt(*dialog, blob);
    });
    connect(dialog, &UnlockDialog::removalWanted, this, [this, dialog, position] {
        removeLock(*dialog, position);
    });
    dialog->open();
}

void PassageLocking::decrypt(UnlockDialog& dialog, const std::string& blob) {
    // Owned by the work and by what follows it on the main thread.
    const auto opening = std::make_shared<Opening>();
    opening->blob = blob;
    opening->passphrase = dialog.takePassphrase();
    dialog.setWaiting(true);
    parts_.environment.inBackground(
        [opening](StoreContext&, const std::stop_token&) {
            opening->text = SelectiveEncryption::decrypt(opening->blob, opening->passphrase.text());
        },
        &dialog,
        [&dialog, opening] {
            dialog.setWaiting(false);
            dialog.showText(std::move(opening->text));
        },
        [&dialog](const std::string& sentence) {
            dialog.setWaiting(false);
            dialog.showError(sentence);
        });
}

void PassageLocking::removeLock(UnlockDialog& dialog, int position) {
    const auto answer = QMessageBox::warning(
        &dialog,
        "Remove Encryption",
        "Removing encryption permanently replaces this block with plain, editable text. This "
        "cannot be undone.",
        QMessageBox::Ok | QMessageBox::Cancel,
        QMessageBox::Cancel);
    const bool isStillThere = parts_.body.objectAt(position).kind == NoteObject::Kind::locked;
    if (answer != QMessageBox::Ok || !isStillThere || parts_.body.isReadOnly()) return;
    NoteDocument& note = parts_.body.note();
    QTextCursor cursor(&note);
    cursor.setPosition(position);
    cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    note.insertParagraphs(cursor, paste::fromLines(dialog.text(), BlockStyle::Kind::paragraph));
    replaceContent(parts_.body, note.content(), position);
    dialog.accept();
    parts_.save();
}

}  // namespace tesserine::app
