#include "window/canvasView.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QSignalBlocker>

namespace compositor::window {

CanvasView::CanvasView(Canvas& canvas, QWidget* parent) : QWidget(parent), _canvas(canvas) {
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->addWidget(&canvas, 0, 0);
    grid->addWidget(addBar(Qt::Vertical, QCoreApplication::translate("CanvasView", "Scroll vertically")), 0, 1);
    grid->addWidget(addBar(Qt::Horizontal, QCoreApplication::translate("CanvasView", "Scroll horizontally")), 1, 0);
}

QScrollBar* CanvasView::addBar(Qt::Orientation orientation, QString const& name) {
    auto* const bar = new QScrollBar(orientation, this);
    bar->setAccessibleName(name);
    bar->setFocusPolicy(Qt::TabFocus);
    connect(bar, &QScrollBar::valueChanged, &_canvas,
        [this, orientation](int value) { _canvas.scrollTo(orientation, value); });
    connect(&_canvas, &Canvas::viewChanged, bar, [this, bar] { follow(*bar); });
    follow(*bar);
    return bar;
}

void CanvasView::follow(QScrollBar& bar) {
    ScrollRange const range = _canvas.scrollRange(bar.orientation());
    QSignalBlocker const blocker(bar);
    bar.setRange(range.least, range.most);
    bar.setPageStep(range.page);
    bar.setSingleStep(std::max(1, range.page / 20));
    bar.setValue(range.value);
    bar.setEnabled(range.least < range.most);
}

} // namespace compositor::window
