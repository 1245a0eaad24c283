#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>

class QLineEdit;

namespace tesserine::app {

/// Labels that can be taken away one by one, and a field to add one, which completes names.
class LabelsField final : public QWidget {
    Q_OBJECT

public:
    /// `names` tells the labels there are, when the field is entered.
    using Names = std::function<QStringList()>;
    explicit LabelsField(Names names, QWidget* parent = nullptr);

    void setLabels(const QStringList& labels);
    const QStringList& labels() const { return labels_; }
    /// Adds what is typed, as leaving the field does.
    void take();

signals:
    void added(const QString& label);
    void removed(const QString& label);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    Names names_;
    QStringList labels_;
    QWidgetList chips_;
    QLineEdit* const field_;
};

}  // namespace tesserine::app
