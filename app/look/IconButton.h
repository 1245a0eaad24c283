#pragma once

#include <QToolButton>

namespace tesserine::app {

/// A flat button that shows an icon only. Its name is read by screen readers and shown as tool tip.
class IconButton final : public QToolButton {
    Q_OBJECT

public:
    /// `icon` as in `icon(name)`; `name` says what a press will do: "Pin note".
    IconButton(const QString& icon, const QString& name, QWidget* parent = nullptr);

    /// For a button whose meaning changes: "Pin note", "Unpin note".
    void setMeaning(const QString& icon, const QString& name);
};

}  // namespace tesserine::app
