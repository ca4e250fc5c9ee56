#include "adapters/qt/qtJobDelegate.h"

#include "adapters/qt/qtJobModel.h"
#include "adapters/qt/src/qtOwned.h"
#include "adapters/qt/src/qtShapes.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace Ko {
namespace {

// In pixels of the screen at its usual resolution.
constexpr int margin = 6;
constexpr int iconSize = 16;
constexpr int buttonSize = 22;
constexpr int barHeight = 4;

bool isBusy(QModelIndex const& index) {
    int const state = index.data(QtJobModel::StateRole).toInt();
    return state == BgJobHintChangeState::Busy || state == BgJobHintChangeState::Stopping;
}

QtShape shapeOf(int button) {
    constexpr QtShape shapes[] = {QtShape::Pause, QtShape::Resume, QtShape::Cancel, QtShape::Retry, QtShape::Cancel};
    return shapes[button];
}

// A hatched bar stands for unknown progress: it needs no animation.
void paintBar(QPainter& painter, QRectF const& place, QVariant const& progress, QPalette const& palette) {
    QColor track = palette.color(QPalette::Text);
    track.setAlphaF(0.18f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(track);
    qreal const radius = place.height() / 2;
    painter.drawRoundedRect(place, radius, radius);
    QRectF done = place;
    if (progress.isValid()) done.setWidth(place.width() * static_cast<qreal>(progress.toFloat()));
    painter.setBrush(
        QBrush(palette.color(QPalette::Highlight), progress.isValid() ? Qt::SolidPattern : Qt::BDiagPattern));
    if (done.width() > 0) painter.drawRoundedRect(done, radius, radius);
}

} // namespace

QtJobDelegate::QtJobDelegate(QObject* parent) : QStyledItemDelegate(parent) {}
QtJobDelegate::~QtJobDelegate() = default;

void QtJobDelegate::show(QAbstractItemView& view, QtJobModel& model) {
    _view = &view;
    _model = &model;
    view.setModel(&model);
    view.setItemDelegate(this);
    view.setMouseTracking(true);
    view.setContextMenuPolicy(Qt::CustomContextMenu);
    view.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    connect(&view, &QWidget::customContextMenuRequested, this, &QtJobDelegate::openMenu);
    view.installEventFilter(this);
}

QSize QtJobDelegate::sizeHint(QStyleOptionViewItem const& option, QModelIndex const&) const {
    // All rows are equally high, so that a job that begins or ends does not move the others.
    int const height = option.fontMetrics.height() * 2 + barHeight + margin * 4 - 2;
    return {option.fontMetrics.averageCharWidth() * 24, height};
}

void QtJobDelegate::paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const {
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    row.text.clear();
    row.icon = {};
    row.features &= ~QStyleOptionViewItem::HasDecoration;
    // A tinted background instead of the colour for selections, on which red and the bar could not be read.
    bool const isSelected = row.state & QStyle::State_Selected;
    row.state &= ~QStyle::State_Selected;
    QStyle const* const style = row.widget ? row.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &row, painter, row.widget);
    painter->save();
    if (isSelected) {
        QColor tint = row.palette.color(QPalette::Highlight);
        tint.setAlphaF(0.2f);
        painter->fillRect(row.rect, tint);
    }
    painter->setRenderHint(QPainter::Antialiasing);
    paintTexts(*painter, row, index);
    auto const buttons = buttonsOf(index);
    QPoint const pointer = row.widget ? row.widget->mapFromGlobal(QCursor::pos()) : QPoint(-1, -1);
    for (qsizetype number = 0; number < buttons.size(); ++number) {
        QRect const place = placeOf(row.rect, number);
        QColor colour = row.palette.color(QPalette::Text);
        if (row.state & QStyle::State_MouseOver && place.contains(pointer)) {
            QColor tint = colour;
            tint.setAlphaF(0.15f);
            painter->setPen(Qt::NoPen);
            painter->setBrush(tint);
            painter->drawRoundedRect(place, 4, 4);
        }
        painter->setPen(colour);
        qtDraw(*painter, shapeOf(static_cast<int>(buttons[number])), QRectF(place).adjusted(4, 4, -4, -4));
    }
    painter->restore();
}

void QtJobDelegate::paintTexts(QPainter& painter, QStyleOptionViewItem const& option, QModelIndex const& index) const {
    QPalette const& palette = option.palette;
    bool const hasFailed = index.data(QtJobModel::StateRole).toInt() == BgJobHintChangeState::Failed;
    QRect const inner = option.rect.adjusted(margin, margin, -margin, -margin);
    int const left = inner.left() + iconSize + margin;
    int const right = placeOf(option.rect, buttonsOf(index).size() - 1).left() - margin;
    int const height = option.fontMetrics.height();
    // Without a bar, the lines move together.
    int const gap = isBusy(index) ? 0 : barHeight;
    QRect const nameLine(left, inner.top() + gap, right - left, height);
    QRect const detailLine(left, inner.bottom() - height + 1 - gap, right - left, height);
    QRectF const bar(left, (nameLine.bottom() + detailLine.top() + 1 - barHeight) / 2.0, right - left, barHeight);

    auto const write = [&](QRect const& line, QString const& text, QColor const& colour, bool isBold) {
        QFont font = option.font;
        font.setBold(isBold);
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(
            line, Qt::AlignVCenter | Qt::AlignLeft, QFontMetrics(font).elidedText(text, Qt::ElideRight, line.width()));
    };
    painter.setPen(hasFailed ? qtFailureColour() : palette.color(QPalette::Text));
    index.data(Qt::DecorationRole)
        .value<QIcon>()
        .paint(&painter, QRect(inner.left(), nameLine.center().y() - iconSize / 2, iconSize, iconSize));
    write(nameLine, index.data().toString(), palette.color(QPalette::Text), true);
    QColor quiet = palette.color(QPalette::Text);
    quiet.setAlphaF(0.75f);
    write(detailLine, index.data(QtJobModel::DetailRole).toString(), hasFailed ? qtFailureColour() : quiet, false);
    if (isBusy(index)) paintBar(painter, bar, index.data(QtJobModel::ProgressRole), palette);
}

bool QtJobDelegate::editorEvent(
    QEvent* event, QAbstractItemModel* model, QStyleOptionViewItem const& option, QModelIndex const& index) {
    auto* const jobs = qobject_cast<QtJobModel*>(model);
    bool const isRelease = event->type() == QEvent::MouseButtonRelease;
    if (event->type() == QEvent::MouseMove && option.widget) const_cast<QWidget*>(option.widget)->update();
    if (!jobs || (!isRelease && event->type() != QEvent::MouseButtonPress)) return false;
    auto const& mouse = static_cast<QMouseEvent const&>(*event);
    if (mouse.button() != Qt::LeftButton) return false;
    auto const buttons = buttonsOf(index);
    Button const* const button = buttonAt(buttons, option, mouse.position().toPoint());
    if (button && isRelease) press(*button, *jobs, index.row());
    return button != nullptr;
}

bool QtJobDelegate::helpEvent(
    QHelpEvent* event, QAbstractItemView* view, QStyleOptionViewItem const& option, QModelIndex const& index) {
    auto const buttons = buttonsOf(index);
    Button const* const button = index.isValid() ? buttonAt(buttons, option, event->pos()) : nullptr;
    if (!button || event->type() != QEvent::ToolTip) return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), textOf(*button), view);
    return true;
}

bool QtJobDelegate::eventFilter(QObject* watched, QEvent* event) {
    if (watched == _view && event->type() == QEvent::KeyPress && pressKey(static_cast<QKeyEvent*>(event)->key()))
        return true;
    return QStyledItemDelegate::eventFilter(watched, event);
}

bool QtJobDelegate::pressKey(int key) {
    QModelIndex const index = _view->currentIndex();
    if (!index.isValid() || !_model) return false;
    for (Button const button : buttonsOf(index)) {
        bool const isIts = (key == Qt::Key_Space && (button == Button::Pause || button == Button::Resume)) ||
                           (key == Qt::Key_Delete && (button == Button::Cancel || button == Button::Remove)) ||
                           (key == Qt::Key_R && button == Button::Retry);
        if (!isIts) continue;
        press(button, *_model, index.row());
        return true;
    }
    return false;
}

void QtJobDelegate::openMenu(QPoint const& place) {
    QPersistentModelIndex const index = _view->indexAt(place);
    if (!index.isValid() || !_model) return;
    auto* const menu = qtOwned<QMenu>(_view);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (Button const button : buttonsOf(index))
        connect(menu->addAction(qtIcon(shapeOf(static_cast<int>(button))), textOf(button)), &QAction::triggered, this,
            [this, index, button] {
                if (_model && index.isValid()) press(button, *_model, index.row());
            });
    menu->popup(_view->viewport()->mapToGlobal(place));
}

QList<QtJobDelegate::Button> QtJobDelegate::buttonsOf(QModelIndex const& index) {
    if (!index.data(QtJobModel::IsRunningRole).toBool())
        return index.data(QtJobModel::CanRetryRole).toBool() ? QList{Button::Remove, Button::Retry}
                                                             : QList{Button::Remove};
    if (index.data(QtJobModel::StateRole).toInt() == BgJobHintChangeState::Stopping) return {};
    return {Button::Cancel, index.data(QtJobModel::IsPausedRole).toBool() ? Button::Resume : Button::Pause};
}

// From the right.
QRect QtJobDelegate::placeOf(QRect const& row, qsizetype button) {
    int const x = row.right() - margin - static_cast<int>(button + 1) * (buttonSize + 2);
    return {x + 2, row.center().y() - buttonSize / 2 + 1, buttonSize, buttonSize};
}

QString QtJobDelegate::textOf(Button button) {
    switch (button) {
    case Button::Pause:
        return tr("Pause");
    case Button::Resume:
        return tr("Resume");
    case Button::Cancel:
        return tr("Cancel");
    case Button::Retry:
        return tr("Retry");
    case Button::Remove:
        break;
    }
    return tr("Remove from List");
}

QtJobDelegate::Button const* QtJobDelegate::buttonAt(
    QList<Button> const& buttons, QStyleOptionViewItem const& option, QPoint const& point) {
    for (qsizetype number = 0; number < buttons.size(); ++number)
        if (placeOf(option.rect, number).contains(point)) return &buttons[number];
    return nullptr;
}

void QtJobDelegate::press(Button button, QtJobModel& model, int row) {
    switch (button) {
    case Button::Pause:
        return model.setPaused(row, true);
    case Button::Resume:
        return model.setPaused(row, false);
    case Button::Cancel:
        return model.cancel(row);
    case Button::Retry:
        return model.retry(row);
    case Button::Remove:
        return model.remove(row);
    }
}

} // namespace Ko
