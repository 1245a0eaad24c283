#include "app/editor/NoteEditor.h"

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/ConflictResolution.h"
#include "app/editor/EditorFooter.h"
#include "app/editor/EditorToolBar.h"
#include "app/editor/FindBar.h"
#include "app/editor/FormatCommands.h"
#include "app/editor/LinkCommands.h"
#include "app/editor/LinkCompletion.h"
#include "app/editor/ListDrag.h"
#include "app/editor/NoteHeader.h"
#include "app/editor/NoteObject.h"
#include "app/editor/NoteSaver.h"
#include "app/editor/NoticeBar.h"
#include "app/editor/PassageLocking.h"
#include "app/editor/Paster.h"
#include "app/editor/Printing.h"
#include "app/editor/ReminderButton.h"
#include "app/editor/SidePanel.h"
#include "app/editor/SpellChecker.h"
#include "app/editor/SpellingMarks.h"
#include "app/editor/TagsField.h"
#include "app/editor/WordMarks.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/state/Place.h"
#include "base/Files.h"

#include <QAction>
#include <QDropEvent>
#include <QEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPrintDialog>
#include <QPrinter>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>

namespace tesserine::app {
NoteEditor::NoteEditor(AppEnvironment& environment, Commands& commands, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      commands_(commands),
      open_(environment.context(), environment.notes(), environment.clock()),
      pictures_(environment),
      reading_(*this) {
    setObjectName("noteEditor");
    build();
    connectParts();
    handleCommands();
    isDark_ = Theme::colors().isDark;
    setEnabled(false);
}

NoteEditor::~NoteEditor() {
    // Children that go later lose the focus and tell.
    title_->disconnect(this);
    body_->disconnect(this);
    // Widgets go while what they draw from is still there.
    qDeleteAll(findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
}

/// Settings are changed elsewhere; the editor is shown, or its window active, again afterwards.
bool NoteEditor::event(QEvent* event) {
    const bool isBack = event->type() == QEvent::Show || event->type() == QEvent::WindowActivate;
    if (isBack) followPreferences();
    return QWidget::event(event);
}

void NoteEditor::followPreferences() {
    const EditorPreferences wanted = EditorPreferences::read(environment_.preferences());
    const bool isOther = wanted.dictionary != preferences_.dictionary;
    if (wanted == preferences_) return;
    preferences_ = wanted;
    body_->setZoomStep(wanted.zoomStep);
    body_->setTextFont(wanted.fontLike(Theme::font(TextRole::body)));
    body_->setTypingShortcuts(wanted.hasShortcuts);
    footer_->showWordCount(wanted.showsWordCount);
    if (isOther) readDictionary();
}

/// Reading one takes as long as several frames, so another thread does it.
void NoteEditor::readDictionary() {
    spellingMarks_->setChecker(nullptr);
    reading_.giveUp();
    if (preferences_.dictionary == EditorPreferences::off) return;
    const bool isUsual = preferences_.dictionary == EditorPreferences::usual;
    const std::string language = isUsual ? environment_.setting().locale : preferences_.dictionary;
    reading_.begin(
        [language] {
            return std::make_unique<SpellChecker>(language, SpellChecker::usualFolders());
        },
        [this] {
            spelling_ = reading_.take();
            spellingMarks_->setChecker(spelling_.get());
        });
}

void NoteEditor::zoom(int step) {
    body_->setZoomStep(step);
    preferences_.zoomStep = body_->zoomStep();
    try {
        Preferences& preferences = environment_.preferences();
        if (body_->zoomStep() == 0) return preferences.remove(EditorPreferences::zoomKey);
        preferences.set(EditorPreferences::zoomKey, body_->zoomStep());
    } catch (const FileError& error) {
        environment_.log().warning(std::string("text size: ") + error.what());
    }
}

void NoteEditor::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    const bool isNewTheme = event->type() == QEvent::PaletteChange && body_ != nullptr;
    if (!isNewTheme || isDark_ == Theme::colors().isDark) return;
    isDark_ = Theme::colors().isDark;
    // Laying out anew counts as a change of the document.
    const QScopedValueRollback showing(isShowing_, true);
    body_->followTheme();
}

void NoteEditor::build() {
    setAcceptDrops(true);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    toolBar_ = new EditorToolBar(commands_, this);
    notice_ = new NoticeBar(this);
    header_ = new NoteHeader(environment_, open_, this);
    title_ = &header_->title();
    body_ = new BodyEdit(pictures_, this);
    saver_ = new NoteSaver(
        {.environment = environment_, .open = open_, .title = *title_, .body = *body_}, this);
    notice_->setFocusProxy(body_);
    find_ = new FindBar(commands_, *body_, this);
    footer_ = new EditorFooter(*body_, this);
    makeHelpers();
    layOut();
}

/// What works on the body and what it stands for.
void NoteEditor::makeHelpers() {
    const auto saveNow = [this] {
        markChanged();
        return save();
    };
    completion_ = new LinkCompletion(environment_, open_, *body_);
    spellingMarks_ = new SpellingMarks(*body_);
    wordMarks_ = new WordMarks(*body_);
    paster_ = new Paster(
        {.environment = environment_, .open = open_, .body = *body_, .notice = *notice_}, this);
    locking_ = new PassageLocking(
        {.environment = environment_,
         .open = open_,
         .body = *body_,
         .notice = *notice_,
         .save = saveNow,
         .forgetUndo = [this] { undo_.forget(); }},
        this);
    panel_ = new SidePanel(
        commands_,
        {.environment = environment_,
         .open = open_,
         .body = *body_,
         .pictures = pictures_,
         .save = saveNow,
         .saveStep = [this] { return saveStep(); }},
        this);
    conflict_ = new ConflictResolution(
        {.environment = environment_, .open = open_, .pictures = pictures_, .save = saveNow}, this);
}

void NoteEditor::layOut() {
    auto* const column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(toolBar_);
    column->addWidget(notice_);
    column->addWidget(header_);
    column->addWidget(body_, 1);
    column->addWidget(find_);
    column->addWidget(footer_);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addLayout(column, 1);
    row->addWidget(panel_);
}

void NoteEditor::handleCommands() {
    new FormatCommands(commands_, *body_, this);
    links_ = new LinkCommands(commands_, *body_, this);
    // Also behind a button such as “Replace All”; fields undo their own words.
    for (const char* const id : {"edit.undo", "edit.redo"}) {
        find_->addAction(&commands_.action(id));
        panel_->addAction(&commands_.action(id));
    }
    commands_.on("edit.pastePlain", this, [this] { paster_->pastePlain(); });
    commands_.on("note.attach", this, [this] { paster_->choose(Paster::Wanted::files); });
    commands_.on("format.image", this, [this] { paster_->choose(Paster::Wanted::pictures); });
    commands_.on("format.noteLink", this, [this] { completion_->begin(); });
    commands_.on("note.lock", this, [this] { locking_->lockSelection(); });
    commands_.on("note.reminder", this, [this] { header_->reminder().ask(); });
    commands_.on("note.print", this, [this] { printNote(); });
    commands_.on("note.pdf", this, [this] { saveAsPDF(); });
    commands_.on("view.zoomIn", this, [this] { zoom(body_->zoomStep() + 1); });
    commands_.on("view.zoomOut", this, [this] { zoom(body_->zoomStep() - 1); });
    commands_.on("view.zoomReset", this, [this] { zoom(0); });
}

void NoteEditor::connectParts() {
    connect(title_, &QLineEdit::textEdited, this, [this](const QString& text) {
        markChanged();
        if (const auto id = open_.id()) emit titleChanged(*id, text);
    });
    connect(title_, &QLineEdit::returnPressed, body_, qOverload<>(&QWidget::setFocus));
    connect(title_, &QLineEdit::editingFinished, this, &NoteEditor::save);
    connect(body_, &QTextEdit::textChanged, this, [this] {
        if (!isShowing_ && !body_->isLoading()) markChanged();
        panel_->refresh();
    });
    connect(body_, &BodyEdit::left, this, &NoteEditor::save);
    connect(saver_, &NoteSaver::saved, this, &NoteEditor::showSaved);
    connect(saver_, &NoteSaver::failed, this, [this](const QString& sentence) {
        failure_ = sentence;
        notice_->tell(sentence, {{"Try Again", [this] { save(); }}});
        footer_->showState("Not saved");
    });
    connect(saver_, &NoteSaver::nothingToSave, footer_, [this] { footer_->showState("Saved"); });
    connect(saver_, &NoteSaver::ended, this, &NoteEditor::followNote);
    connect(body_, &BodyEdit::objectActivated, this, &NoteEditor::openObject);
    connect(body_, &BodyEdit::menuWanted, this, &NoteEditor::fillMenu);
    connect(body_, &BodyEdit::columnChanged, header_, &NoteHeader::setColumn);
    connect(&header_->tags(), &TagsField::tagChosen, this, [this](const Uuid& tag) {
        const Place notes{Place::Kind::tag, tag};
        emit linkActivated(QString::fromStdString(notes.address()));
    });
    connect(&header_->tags(), &TagsField::left, body_, qOverload<>(&QWidget::setFocus));
    connect(panel_, &SidePanel::noteChosen, this, &NoteEditor::noteChosen);
    connect(panel_, &SidePanel::attachmentChosen, this, &NoteEditor::openAttachment);
    connect(conflict_, &ConflictResolution::resolved, this, [this] {
        body_->setFocus();  // the button that was pressed goes
        reload();
    });
    connect(body_, &BodyEdit::linkActivated, this, &NoteEditor::linkActivated);
    connect(&environment_, &AppEnvironment::libraryChanged, this, &NoteEditor::follow);
}

bool NoteEditor::open(const Uuid& id) {
    const auto before = open_.id();
    if (!save()) return false;
    rememberPlace();
    if (!open_.open(id)) return false;
    if (before != id) dropQuestions();
    pictures_.forget();
    setEnabled(true);
    showNote(*open_.note(), {.place = places_[id]});
    return true;
}

bool NoteEditor::close() {
    if (!save()) return false;
    rememberPlace();
    dropQuestions();
    open_.close();
    // Else the keys went to whatever comes next in the window, such as a button.
    if (isAncestorOf(window()->focusWidget()) && parentWidget() != nullptr) {
        parentWidget()->setFocus();
    }
    setEnabled(false);
    const QScopedValueRollback showing(isShowing_, true);
    title_->clear();
    body_->load({});
    header_->refresh();
    panel_->refresh();
    offerCommands();
    return true;
}

void NoteEditor::rememberPlace() {
    if (open_.id()) places_[*open_.id()] = body_->place();
}

std::optional<BodyPlace> NoteEditor::placeIn(const Uuid& id) const {
    if (open_.id() == id) return body_->place();
    const auto kept = places_.find(id);
    return kept == places_.end() ? std::nullopt : std::optional(kept->second);
}

void NoteEditor::editTags() { header_->tags().edit(); }

void NoteEditor::showWords(const QString& words) {
    if (open_.id()) wordMarks_->show(words);
}

bool NoteEditor::save() {
    header_->tags().take();
    return saver_->save();
}

void NoteEditor::showNote(const CDNote& note, BodyView view) {
    const QScopedValueRollback showing(isShowing_, true);
    saver_->forget();
    showTitle();
    body_->load(open_.html(), std::move(view), &undo_.open(*open_.id(), open_.html()));
    footer_->showState({});
    notice_->hide();
    isInConflict_ = false;
    body_->setReadOnly(false);
    showSurroundings(note);
}

/// Who writes in the title goes on there; otherwise the beginning of one that is too long is seen.
void NoteEditor::showTitle() {
    const QString title = QString::fromStdString(open_.title());
    const int place = title_->hasFocus() ? title_->cursorPosition() : 0;
    const bool isWritten = title_->hasFocus() && title_->text() == title;
    if (!isWritten) {
        title_->setText(title);
        title_->setCursorPosition(place);
    }
    title_->setModified(false);
}

/// What belongs to the note beside its words.
void NoteEditor::showSurroundings(const CDNote& note) {
    const bool isInTrash = note.trashedAt.get().has_value();
    if (isInTrash && !body_->isReadOnly()) {
        notice_->tell("This note is in the trash.", {{"Restore", [this] { restore(); }}});
    } else if (!isInTrash && body_->isReadOnly()) {
        notice_->hide();
    }
    title_->setReadOnly(isInTrash);
    body_->setReadOnly(isInTrash);
    header_->tags().setEnabled(!isInTrash);
    offerCommands();
    followConflict(note.hasConflict.valueOr(false));
    header_->refresh();
    panel_->refresh();
}

/// What can be done to the note is offered while it is seen, what would change it unless it is only
/// read.
void NoteEditor::offerCommands() {
    const bool isSeen = isVisible() && open_.id();
    const bool isWritten = isSeen && !title_->isReadOnly();
    toolBar_->setEnabled(isWritten);
    for (const Command& command : commandTable()) {
        if (command.context == CommandContext::note) {
            commands_.action(command.id).setEnabled(isWritten);
        }
    }
    for (const char* const id : {"note.attach", "note.lock", "note.reminder"}) {
        commands_.action(id).setEnabled(isWritten);
    }
    for (const char* const id :
         {"find.open",
          "find.next",
          "find.previous",
          "find.replace",
          "view.outline",
          "view.backlinks",
          "note.versions",
          "note.print",
          "note.pdf"}) {
        commands_.action(id).setEnabled(isSeen);
    }
}

/// Files that are dropped beside the words, such as on the title, are attached all the same.
void NoteEditor::dragEnterEvent(QDragEnterEvent* event) {
    if (isFileDrag(*event->mimeData()) && open_.id() && !body_->isReadOnly()) event->accept();
}

void NoteEditor::dropEvent(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);  // they stay where they are
    event->accept();
    paster_->paste(*event->mimeData());
}

void NoteEditor::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    offerCommands();
}

void NoteEditor::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    offerCommands();
}

void NoteEditor::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    panel_->fit(width());
}

/// Out of the trash.
void NoteEditor::restore() {
    CDNote* const note = open_.note();
    if (note == nullptr) return;
    environment_.notes().restoreFromTrash(*note);
    environment_.save(this);
}

/// What was asked about one note must not be done to the next one, which another program brings
/// into its place by deleting it.
void NoteEditor::dropQuestions() {
    for (QDialog* const dialog : findChildren<QDialog*>()) {
        dialog->done(QDialog::Rejected);
    }
    for (QMenu* const menu : findChildren<QMenu*>()) {
        menu->close();
    }
}

void NoteEditor::markChanged() {
    if (!open_.id()) return;
    saver_->schedule();
    footer_->showState("Editing");
}

void NoteEditor::showSaved(NoteService::EditOutcome outcome) {
    if (outcome == NoteService::EditOutcome::savedWithConflict) followConflict(true);
    undo_.add(
        {.html = open_.html(), .steps = body_->note().availableUndoSteps()},
        body_->note().isRedoAvailable());
    if (notice_->text() == failure_) notice_->hide();
    footer_->showState(saver_->isPending() ? "Editing" : "Saved");
    emit saved(*open_.id());
    // Others wrote the title or the body while only the other one was typed.
    const bool isBehind = open_.state() == OpenNote::State::changedElsewhere;
    if (isBehind && !saver_->isPending()) reload();
}

void NoteEditor::follow(const std::vector<ObjectChange>& changes) {
    const auto concernsNote = [&](const ObjectChange& change) {
        return change.entity == EntityKind::note && change.uuid == open_.id();
    };
    if (std::ranges::any_of(changes, concernsNote)) followNote();
    const bool areTags =
        std::ranges::count(changes, EntityKind::tag, &ObjectChange::entity) > 0;  // their names
    if (areTags) header_->tags().refresh();
    // Files come after their notes, and one by one.
    for (const ObjectChange& change : changes) {
        if (change.entity != EntityKind::attachment || !change.uuid) continue;
        pictures_.lookAgain(*change.uuid);
        panel_->refresh();
    }
}

/// Shows what others made of the note.
void NoteEditor::followNote() {
    // What this window is writing itself is looked at when that has ended.
    if (!open_.id() || saver_->isWriting() || isInStep_) return;
    switch (open_.state()) {
    case OpenNote::State::current: return showSurroundings(*open_.note());
    case OpenNote::State::deleted:
        if (close()) emit noteGone();
        return;
    case OpenNote::State::changedElsewhere: break;
    }
    // What was typed meanwhile becomes a conflict when it is saved.
    if (!saver_->isPending()) reload();
}

/// Shows the note as it is now, and stays where the reader is.
void NoteEditor::reload() {
    BodyView view = body_->view();
    if (!open_.id() || !open_.open(*open_.id())) return;
    showNote(*open_.note(), std::move(view));
    emit titleChanged(*open_.id(), title_->text());
}

/// What the user did to the whole note is undone as what was typed is. Nothing that is typed before
/// or after it belongs to the same step.
bool NoteEditor::saveStep() {
    {
        const QScopedValueRollback inStep(isInStep_, true);
        if (!environment_.save(this)) return false;
    }
    const std::string before = open_.html();
    if (!open_.id() || !open_.open(*open_.id())) return true;
    const QScopedValueRollback showing(isShowing_, true);
    if (!body_->changeTo(open_.html())) {
        reload();
        return true;
    }
    body_->note().setModified(false);
    undo_.open(*open_.id(), before);
    undo_.add({.html = open_.html(), .steps = body_->note().availableUndoSteps()}, false);
    undo_.open(*open_.id(), open_.html());
    saver_->forget();
    showTitle();
    showSurroundings(*open_.note());
    emit titleChanged(*open_.id(), title_->text());
    return true;
}

/// Sync and other programs find conflicts, and settle them, without changing the words shown here.
void NoteEditor::followConflict(bool isInConflict) {
    if (isInConflict == isInConflict_) return;
    isInConflict_ = isInConflict;
    if (!isInConflict) return notice_->hide();
    notice_->tell(
        "This note was changed in two places. The other version is kept on this device.",
        {{"Compare…", [this] { conflict_->compare(); }}});
}

void NoteEditor::printNote() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (!open_.id() || dialog.exec() != QDialog::Accepted) return;
    print({title_->text(), body_->note().html()}, pictures_, printer);
}

void NoteEditor::saveAsPDF() {
    if (!open_.id()) return;
    QString name = title_->text().isEmpty() ? "Note" : title_->text();
    name.replace('/', '-');
    const QString file =
        QFileDialog::getSaveFileName(this, "Save note as PDF", name + ".pdf", "PDF (*.pdf)");
    if (file.isEmpty()) return;
    if (!writePDF({title_->text(), body_->note().html()}, pictures_, file.toStdString())) {
        showNotice(this, "The PDF could not be written.");
    }
}

/// What a click does, for the keyboard.
void NoteEditor::fillMenu(QMenu* menu, int position) {
    QAction* const first = menu->actions().isEmpty() ? nullptr : menu->actions().front();
    const auto add = [&](const QString& title, const std::function<void()>& act) {
        auto* const action = new QAction(title, menu);
        connect(action, &QAction::triggered, this, act);
        menu->insertAction(first, action);
        menu->insertSeparator(first);
    };
    for (const int place : {position, position - 1}) {
        const InlineStyle& style = body_->note().styleAt(place);
        const QString address = QString::fromStdString(std::string(style.link()));
        if (!style.object.empty()) {
            return add("Open", [this, place, object = style.object] {
                // The note may have been shown anew while the menu was open.
                if (body_->note().styleAt(place).object == object) openObject(place);
            });
        }
        if (!address.isEmpty()) {
            return add("Open Link", [this, address] { emit linkActivated(address); });
        }
    }
}

/// Locked passages ask for their passphrase; files are opened by the program for their type.
void NoteEditor::openObject(int position, CellPlace cell) {
    const NoteObject object = body_->objectAt(position);
    if (object.kind == NoteObject::Kind::locked) return locking_->unlock(position);
    if (object.attachment) return openAttachment(*object.attachment);
    if (links_->editTable(position, cell)) return;
    if (!object.source.empty() && !object.source.starts_with("data:")) {
        emit linkActivated(QString::fromStdString(object.source));
    } else if (object.kind == NoteObject::Kind::block && !body_->isReadOnly()) {
        showNotice(
            this, "This is kept as it came. It can be read and moved, but not changed here.");
    }
}

void NoteEditor::openAttachment(const Uuid& id) {
    const CDAttachment* const attachment = environment_.context().find<CDAttachment>(id);
    if (attachment == nullptr) return showNotice(this, "The attachment could not be found.");
    // A copy to look at; the library's own bytes stay as they are.
    const std::filesystem::path folder = environment_.setting().cacheFolder / "Opened" / id.text();
    const std::filesystem::path file = folder / attachment->filename.valueOr("Attachment");
    try {
        std::filesystem::create_directories(folder);
        environment_.attachments().saveToFile(
            *attachment, file, AttachmentService::IfExists::replace);
        emit fileActivated(QString::fromStdString(file.string()));
    } catch (const UserError& error) {
        showNotice(this, error.what());
    } catch (const std::filesystem::filesystem_error&) {
        showNotice(this, "The file could not be written to a temporary folder.");
    }
}

}  // namespace tesserine::app
