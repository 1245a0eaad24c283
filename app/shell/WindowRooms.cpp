#include "app/shell/WindowRooms.h"

#include "app/account/ShareDialog.h"
#include "app/account/SyncSettings.h"
#include "app/account/SyncStatus.h"
#include "app/assistant/AskPanel.h"
#include "app/assistant/AssistantCommands.h"
#include "app/assistant/AssistantSettings.h"
#include "app/assistant/UpdateNotice.h"
#include "app/assistant/UpdateSettings.h"
#include "app/commands/Commands.h"
#include "app/editor/EditorSettings.h"
#include "app/editor/NoteEditor.h"
#include "app/look/Notice.h"
#include "app/pages/SettingsPage.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"
#include "app/state/AppEnvironment.h"
#include "app/state/SyncControl.h"

namespace tesserine::app {
namespace {

Place settingsArea(const char* area) { return {.kind = Place::Kind::settings, .text = area}; }

void addAccount(MainWindow& window, Commands& commands, AppEnvironment& environment) {
    auto* const status = new SyncStatus(environment, &window);
    window.setStatusStrip(status);
    const auto showSettings = [&window] { window.go(settingsArea("sync")); };
    QObject::connect(status, &SyncStatus::settingsWanted, &window, showSettings);
    commands.on("note.share", &window, [&window, &environment, showSettings] {
        if (!environment.syncControl().state().account) return showSettings();
        if (!window.save()) return;
        const auto notes = window.chosenNotes();
        if (notes.empty()) return showNotice(&window, "Open a note first.");
        (new ShareDialog(environment, notes.front(), &window))->open();
    });
}

void addAssistant(MainWindow& window, Commands& commands, AppEnvironment& environment) {
    auto* const panel = new AskPanel(environment, &window);
    panel->hide();
    window.setPanel(panel);
    QObject::connect(
        panel,
        &AskPanel::citationChosen,
        &window,
        [&window](const Uuid& note, const QString& words) {
            window.go({Place::Kind::note, note});
            const bool isThere = window.notes().openedNote() == note;
            if (isThere && !words.isEmpty()) window.notes().editor().showWords(words);
        });
    QObject::connect(panel, &AskPanel::settingsWanted, &window, [&window] {
        window.go(settingsArea("assistant"));
    });
    QObject::connect(panel, &AskPanel::closed, &window, [&window, panel] {
        panel->hide();
        window.notes().setFocus();
    });
    handleAssistantCommands(
        environment,
        commands,
        {.window = &window,
         .panel = panel,
         .save = [&window] { return window.save(); },
         .note = [&window] { return window.notes().openedNote(); }});
}

}  // namespace

void addRooms(MainWindow& window, Commands& commands, AppEnvironment& environment) {
    addAccount(window, commands, environment);
    addAssistant(window, commands, environment);
    auto* const updates = new UpdateNotice(environment, &window);
    window.setNoticeLine(updates);
    commands.on("help.updates", updates, [updates] { updates->check(); });
}

void addRoomSettings(SettingsPage& page, AppEnvironment& environment) {
    const auto from = [&environment](QWidget* (*make)(AppEnvironment&, QWidget*)) {
        return [&environment, make](QWidget* parent) { return make(environment, parent); };
    };
    page.addPage("editor", "Editor", "pencil", from(makeEditorSettings));
    page.addPage("sync", "Sync", "sync", from(makeSyncSettings));
    page.addPage("assistant", "Assistant", "sparkle", from(makeAssistantSettings));
    page.addPage("updates", "Updates", "info", from(makeUpdateSettings));
}

}  // namespace tesserine::app
