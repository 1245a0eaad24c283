#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <optional>
#include <string>
#include <vector>

class QComboBox;
class QLayout;
class QPushButton;
class QVBoxLayout;

namespace tesserine {
class Preferences;
}

namespace tesserine::app {

/// One page of settings: rows of a title, what it means, and the control. What is changed is kept
/// and told at once; there is nothing to confirm.
class SettingsForm : public QWidget {
    Q_OBJECT

public:
    SettingsForm(const QString& title, Preferences& preferences, QWidget* parent = nullptr);

    /// The words of a row.
    struct Words {
        QString title;
        QString hint{};
    };
    /// A yes or no under `key`; `fallback` while it is not set.
    void addSwitch(const std::string& key, const Words& words, bool fallback);
    /// One of several numbers under `key`; the option without a number means that it is not set.
    struct Option {
        QString title;
        std::optional<int> number{};
    };
    QComboBox& addChoice(
        const std::string& key, const Words& words, const std::vector<Option>& options);
    /// One of several words under `key`, the first one when it is not set.
    struct WordOption {
        QString title;
        std::string word;
    };
    QComboBox& addChoice(
        const std::string& key, const Words& words, const std::vector<WordOption>& options);
    /// A button that does something.
    QPushButton& addButton(const Words& words, const QString& button);
    /// Any control at the end of a row.
    void addRow(const Words& words, QWidget* control);
    /// Fields too wide for the end of a row, below their words; what they led to may follow.
    void addFields(const Words& words, QWidget* control);
    /// Something that takes the whole width.
    void addWide(QWidget* widget);
    void addHeading(const QString& title);

signals:
    /// The setting of this key was changed, and is kept.
    void changed(const QString& key);

protected:
    Preferences& preferences() const { return preferences_; }
    /// Keeps a setting by `set` and tells of it; a failure is shown, and false is returned.
    bool keep(const std::string& key, const std::function<void()>& set);

private:
    /// `set` keeps what the chosen option stands for.
    void followChoice(
        const std::string& key, QComboBox& box, std::function<void(std::size_t index)> set);
    /// Tells the control what it means, too.
    QLayout* makeWords(const Words& words, QWidget& control);

    Preferences& preferences_;
    QVBoxLayout* const column_;
};

}  // namespace tesserine::app
