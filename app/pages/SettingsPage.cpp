#include "app/pages/SettingsPage.h"

#include "app/look/Icon.h"
#include "app/pages/ExchangeSettings.h"
#include "app/pages/GeneralSettings.h"
#include "app/pages/PageParts.h"
#include "app/pages/SearchSettings.h"
#include "app/pages/StorageSettings.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QScrollArea>
#include <QStackedWidget>

namespace tesserine::app {
namespace {

constexpr int listWidth = 190;
constexpr int widestForm = 720;

QScrollArea* scrolling(SettingsForm* form) {
    form->setMaximumWidth(widestForm);
    auto* const area = new QScrollArea;
    area->setWidget(form);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->viewport()->setBackgroundRole(QPalette::Base);
    form->setBackgroundRole(QPalette::Base);
    form->setAutoFillBackground(true);
    return area;
}

}  // namespace

SettingsPage::SettingsPage(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent), areas_(new QListWidget(this)), pages_(new QStackedWidget(this)) {
    setObjectName("settingsPage");
    areas_->setObjectName("settingsAreas");
    areas_->setAccessibleName(tr("Areas of settings"));
    areas_->setFrameShape(QFrame::NoFrame);
    areas_->setFixedWidth(listWidth);
    areas_->setIconSize(QSize(20, 20));
    areas_->setSpacing(space::hair);
    areas_->viewport()->setAutoFillBackground(false);

    auto* const general = new GeneralSettings(environment, this);
    auto* const exchange = new ExchangeSettings(environment, this);
    connect(general, &GeneralSettings::keysAsked, this, &SettingsPage::keysAsked);
    connect(exchange, &ExchangeSettings::importAsked, this, &SettingsPage::importAsked);
    connect(exchange, &ExchangeSettings::exportAsked, this, &SettingsPage::exportAsked);
    add("settings", tr("General"), general);
    add("search", tr("Search"), new SearchSettings(environment, this));
    add("library", tr("Storage"), new StorageSettings(environment, this));
    add("import", tr("Import & Export"), exchange);

    auto* const side = new QVBoxLayout;
    side->setContentsMargins(space::small, space::large, space::small, space::small);
    side->addWidget(areas_);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addLayout(side);
    row->addWidget(pages_, 1);
    connect(areas_, &QListWidget::currentRowChanged, pages_, &QStackedWidget::setCurrentIndex);
    show(Area::general);
}

void SettingsPage::add(const QString& icon, const QString& title, SettingsForm* form) {
    auto* const item = new QListWidgetItem(app::icon(icon), title, areas_);
    item->setSizeHint(QSize(listWidth - 2 * space::small, 34));
    pages_->addWidget(scrolling(form));
    connect(form, &SettingsForm::changed, this, &SettingsPage::changed);
}

void SettingsPage::show(Area area) { areas_->setCurrentRow(static_cast<int>(area)); }

}  // namespace tesserine::app
