#pragma once

#include "base/SecretBytes.h"
#include "base/Uuid.h"
#include "core/body/PassageSelection.h"

#include <QObject>

#include <functional>
#include <memory>
#include <string>

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;
class NoticeBar;
class OpenNote;
class UnlockDialog;

/// Locks the selection of the open note with a passphrase, shows locked passages, and takes locks
/// away for good.
///
/// Keys are derived in the background. After locking, what else held the text is gone as far as
/// this program reaches: earlier versions when the user says so, what could be undone, the search
/// index, the free pages and the journal of the library.
class PassageLocking final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        AppEnvironment& environment;
        OpenNote& open;
        BodyEdit& body;
        NoticeBar& notice;
        std::function<bool()> save;
        std::function<void()> forgetUndo;  ///< of the open note, once it was left
    };
    PassageLocking(Parts parts, QObject* parent);

    /// Asks for a passphrase for the selection.
    void lockSelection();
    /// Asks for the passphrase of the locked passage at a position of the document.
    void unlock(int position);

private:
    /// A passage of a note on its way to a locked block.
    struct Sealing;

    void seal(const std::shared_ptr<Sealing>& sealing);
    void place(const Sealing& sealing);
    bool isStillThere(const Sealing& sealing) const;
    void allowTyping(const Sealing& sealing);
    bool saveForGood();
    void removeCopies(const Sealing& sealing);
    void forgetDeleted(const Uuid& id, const QString& remark);
    void decrypt(UnlockDialog& dialog, const std::string& blob);
    void askToRemoveLock(UnlockDialog& dialog, int position, const std::string& blob);
    void removeLock(UnlockDialog& dialog, int position, const std::string& blob);

    Parts parts_;
};

}  // namespace tesserine::app
