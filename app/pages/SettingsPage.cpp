#include "app/pages/SettingsPage.h"

#include "app/look/Icon.h"
#include "app/look/PageParts.h"
#include "app/pages/ExchangeSettings.h"
#include "app/pages/GeneralSettings.h"
#include "app/pages/SearchSettings.h"
#include "app/pages/StorageSettings.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QScrollArea>
#include <QStackedWidget>

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int listWidth = 190;
constexpr int widestForm = 720;

constexpr std::array<const char*, 8> order = {
    "general", "editor", "search", "storage", "sync", "assistant", "exchange", "updates"};

/// Its place in the order; an unknown area comes last.
auto placeOf(const QString& id) {
    return std::ranges::find_if(order, [&](const char* known) { return id == known; })
           - order.begin();
}

QScrollArea* scrolling(QWidget* form) {
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
    : QWidget(parent), list_(new QListWidget(this)), pages_(new QStackedWidget(this)) {
    setObjectName("settingsPage");
    list_->setObjectName("settingsAreas");
    list_->setAccessibleName(tr("Areas of settings"));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setFixedWidth(listWidth);
    list_->setIconSize(QSize(20, 20));
    list_->setSpacing(space::hair);
    list_->viewport()->setAutoFillBackground(false);

    auto* const side = new QVBoxLayout;
    side->setContentsMargins(space::small, space::large, space::small, space::small);
    side->addWidget(list_);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addLayout(side);
    row->addWidget(pages_, 1);
    addOwnPages(environment);
    connect(list_, &QListWidget::currentRowChanged, this, &SettingsPage::showArea);
    list_->setCurrentRow(0);
}

void SettingsPage::addOwnPages(AppEnvironment& environment) {
    addPage("general", tr("General"), "settings", [this, &environment](QWidget* parent) {
        auto* const general = new GeneralSettings(environment, parent);
        connect(general, &GeneralSettings::keysAsked, this, &SettingsPage::keysAsked);
        return general;
    });
    addPage("search", tr("Search"), "search", [&environment](QWidget* parent) {
        return new SearchSettings(environment, parent);
    });
    addPage("storage", tr("Storage"), "library", [&environment](QWidget* parent) {
        return new StorageSettings(environment, parent);
    });
    addPage("exchange", tr("Import & Export"), "import", [this, &environment](QWidget* parent) {
        auto* const exchange = new ExchangeSettings(environment, parent);
        connect(exchange, &ExchangeSettings::importAsked, this, &SettingsPage::importAsked);
        connect(exchange, &ExchangeSettings::exportAsked, this, &SettingsPage::exportAsked);
        return exchange;
    });
}

void SettingsPage::addPage(
    const QString& id, const QString& title, const QString& icon, Make make) {
    const auto after = std::ranges::upper_bound(
        areas_, placeOf(id), {}, [](const Area& area) { return placeOf(area.id); });
    auto* const item = new QListWidgetItem(app::icon(icon), title);
    item->setSizeHint(QSize(listWidth - 2 * space::small, 34));
    const auto row = static_cast<int>(after - areas_.begin());
    areas_.insert(after, {.id = id, .make = std::move(make)});
    list_->insertItem(row, item);
}

void SettingsPage::showPage(const QString& id) {
    const auto found = std::ranges::find(areas_, id, &Area::id);
    if (found != areas_.end()) list_->setCurrentRow(static_cast<int>(found - areas_.begin()));
}

void SettingsPage::showArea(int row) {
    if (row < 0) return;
    Area& area = areas_[static_cast<std::size_t>(row)];
    if (area.shown == nullptr) {
        QWidget* const made = area.make(pages_);
        if (const auto* form = qobject_cast<SettingsForm*>(made)) {
            connect(form, &SettingsForm::changed, this, &SettingsPage::changed);
        }
        area.shown = scrolling(made);
        pages_->addWidget(area.shown);
    }
    pages_->setCurrentWidget(area.shown);
}

}  // namespace tesserine::app
