#include "app/assistant/AssistantForm.h"

#include "ai/AICredentialStore.h"
#include "ai/AIExclusions.h"
#include "ai/ProviderAddress.h"
#include "app/assistant/NameList.h"
#include "app/assistant/WhatIsSent.h"
#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "app/state/AppEnvironment.h"
#include "base/Product.h"
#include "core/services/Tree.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <memory>

namespace tesserine::app {
namespace {

using Backend = AISettings::Backend;

constexpr Backend backends[] = {Backend::relay, Backend::ownKey};
constexpr int fieldWidth = 190;
constexpr const char* unreachable = "The desktop's keyring cannot be reached.";

std::string key(std::string_view preference) { return std::string(preference); }

QLineEdit* makeField(const char* name, QWidget* parent) {
    auto* const field = new QLineEdit(parent);
    field->setObjectName(name);
    field->setMinimumWidth(fieldWidth);
    return field;
}

/// A field with buttons beside it.
QWidget* beside(QLineEdit* field, const std::vector<QPushButton*>& buttons) {
    auto* const all = new QWidget(field->parentWidget());
    auto* const row = new QHBoxLayout(all);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(field, 1);
    for (QPushButton* const button : buttons) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    return all;
}

template <class Entity>
QStringList pathsOf(const std::vector<tree::Row<Entity>>& rows) {
    QStringList names;
    for (const auto& row : rows) {
        names << qt(row.object->name.valueOr(""));
    }
    names.removeDuplicates();
    return names;
}

}  // namespace

AssistantForm::AssistantForm(AppEnvironment& environment, QWidget* parent)
    : SettingsForm("Assistant", environment.preferences(), parent), environment_(environment) {
    addBeginning();
    addBackend();
    addKey();
    addServer();
    addModel();
    addNeverSent();
    addRecord();
}

void AssistantForm::change(const std::function<void(AISettings&)>& set) {
    keep(key(AISettings::preferencesKey), [&] {
        AISettings settings = AISettings::load(preferences());
        set(settings);
        settings.save(preferences());
    });
}

void AssistantForm::addBeginning() {
    const AISettings settings = AISettings::load(preferences());
    auto* const enabled = new QCheckBox(this);
    enabled->setObjectName("assistantEnabled");
    enabled->setChecked(settings.isEnabled);
    connect(enabled, &QCheckBox::toggled, this, [this](bool isOn) {
        change([isOn](AISettings& changed) { changed.isEnabled = isOn; });
    });
    addRow(
        {"Answer questions from my notes",
         "Off until you switch it on. Then a question leaves this computer with the passages of "
         "your notes that match it. Nothing is ever written to a note by itself."},
        enabled);
    auto* const web = new QCheckBox(this);
    web->setObjectName("assistantWeb");
    web->setChecked(settings.allowWebSearch);
    connect(web, &QCheckBox::toggled, this, [this](bool isOn) {
        change([isOn](AISettings& changed) { changed.allowWebSearch = isOn; });
    });
    addRow(
        {"Allow searching the web",
         "Each question still has a switch of its own, which is off at first."},
        web);
}

void AssistantForm::addBackend() {
    const AISettings settings = AISettings::load(preferences());
    auto* const backend = new QComboBox(this);
    backend->setObjectName("assistantBackend");
    for (const Backend one : backends) {
        backend->addItem(qt(displayName(one)));
    }
    backend->setCurrentIndex(settings.backend == Backend::relay ? 0 : 1);
    addRow({"Questions go through", {}}, backend);
    explanation_ = makeHint({}, this);
    explanation_->setObjectName("whereQuestionsGo");
    addWide(explanation_);
    showExplanation();
    connect(backend, &QComboBox::activated, this, &AssistantForm::switchBackend);
}

void AssistantForm::switchBackend(int index) {
    const Backend chosen = backends[static_cast<std::size_t>(index)];
    change([chosen](AISettings& changed) { changed.backend = chosen; });
    showExplanation();
}

void AssistantForm::showExplanation() {
    const Backend chosen = AISettings::load(preferences()).backend;
    explanation_->setText(qt(explanation(chosen, ProviderAddress::load(preferences()))));
}

void AssistantForm::addKey() {
    addHeading("Your own key");
    key_ = makeField("assistantKey", this);
    key_->setEchoMode(QLineEdit::Password);
    key_->setPlaceholderText("xAI API key");
    key_->setAccessibleName("Your own key");
    auto* const keeping = new QPushButton("Keep", this);
    keeping->setObjectName("keepKey");
    keeping->setAccessibleName("Keep the key");
    auto* const forgetting = new QPushButton("Forget", this);
    forgetting->setObjectName("forgetKey");
    forgetting->setAccessibleName("Forget the key");
    addFields(
        {"API key",
         "Kept in the desktop's keyring, and sent to the server it was entered for only."},
        beside(key_, {keeping, forgetting}));
    keyState_ = makeHint({}, this);
    keyState_->setObjectName("keyState");
    addWide(keyState_);
    connect(keeping, &QPushButton::clicked, this, &AssistantForm::keepKey);
    connect(key_, &QLineEdit::returnPressed, this, &AssistantForm::keepKey);
    connect(forgetting, &QPushButton::clicked, this, [this] { changeKey({}); });
    readKey();
}

/// The keyring may take its time: it is asked in the background.
void AssistantForm::readKey() {
    const auto state = std::make_shared<QString>();
    SecretStore& secrets = environment_.secrets(product::assistantSecretService);
    environment_.inBackground(
        [state,
         &secrets,
         &log = environment_.log(),
         host = ProviderAddress::load(preferences()).host](StoreContext&, const std::stop_token&) {
            try {
                const bool isSet = AICredentialStore(secrets, log, host).read().has_value();
                *state =
                    isSet ? "A key is kept for this server." : "No key is kept for this server.";
            } catch (const KeychainError&) {
                *state = unreachable;
            }
        },
        this,
        [this, state] { keyState_->setText(*state); });
}

void AssistantForm::keepKey() {
    const std::string typed = key_->text().trimmed().toStdString();
    key_->clear();
    if (!typed.empty()) changeKey(typed);
}

/// Keeps the key; an empty one is forgotten.
void AssistantForm::changeKey(const std::string& typed) {
    SecretStore& secrets = environment_.secrets(product::assistantSecretService);
    environment_.inBackground(
        [typed,
         &secrets,
         &log = environment_.log(),
         host = ProviderAddress::load(preferences()).host](StoreContext&, const std::stop_token&) {
            const AICredentialStore store(secrets, log, host);
            try {
                typed.empty() ? store.remove() : store.save(typed);
            } catch (const KeychainError&) {
                log.warning("the assistant's key could not be changed");
            }
        },
        this,
        [this] { readKey(); });
}

void AssistantForm::addServer() {
    server_ = makeField("assistantServer", this);
    server_->setPlaceholderText("http://127.0.0.1:11434/v1");
    server_->setAccessibleName("Address of the server");
    auto* const use = new QPushButton("Use", this);
    use->setObjectName("useServer");
    use->setAccessibleName("Use this server");
    auto* const builtIn = new QPushButton("Built-in", this);
    builtIn->setObjectName("useBuiltIn");
    builtIn->setAccessibleName("Use the built-in provider");
    addFields(
        {"A server of your own",
         "One on this computer or in a private network, given by its number or as localhost, that "
         "speaks the same forms. It needs no key."},
        beside(server_, {use, builtIn}));
    serverState_ = makeHint({}, this);
    serverState_->setObjectName("serverState");
    addWide(serverState_);
    connect(use, &QPushButton::clicked, this, &AssistantForm::askServer);
    connect(server_, &QLineEdit::returnPressed, this, &AssistantForm::askServer);
    connect(builtIn, &QPushButton::clicked, this, [this] { setServer({}); });
    showServer();
}

void AssistantForm::showServer() {
    const ProviderAddress address = ProviderAddress::load(preferences());
    serverState_->setText("Questions with your own key go to " + qt(address.baseURL) + ".");
}

/// Another server than the built-in one is confirmed once, when it is set.
void AssistantForm::askServer() {
    const QString typed = server_->text().trimmed();
    const auto address = ProviderAddress::own(typed.toStdString());
    if (!address) {
        return showNotice(
            this,
            "Only a server on this computer or in a private network, given by its number or as "
            "localhost, can take the place of the built-in provider.");
    }
    auto* const box = new QMessageBox(this);
    box->setObjectName("confirmServer");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setText("Send questions to " + qt(address->host) + "?");
    box->setInformativeText(
        "Your questions and passages of your notes will go to this server. A key that you enter "
        "from now on is kept for it alone.");
    auto* const going = box->addButton("Use This Server", QMessageBox::AcceptRole);
    box->setDefaultButton(box->addButton(QMessageBox::Cancel));
    connect(going, &QPushButton::clicked, this, [this, typed] { setServer(typed); });
    box->open();
}

void AssistantForm::setServer(const QString& typed) {
    const auto address = ProviderAddress::own(typed.toStdString());
    keep(key(ProviderAddress::preferencesKey), [&] {
        address.value_or(ProviderAddress::builtIn()).save(preferences());
    });
    server_->clear();
    showServer();
    showExplanation();
    readKey();
}

void AssistantForm::addModel() {
    QLineEdit* const model = makeField("assistantModel", this);
    model->setText(qt(AISettings::load(preferences()).model));
    connect(model, &QLineEdit::editingFinished, this, [this, model] {
        const std::string typed = model->text().trimmed().toStdString();
        if (typed.empty() || typed == AISettings::load(preferences()).model) return;
        change([&typed](AISettings& changed) { changed.model = typed; });
    });
    addRow({"Model", "The name of the model that is asked with your own key."}, model);
}

void AssistantForm::addNeverSent() {
    addHeading("Never sent");
    addWide(makeHint(
        "Notes in these notebooks or with these tags, and whatever is below them. The trash, "
        "templates and locked passages are never sent anyway.",
        this));
    StoreContext& context = environment_.context();
    const text::Collator& collator = environment_.collator();
    const auto add =
        [this](const QString& what, std::string_view preference, const QStringList& all) {
            auto* const list = new NameList(
                what,
                preferences().strings(preference).value_or(std::vector<std::string>()),
                all,
                this);
            connect(list, &NameList::changed, this, [this, list, preference] {
                keep(key(preference), [&] { preferences().set(preference, list->names()); });
            });
            addWide(list);
        };
    add("notebook",
        AIExclusions::notebooksKey,
        pathsOf(environment_.notebooks().tree(context, collator)));
    add("tag", AIExclusions::tagsKey, pathsOf(environment_.tags().tree(context, collator)));
}

void AssistantForm::addRecord() {
    addHeading("What was sent");
    QPushButton& record = addButton(
        {"Record", "When something was sent, how much, and of which notes. It stays here."},
        "Show Record…");
    record.setObjectName("showRecord");
    connect(&record, &QPushButton::clicked, this, [this] {
        (new WhatIsSent(environment_, std::nullopt, this))->open();
    });
}

}  // namespace tesserine::app
