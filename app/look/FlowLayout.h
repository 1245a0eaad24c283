#pragma once

#include <QLayout>

#include <memory>
#include <vector>

namespace tesserine::app {

/// Sets widgets side by side and begins a new line where the width ends, as words in a text do: the
/// tags of a note, chosen filters. Follows the reading direction.
class FlowLayout final : public QLayout {
public:
    /// `gap` between neighbours and between lines, in device-independent pixels.
    explicit FlowLayout(int gap, QWidget* parent = nullptr);
    FlowLayout(const FlowLayout&) = delete;
    FlowLayout& operator=(const FlowLayout&) = delete;
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;  // takes it over
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;  // the caller's from then on

    /// Moves an item among the others; both indexes must exist.
    void move(int from, int to);

    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override { return minimumSize(); }
    void setGeometry(const QRect& area) override;

private:
    enum class Purpose { measure, place };
    /// The height that the items take in the width of `area`.
    int flow(const QRect& area, Purpose purpose) const;

    std::vector<std::unique_ptr<QLayoutItem>> items_;
};

}  // namespace tesserine::app
