#pragma once

#include "adapters/qt/qtApi.h"

#include <QList>
#include <QPointer>
#include <QStyledItemDelegate>

class QAbstractItemView;
class QAction;

namespace Ko {

class QtJobModel;

/// Draws the jobs of a `QtJobModel`: name, a bar where there is progress, what the job does or why it failed in red, and buttons that
/// pause, cancel, retry and remove it.
///
/// In a view that was given to `show`, the keys work as well: Space pauses and resumes, Delete cancels a job or removes one that has
/// ended, R retries; a context menu offers the same. Application thread only.
class KO_QT_API QtJobDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit QtJobDelegate(QObject* parent = nullptr);
    ~QtJobDelegate() override;

    /// Shows a model in a view, with this delegate and its keys. Neither is owned.
    void show(QAbstractItemView& view, QtJobModel& model);

    void paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const override;
    QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override;

protected:
    bool editorEvent(QEvent* event, QAbstractItemModel* model, QStyleOptionViewItem const& option,
        QModelIndex const& index) override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, QStyleOptionViewItem const& option,
        QModelIndex const& index) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Button { Pause, Resume, Cancel, Retry, Remove };

    static QList<Button> buttonsOf(QModelIndex const& index);
    static QRect placeOf(QRect const& row, qsizetype button);
    static QString textOf(Button button);
    static Button const* buttonAt(
        QList<Button> const& buttons, QStyleOptionViewItem const& option, QPoint const& point);
    static void press(Button button, QtJobModel& model, int row);
    void paintTexts(QPainter& painter, QStyleOptionViewItem const& option, QModelIndex const& index) const;
    bool pressKey(int key);
    void openMenu(QPoint const& place);

    QPointer<QAbstractItemView> _view;
    QPointer<QtJobModel> _model;
};

} // namespace Ko
