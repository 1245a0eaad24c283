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

#include <QAbstractButton>
#include <QMessageBox>
#include <QPointer>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>

#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

constexpr const char* changedSentence =
    "The note was changed meanwhile, so nothing was locked. Select the text again.";

/// What goes from one thread to another; each side has its part of it at its own time.
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

/// A passage on its way to a locked block; each thread has its part of it at its own time.
struct PassageLocking::Sealing {
    Uuid note;
    PassageRange range;
    std::string passage;
    SecretBytes passphrase;
    std::string blob;

    Sealing(const Uuid& id, const PassageRange& place, std::string text)
        : note(id), range(place), passage(std::move(text)) {}
    Sealing(const Sealing&) = delete;
    Sealing& operator=(const Sealing&) = delete;
    ~Sealing() { wipe(passage); }
};

PassageLocking::PassageLocking(Parts parts, QObject* parent)
    : QObject(parent), parts_(std::move(parts)) {}

void PassageLocking::lockSelection() {
    const PassageRange range = selectionOf(parts_.body);
    const AttributedText text = parts_.body.note().content();
    if (!parts_.open.id() || parts_.body.isReadOnly() || !isLockable(text, range)) {
        return showNotice(&parts_.body, PassageError::notLockable().what());
    }
    // Owned by the dialog, by the work and by what follows it on the main thread.
    const auto sealing =
        std::make_shared<Sealing>(*parts_.open.id(), range, plainText(text, range));
    auto* const dialog = new LockDialog(&parts_.body);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog, sealing] {
        sealing->passphrase = dialog->takePassphrase();
        seal(sealing);
    });
    dialog->open();
}

void PassageLocking::seal(const std::shared_ptr<Sealing>& sealing) {
    // The note may have been shown anew while the passphrase was typed.
    if (!isStillThere(*sealing)) return showNotice(&parts_.body, changedSentence);
    parts_.body.setReadOnly(true);
    Random& random = parts_.environment.random();
    parts_.environment.inBackground(
        [sealing, &random](StoreContext&, const std::stop_token&) {
            sealing->blob =
                SelectiveEncryption::encrypt(sealing->passage, sealing->passphrase.text(), random);
        },
        this,
        [this, sealing] {
            allowTyping(*sealing);
            place(*sealing);
        },
        [this, sealing](const std::string& sentence) {
            allowTyping(*sealing);
            showNotice(&parts_.body, sentence);
        });
}

/// The keys wait for no note but the one that is being locked, and none in the trash gets them.
void PassageLocking::allowTyping(const Sealing& sealing) {
    const CDNote* const note = parts_.open.note();
    if (note == nullptr || parts_.open.id() != sealing.note) return;
    parts_.body.setReadOnly(note->trashedAt.get().has_value());
}

bool PassageLocking::isStillThere(const Sealing& sealing) const {
    if (parts_.open.id() != sealing.note || parts_.body.isReadOnly()) return false;
    const AttributedText text = parts_.body.note().content();
    return sealing.range.end() <= text.text.size() && isLockable(text, sealing.range)
           && plainText(text, sealing.range) == sealing.passage;
}

void PassageLocking::place(const Sealing& sealing) {
    // Another note may be shown, or this one anew, since the key began to be derived.
    if (!isStillThere(sealing)) return showNotice(&parts_.body, changedSentence);
    AttributedText text = parts_.body.note().content();
    lockRange(text, sealing.range, sealing.blob);
    const std::size_t block = text.text.find(u'\uFFFC', sealing.range.start);
    replaceContent(parts_.body, text, static_cast<int>(block) + 1);  // one goes on behind it
    if (!saveForGood()) return;
    removeCopies(sealing);
}

void PassageLocking::removeCopies(const Sealing& sealing) {
    const CDNote* const note = parts_.open.note();
    if (note == nullptr) return;
    const auto copies = PassageService::copiesOf(*note, sealing.passage);
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
        // Others may have changed the note meanwhile.
        StoreContext& context = parts_.environment.context();
        CDNote* const present = parts_.environment.notes().findNote(context, sealing.note);
        if (answer == QMessageBox::Yes && present != nullptr) {
            PassageService::remove(
                context, *present, PassageService::copiesOf(*present, sealing.passage));
            if (!parts_.environment.save(&parts_.body)) return;
        } else if (present != nullptr) {
            remark += "Earlier versions of this note still hold the text. ";
        }
    }
    forgetDeleted(sealing.note, remark);
}

void PassageLocking::forgetDeleted(const Uuid& id, const QString& remark) {
    struct Result {
        bool isJournalEmpty = false;
        bool isIndexClean = false;
    };
    // Owned by the work and by what follows it on the main thread.
    const auto result = std::make_shared<Result>();
    AppEnvironment& environment = parts_.environment;
    SearchCoordinator& search = environment.search();
    const auto tell = [this, id, remark, result] {
        QString text = remark;
        if (!result->isJournalEmpty) {
            text += "Another program is using the library. Its journal may hold the text until "
                    "that program is closed. ";
        }
        if (!result->isIndexClean) text += "The search index may still hold the text. ";
        text += "Backups, exports and what a sync service keeps are older copies: they may still "
                "hold the text.";
        if (parts_.open.id() == id) return parts_.notice.tell(text);
        showNotice(&parts_.body, text.toStdString());
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
    connect(
        dialog, &UnlockDialog::removalWanted, this, [this, dialog, position, blob = object.source] {
            askToRemoveLock(*dialog, position, blob);
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

/// The box is not waited for: another program may take the note away, and the dialog with it.
void PassageLocking::askToRemoveLock(UnlockDialog& dialog, int position, const std::string& blob) {
    auto* const box = new QMessageBox(
        QMessageBox::Warning,
        "Remove Encryption",
        "Removing encryption permanently replaces this block with plain, editable text. This "
        "cannot be undone.",
        QMessageBox::Ok | QMessageBox::Cancel,
        &dialog);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    connect(
        box->button(QMessageBox::Ok),
        &QAbstractButton::clicked,
        this,
        [this, &dialog, position, blob] { removeLock(dialog, position, blob); });
    box->open();
}

void PassageLocking::removeLock(UnlockDialog& dialog, int position, const std::string& blob) {
    // The note may have been shown anew, with another passage in this place.
    const NoteObject& object = parts_.body.objectAt(position);
    const bool isStillThere = object.kind == NoteObject::Kind::locked && object.source == blob;
    if (!isStillThere || parts_.body.isReadOnly()) {
        return showNotice(&dialog, "The note was changed meanwhile. Open the passage there again.");
    }
    NoteDocument& note = parts_.body.note();
    QTextCursor cursor(&note);
    cursor.setPosition(position);
    cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    note.insertParagraphs(cursor, paste::fromLines(dialog.text(), BlockStyle::Kind::paragraph));
    replaceContent(parts_.body, note.content(), position);
    dialog.accept();
    saveForGood();
}

/// What is saved now cannot be undone, not even after the note was left.
bool PassageLocking::saveForGood() {
    const bool isSaved = parts_.save();
    parts_.forgetUndo();
    return isSaved;
}

}  // namespace tesserine::app
