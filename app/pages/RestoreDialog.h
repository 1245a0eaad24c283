#pragma once

#include "app/state/AppEnvironment.h"
#include "core/store/LibraryBackup.h"

#include <QDialog>

#include <filesystem>
#include <functional>
#include <thread>

class QLabel;
class QListWidget;
class QPushButton;

namespace tesserine::app {

/// Puts a backup in the place of a library that cannot be opened: which there are, what is in them,
/// and what will happen. Accepted when one stands there. Needs no open library; what takes long
/// runs beside the window.
class RestoreDialog final : public QDialog {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RestoreDialog)

public:
    explicit RestoreDialog(const AppSetting& setting, QWidget* parent = nullptr);
    /// Waits for a restore that runs.
    ~RestoreDialog() override;

private:
    /// Runs beside the window; returns what is to be done here afterwards.
    using Work = std::function<std::function<void()>()>;
    void beside(const QString& doing, Work work);
    void findBackups();
    void add(const LibraryBackup& backup, std::optional<std::size_t> noteCount);
    void chooseFolder();
    void restore();
    void fail(const QString& sentence);
    void showState();
    void reject() override;

    const LibraryBackups backups_;
    const Calendar calendar_;
    QListWidget* const list_;
    QLabel* const state_;
    QPushButton* const other_;
    QPushButton* const restore_;
    bool isBusy_ = false;
    std::jthread worker_;  // the last: it ends before the rest goes
};

}  // namespace tesserine::app
