#pragma once

#include "ai/AISettings.h"
#include "app/look/SettingsForm.h"

#include <functional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tesserine::app {

class AppEnvironment;

/// The settings of the assistant, which are one value of several parts.
class AssistantForm final : public SettingsForm {
    Q_OBJECT

public:
    AssistantForm(AppEnvironment& environment, QWidget* parent);

private:
    void addBeginning();
    void addBackend();
    void addKey();
    void addServer();
    void addModel();
    void addNeverSent();
    void addRecord();
    void change(const std::function<void(AISettings&)>& set);
    void switchBackend(int index);
    void readKey();
    void keepKey();
    void changeKey(const std::string& typed);
    void askServer();
    void setServer(const QString& typed);
    void showServer();
    void showExplanation();

    AppEnvironment& environment_;
    QLabel* explanation_ = nullptr;
    QLabel* keyState_ = nullptr;
    QLineEdit* key_ = nullptr;
    QLabel* serverState_ = nullptr;
    QLineEdit* server_ = nullptr;
};

}  // namespace tesserine::app
