#include "adapters/qt/src/qtPaletteMatches.h"

#include <QApplication>
#include <QPainter>
#include <QTextLayout>

namespace Ko {
namespace {

constexpr int margin = 8;

QList<QTextLayout::FormatRange> formatsOf(QVariantList const& letters) {
    QTextCharFormat format;
    format.setFontWeight(QFont::Bold);
    format.setFontUnderline(true);
    QList<QTextLayout::FormatRange> formats;
    for (QVariant const& letter : letters)
        formats.append({letter.toInt(), 1, format});
    return formats;
}

} // namespace

void QtPalette::Matches::set(QList<Row> rows) {
    beginResetModel();
    _rows = std::move(rows);
    endResetModel();
}

int QtPalette::Matches::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant QtPalette::Matches::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    Row const& row = _rows[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return row.text;
    case Qt::AccessibleTextRole:
        return row.note.isEmpty() ? row.text : row.text + QStringLiteral(", ") + row.note;
    case LettersRole: {
        QVariantList letters;
        for (int const letter : row.letters)
            letters.append(letter);
        return letters;
    }
    case NoteRole:
        return row.note;
    case IsPossibleRole:
        return row.isPossible;
    default:
        return {};
    }
}

void QtPalette::Painter::paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const {
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    row.text.clear();
    QStyle const* const style = row.widget ? row.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &row, painter, row.widget);
    bool const isSelected = row.state & QStyle::State_Selected;
    auto const group = index.data(Matches::IsPossibleRole).toBool() ? QPalette::Active : QPalette::Disabled;
    QColor colour = row.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    QRect const inner = row.rect.adjusted(margin, 0, -margin, 0);
    painter->save();
    painter->setPen(colour);
    QTextLayout layout(index.data().toString(), row.font);
    layout.setFormats(formatsOf(index.data(Matches::LettersRole).toList()));
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(inner.width());
    layout.endLayout();
    layout.draw(painter, QPointF(inner.left(), inner.top() + (inner.height() - line.height()) / 2));
    QRect const rest = inner.adjusted(static_cast<int>(line.naturalTextWidth()) + 2 * margin, 0, 0, 0);
    colour.setAlphaF(isSelected ? 0.9f : 0.7f);
    painter->setPen(colour);
    QString const note =
        row.fontMetrics.elidedText(index.data(Matches::NoteRole).toString(), Qt::ElideRight, rest.width());
    painter->drawText(rest, Qt::AlignVCenter | Qt::AlignRight, note);
    painter->restore();
}

QSize QtPalette::Painter::sizeHint(QStyleOptionViewItem const& option, QModelIndex const&) const {
    return {option.fontMetrics.averageCharWidth() * 40, option.fontMetrics.height() + margin};
}

} // namespace Ko
