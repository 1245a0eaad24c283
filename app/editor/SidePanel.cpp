#include "app/editor/SidePanel.h"

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/ComparisonView.h"
#include "app/editor/OpenNote.h"
#include "app/editor/PanelList.h"
#include "app/editor/Pictures.h"
#include "app/look/HandKeysOn.h"
#include "app/look/Icon.h"
#include "app/look/IconButton.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "core/body/NoteOutline.h"
#include "core/body/PlainText.h"
#include "core/services/AttachmentReferences.h"
#include "sync/MissingFiles.h"

#include <QButtonGroup>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int narrowest = 160;
constexpr int widest = 260;
constexpr int roomForNote = 300;
constexpr int refreshDelay = 400;  // milliseconds

struct Tab {
    const char* icon;
    const char* name;
};
constexpr Tab tabs[] = {
    {"outline", "Outline"},
    {"backlinks", "Links to this note"},
    {"attachment", "Attachments"},
    {"history", "Versions"},
};

QString reasonOf(const CDNoteRevision& revision) {
    const std::string reason = revision.reason.valueOr("");
    if (reason == "conflict") return "Changed elsewhere";
    if (reason == "autosave") return "While writing";
    if (reason == "preImportReplace") return "Before an import";
    return "Before a change";
}

QString textOf(const Uuid& id) { return QString::fromStdString(id.text()); }
Uuid uuidOf(const QVariant& value) {
    return Uuid::parse(value.toString().toStdString()).value_or(Uuid());
}

}  // namespace

SidePanel::SidePanel(Commands& commands, Parts parts, QWidget* parent)
    : QWidget(parent),
      commands_(commands),
      parts_(std::move(parts)),
      tabs_(new QButtonGroup(this)),
      stack_(new QStackedWidget(this)),
      outline_(
          new PanelList("outline", "Outline", "Headings of this note are listed here.", stack_)),
      backlinks_(new PanelList(
          "backlinks", "Links to this note", "No other note links to this one.", stack_)),
      attachments_(new PanelList(
          "attachments", "Attachments", "Drop files into the note to attach them.", stack_)),
      versions_(new PanelList(
          "versions", "Versions", "Earlier versions are kept here while you write.", stack_)) {
    setObjectName("sidePanel");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window);
    setMinimumWidth(narrowest);
    setMaximumWidth(widest);
    layOut();
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &SidePanel::fill);
    connect(tabs_, &QButtonGroup::idClicked, this, [this](int id) { open(static_cast<Part>(id)); });
    connect(
        outline_, &PanelList::chosen, this, [this](const QVariant& value) { jump(value.toInt()); });
    connect(backlinks_, &PanelList::chosen, this, [this](const QVariant& value) {
        emit noteChosen(uuidOf(value));
    });
    connect(attachments_, &PanelList::chosen, this, [this](const QVariant& value) {
        emit attachmentChosen(uuidOf(value));
    });
    connect(versions_, &PanelList::chosen, this, [this](const QVariant& value) {
        showVersion(uuidOf(value));
    });
    attachments_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(
        attachments_, &QWidget::customContextMenuRequested, this, &SidePanel::showAttachmentMenu);
    commands.on("view.outline", this, [this](bool isOn) { toggle(Part::outline, isOn); });
    commands.on("view.backlinks", this, [this](bool isOn) { toggle(Part::backlinks, isOn); });
    commands.on("note.versions", this, [this] { open(Part::versions); });
    hide();
}

void SidePanel::layOut() {
    auto* const head = new QHBoxLayout;
    head->setContentsMargins(space::small, space::tiny, space::tiny, space::tiny);
    head->setSpacing(space::hair);
    for (const Tab& tab : tabs) {
        auto* const button = new IconButton(tab.icon, tab.name, this);
        button->setCheckable(true);
        tabs_->addButton(button, static_cast<int>(tabs_->buttons().size()));
        head->addWidget(button);
    }
    tabs_->button(0)->setChecked(true);
    head->addStretch(1);
    for (PanelList* const list : {outline_, backlinks_, attachments_, versions_}) {
        stack_->addWidget(list);
    }
    auto* const closing = new IconButton("close", "Close side panel", this);
    connect(closing, &QToolButton::clicked, this, &QWidget::hide);
    head->addWidget(closing);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::tiny);
    column->addLayout(head);
    column->addWidget(stack_, 1);
}

void SidePanel::open(Part part) {
    tabs_->button(static_cast<int>(part))->setChecked(true);
    stack_->setCurrentIndex(static_cast<int>(part));
    show();
    fill();
    stack_->currentWidget()->setFocus();
    tellCommands();
}

void SidePanel::toggle(Part part, bool isOn) {
    if (isOn) return open(part);
    hide();
}

void SidePanel::refresh() {
    if (isVisible()) timer_.start(refreshDelay);
}

void SidePanel::fit(int width) {
    setMaximumWidth(std::clamp(width - roomForNote, narrowest, widest));
}

void SidePanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    fill();
    tellCommands();
}

void SidePanel::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    handKeysOn(*this, parts_.body);
    tellCommands();
}

void SidePanel::tellCommands() {
    commands_.action("view.outline").setChecked(isVisible() && part() == Part::outline);
    commands_.action("view.backlinks").setChecked(isVisible() && part() == Part::backlinks);
}

SidePanel::Part SidePanel::part() const { return static_cast<Part>(stack_->currentIndex()); }

void SidePanel::fill() {
    if (!isVisible()) return;
    switch (part()) {
    case Part::outline: return fillOutline();
    case Part::backlinks: return fillBacklinks();
    case Part::attachments: return fillAttachments();
    case Part::versions: return fillVersions();
    }
}

void SidePanel::fillOutline() {
    if (parts_.body.isLoading()) return refresh();
    const int row = outline_->currentRow();
    outline_->clear();
    for (const OutlineEntry& entry : NoteOutline::entries(parts_.body.note().content())) {
        const QString indent(3LL * (entry.level - 1), ' ');
        outline_->add(
            indent + QString::fromStdString(entry.text), {}, static_cast<int>(entry.location));
    }
    outline_->setCurrentRow(row);
}

/// Looks through the bodies of all notes, so not on this thread.
void SidePanel::fillBacklinks() {
    backlinks_->clear();
    if (!parts_.open.id()) return;
    const Uuid id = *parts_.open.id();
    struct Link {
        Uuid id;
        std::string title;
    };
    // Owned by the work and by what follows it on the main thread.
    const auto links = std::make_shared<std::vector<Link>>();
    const NoteService& notes = parts_.environment.notes();
    parts_.environment.inBackground(
        [links, id, &notes](StoreContext& context, const std::stop_token&) {
            const CDNote* const note = notes.findNote(context, id);
            if (note == nullptr) return;
            for (const CDNote* linking : notes.backlinks(context, *note)) {
                links->push_back(
                    {*linking->id,
                     displayTitle(linking->title.valueOr(""), linking->plainText.valueOr(""))});
            }
        },
        this,
        [this, links, id] {
            if (parts_.open.id() != id) return;
            backlinks_->clear();
            for (const Link& link : *links) {
                backlinks_->add(QString::fromStdString(link.title), {}, textOf(link.id));
            }
        });
}

void SidePanel::fillAttachments() {
    attachments_->clear();
    const CDNote* const note = parts_.open.note();
    if (note == nullptr) return;
    const auto missing = missingFiles(parts_.environment.context(), *note);
    const auto inText = attachmentReferences(note->html.valueOr(""));
    for (const CDAttachment* attachment : parts_.environment.attachments().attachments(*note)) {
        const Uuid id = *attachment->id;
        const QString title = parts_.pictures.fileTitle(id, "Attachment");
        const qsizetype comma = title.lastIndexOf(", ");
        const bool isInText = std::ranges::find(inText, id) != inText.end();
        const auto lack = missing.find(id);
        QString remark =
            lack == missing.end() ? title.mid(comma + 2) : QString::fromStdString(lack->second);
        if (!isInText) remark += ", not in the text";
        attachments_->add(title.left(comma), remark, textOf(id));
    }
}

void SidePanel::fillVersions() {
    versions_->clear();
    const CDNote* const note = parts_.open.note();
    if (note == nullptr) return;
    const AppEnvironment& environment = parts_.environment;
    for (const CDNoteRevision* revision : environment.notes().revisions(*note)) {
        const QString when =
            shownTime(revision->createdAt.valueOr({}), environment.now(), environment.calendar());
        versions_->add(when, reasonOf(*revision), textOf(*revision->id));
    }
}

void SidePanel::jump(int position) {
    QTextCursor cursor(&parts_.body.note());
    cursor.setPosition(std::min(position, parts_.body.note().characterCount() - 1));
    parts_.body.setTextCursor(cursor);
    parts_.body.ensureCursorVisible();
    parts_.body.setFocus();
}

/// Earlier at the left, now at the right.
void SidePanel::showVersion(const Uuid& id) {
    if (!parts_.save()) return;
    AppEnvironment& environment = parts_.environment;
    CDNote* const note = parts_.open.note();
    const CDNoteRevision* const revision = environment.context().find<CDNoteRevision>(id);
    if (note == nullptr || revision == nullptr) return fillVersions();
    auto* const view = new ComparisonView(
        {.heading = "Version of "
                    + shownTime(
                        revision->createdAt.valueOr({}), environment.now(), environment.calendar()),
         .title = QString::fromStdString(revision->title.valueOr("")),
         .html = revision->html.valueOr("")},
        {.heading = "Now",
         .title = QString::fromStdString(note->title.valueOr("")),
         .html = note->html.valueOr("")},
        parts_.pictures,
        this);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->addChoice("Restore This Version", QDialog::Accepted);
    connect(view, &QDialog::accepted, this, [this, id] {
        CDNote* const present = parts_.open.note();
        auto* const chosen = parts_.environment.context().find<CDNoteRevision>(id);
        if (present == nullptr || chosen == nullptr) return;
        parts_.environment.notes().revertTo(parts_.environment.context(), *present, *chosen);
        parts_.saveStep();
        parts_.body.setFocus();
    });
    view->open();
}

void SidePanel::showAttachmentMenu(const QPoint& point) {
    const QListWidgetItem* const item = attachments_->itemAt(point);
    if (item == nullptr) return;
    const Uuid id = uuidOf(item->data(Qt::UserRole));
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon("open"), "Open", this, [this, id] { emit attachmentChosen(id); });
    menu->addAction(icon("export"), "Save As…", this, [this, id] { saveAttachment(id); });
    menu->addAction(icon("trash"), "Delete…", this, [this, id] { askToDeleteAttachment(id); });
    menu->popup(attachments_->mapToGlobal(point));
}

void SidePanel::saveAttachment(const Uuid& id) {
    const CDAttachment* const attachment = parts_.environment.context().find<CDAttachment>(id);
    if (attachment == nullptr) return;
    const QString name = QString::fromStdString(attachment->filename.valueOr("Attachment"));
    const QString file = QFileDialog::getSaveFileName(this, "Save attachment", name);
    if (file.isEmpty()) return;
    // Others may have deleted it while the file was chosen.
    const CDAttachment* const present = parts_.environment.context().find<CDAttachment>(id);
    if (present == nullptr) return showNotice(this, "The attachment could not be found.");
    try {
        const auto integrity = parts_.environment.attachments().saveToFile(
            *present, file.toStdString(), AttachmentService::IfExists::replace);
        if (integrity == AttachmentService::Integrity::damaged) {
            showNotice(this, AttachmentService::damageWarning(*present));
        }
    } catch (const UserError& error) {
        showNotice(this, error.what());
    }
}

void SidePanel::askToDeleteAttachment(const Uuid& id) {
    if (!parts_.save()) return;
    const auto* const attachment = parts_.environment.context().find<CDAttachment>(id);
    if (attachment == nullptr) return;
    const bool isInVersions =
        !parts_.environment.attachments().referringRevisions(*attachment).empty();
    const QString question =
        isInVersions
            ? "Delete this attachment? Earlier versions of the note show it too and will lose it."
            : "Delete this attachment? This cannot be undone.";
    auto* const box = new QMessageBox(
        QMessageBox::Question, "Delete Attachment", question, QMessageBox::Cancel, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    const auto* const deletion = box->addButton("Delete", QMessageBox::DestructiveRole);
    connect(deletion, &QAbstractButton::clicked, this, [this, id] { deleteAttachment(id); });
    box->open();
}

/// Others may have deleted it while the question was shown. The note is shown anew: undo would
/// bring back the place of a file that is gone.
void SidePanel::deleteAttachment(const Uuid& id) {
    auto* const attachment = parts_.environment.context().find<CDAttachment>(id);
    if (attachment == nullptr) return fillAttachments();
    parts_.environment.attachments().deleteAttachment(parts_.environment.context(), *attachment);
    parts_.environment.save(this);
    fillAttachments();
}

}  // namespace tesserine::app
