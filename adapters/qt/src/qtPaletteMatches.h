#pragma once

#include "adapters/qt/qtPalette.h"

#include <QAbstractListModel>
#include <QList>
#include <QStyledItemDelegate>

namespace Ko {

/// What the palette lists: actions, or the options of one.
class QtPalette::Matches : public QAbstractListModel {
public:
    struct Row {
        QString text;
        // The positions of the matching letters in the text.
        QList<int> letters;
        // The shortcut, or why it is not possible.
        QString note;
        bool isPossible;
        ActAction const* action;
        // Of an option; -1 for an action.
        int option;
    };
    enum Role { LettersRole = Qt::UserRole, NoteRole, IsPossibleRole };

    using QAbstractListModel::QAbstractListModel;

    void set(QList<Row> rows);
    Row const& at(int row) const { return _rows[row]; }
    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;

private:
    QList<Row> _rows;
};

/// Draws a row: the text with its matching letters, and the note at the right.
class QtPalette::Painter : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const override;
    QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override;
};

} // namespace Ko
