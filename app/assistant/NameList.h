#pragma once

#include <QStringList>
#include <QWidget>

#include <string>
#include <vector>

class QComboBox;

namespace tesserine::app {

class FlowLayout;

/// A short list of names that are added from those there are and taken out again.
class NameList final : public QWidget {
    Q_OBJECT

public:
    /// `what` is one of them, as in "notebook"; `all` are those that can be added.
    NameList(
        const QString& what,
        std::vector<std::string> names,
        const QStringList& all,
        QWidget* parent = nullptr);

    const std::vector<std::string>& names() const { return names_; }

signals:
    void changed();

private:
    void fill();
    void add(const QString& name);
    void remove(const std::string& name);

    const QString what_;
    const QStringList all_;
    std::vector<std::string> names_;
    QComboBox* const choice_;
    FlowLayout* const chips_;
};

}  // namespace tesserine::app
