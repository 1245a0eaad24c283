#pragma once

#include <QKeySequence>
#include <QList>
#include <QWidget>

namespace tesserine::app {

/// Keys drawn as they stand on a keyboard: one cap for each, several ways side by side.
class KeyCaps final : public QWidget {
    Q_OBJECT

public:
    explicit KeyCaps(const QList<QKeySequence>& keys, QWidget* parent = nullptr);

    void setKeys(const QList<QKeySequence>& keys);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    void paintEvent(QPaintEvent* event) override;
    int capWidth(const QString& text) const;

    QList<QStringList> ways_;
};

}  // namespace tesserine::app
