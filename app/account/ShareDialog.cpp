#include "app/account/ShareDialog.h"

#include "app/look/LongWords.h"
#include "app/look/PageParts.h"
#include "app/state/AppEnvironment.h"
#include "core/model/NoteEntities.h"
#include "sync/SyncService.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr int usualWidth = 460;

QPushButton* makeButton(const QString& title, const char* objectName, QWidget* parent) {
    auto* const button = new QPushButton(title, parent);
    button->setObjectName(objectName);
    button->setAccessibleName(title);
    button->setAutoDefault(false);
    return button;
}

QString wordsFor(bool isShared, bool isLinkShown) {
    if (isLinkShown) {
        return ShareDialog::tr(
            "Everybody who has this link can read the note in a browser, as it was last synced. "
            "Nobody can change it.");
    }
    if (isShared) {
        return ShareDialog::tr(
            "This note is shared. Its link was shown when it was made; a new one takes its place.");
    }
    return ShareDialog::tr(
        "This note is not shared. With a link, everybody who has it can read the note in a "
        "browser, and nobody can change it.");
}

}  // namespace

ShareDialog::ShareDialog(AppEnvironment& environment, const Uuid& note, QWidget* parent)
    : QDialog(parent),
      environment_(environment),
      note_(note),
      state_(makeHint({}, this)),
      link_(new QLineEdit(this)),
      copy_(makeButton(tr("Copy Link"), "copyLink", this)),
      make_(makeMainButton(tr("Create Link"), this)),
      stop_(makeButton(tr("Stop Sharing"), "stopSharing", this)),
      job_(environment, Job::WhenLeft::goesOn) {
    const CDNote* const found = environment.context().find<CDNote>(note);
    build(found == nullptr ? QString() : QString::fromStdString(found->title.valueOr("")));
    connect(&job_, &Job::failed, this, &ShareDialog::fail);
    connect(&environment, &AppEnvironment::libraryChanged, this, &ShareDialog::closeWithItsNote);
    ask([note](SyncClient& client, const std::stop_token& stop) {
        return Answer{client.shareStatus(note, stop).shared};
    });
}

void ShareDialog::build(const QString& title) {
    setObjectName("shareNote");
    setWindowTitle(tr("Share Note"));
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedWidth(usualWidth);
    link_->setObjectName("shareLink");
    link_->setAccessibleName(tr("Link to the note"));
    link_->setReadOnly(true);
    make_->setObjectName("createLink");
    make_->setAccessibleName(make_->text());
    state_->setObjectName("shareState");

    auto* const row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(link_, 1);
    row->addWidget(copy_);
    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(space::small);
    buttons->addWidget(stop_);
    buttons->addStretch(1);
    QPushButton* const close = makeButton(tr("Close"), "closeShare", this);
    buttons->addWidget(close);
    buttons->addWidget(make_);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::huge, space::huge, space::huge, space::huge);
    column->setSpacing(space::medium);
    const QString heading = title.isEmpty() ? tr("Untitled") : withBreaks(title);
    column->addWidget(makeText(heading, TextRole::heading, this));
    column->addWidget(state_);
    column->addLayout(row);
    column->addSpacing(space::small);
    column->addLayout(buttons);

    connect(make_, &QPushButton::clicked, this, &ShareDialog::makeLink);
    connect(stop_, &QPushButton::clicked, this, &ShareDialog::stopSharing);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    connect(copy_, &QPushButton::clicked, this, [this] {
        QGuiApplication::clipboard()->setText(link_->text());
    });
}

void ShareDialog::ask(Question question) {
    SyncService* const service = environment_.sync();
    if (service == nullptr || job_.isRunning()) return;
    setTone(*state_, Tone::secondary);
    state_->setText(tr("Asking the service…"));
    for (QWidget* control : std::initializer_list<QWidget*>{link_, copy_, make_, stop_}) {
        control->hide();
    }
    const auto answer = std::make_shared<Answer>();
    job_.start(
        [client = &service->client(), question = std::move(question), answer](
            const Job::Given& given) { *answer = question(*client, given.stop); },
        [this, answer] { showAnswer(*answer); });
}

void ShareDialog::showAnswer(const Answer& answer) {
    isShared_ = answer.isShared;
    state_->setText(wordsFor(answer.isShared, !answer.url.isEmpty()));
    link_->setText(answer.url);
    link_->setVisible(!answer.url.isEmpty());
    copy_->setVisible(!answer.url.isEmpty());
    stop_->setVisible(answer.isShared);
    make_->setVisible(answer.url.isEmpty());
    make_->setText(answer.isShared ? tr("New Link") : tr("Create Link"));
    make_->setAccessibleName(make_->text());
    link_->end(false);
    link_->home(true);  // selected, and to be read from its beginning
    fitHeight();
}

/// As high as its texts in several lines are now.
void ShareDialog::fitHeight() { setFixedHeight(layout()->totalHeightForWidth(width())); }

void ShareDialog::fail(const QString& sentence) {
    setTone(*state_, Tone::danger);
    state_->setText(sentence);
    stop_->setVisible(isShared_);
    make_->setVisible(true);
    fitHeight();
}

/// A note in the trash is shown to nobody.
void ShareDialog::closeWithItsNote() {
    const CDNote* const note = environment_.context().find<CDNote>(note_);
    if (note == nullptr || note->trashedAt.get()) close();
}

void ShareDialog::makeLink() {
    ask([note = note_](SyncClient& client, const std::stop_token& stop) {
        return Answer{true, QString::fromStdString(client.createShare(note, stop).url)};
    });
}

void ShareDialog::stopSharing() {
    ask([note = note_](SyncClient& client, const std::stop_token& stop) {
        client.revokeShare(note, stop);
        return Answer{};
    });
}

}  // namespace tesserine::app
