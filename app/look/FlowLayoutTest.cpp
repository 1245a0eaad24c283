#include "app/look/FlowLayout.h"

#include <gtest/gtest.h>
#include <QWidget>

#include <string>

namespace tesserine::app {
namespace {

/// A widget of one size.
class Box final : public QWidget {
public:
    Box(int width, QWidget* parent) : QWidget(parent), width_(width) {}
    QSize sizeHint() const override { return {width_, 10}; }
    QSize minimumSizeHint() const override { return {10, 10}; }

private:
    int width_;
};

/// Where the widgets of `holder` stand: "0,0 60,0 0,14".
std::string places(const QWidget& holder) {
    std::string all;
    for (const QObject* child : holder.children()) {
        const auto* const widget = qobject_cast<const QWidget*>(child);
        if (!widget || widget->isHidden()) continue;
        if (!all.empty()) all += " ";
        all += std::to_string(widget->x()) + "," + std::to_string(widget->y());
    }
    return all;
}

TEST(FlowLayout, BeginsANewLineWhereTheWidthEnds) {
    QWidget holder;
    auto* const flow = new FlowLayout(4, &holder);
    for (const int width : {40, 56, 50, 300})
        flow->addWidget(new Box(width, &holder));
    holder.show();

    holder.resize(100, 200);
    EXPECT_EQ(places(holder), "0,0 44,0 0,14 0,28") << "40 + 4 + 56 fill 100 to the pixel";
    EXPECT_EQ(flow->heightForWidth(100), 38);
    EXPECT_EQ(flow->itemAt(3)->geometry().width(), 100) << "what is too wide is cut to the line";

    holder.resize(99, 200);
    EXPECT_EQ(places(holder), "0,0 0,14 0,28 0,42");

    holder.setLayoutDirection(Qt::RightToLeft);
    holder.resize(100, 200);
    EXPECT_EQ(places(holder), "60,0 0,0 50,14 0,28");
}

TEST(FlowLayout, LeavesNoGapForWhatIsHiddenAndKeepsAChangedOrder) {
    QWidget holder;
    auto* const flow = new FlowLayout(4, &holder);
    for (const int width : {10, 20, 30})
        flow->addWidget(new Box(width, &holder));
    flow->itemAt(1)->widget()->hide();
    holder.resize(100, 50);
    holder.show();
    EXPECT_EQ(places(holder), "0,0 14,0");

    flow->itemAt(1)->widget()->show();
    flow->move(2, 0);
    flow->activate();
    EXPECT_EQ(places(holder), "34,0 48,0 0,0");
}

}  // namespace
}  // namespace tesserine::app
