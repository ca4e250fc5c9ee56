#include "window/layersPanel.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>

namespace compositor::window {

namespace {

constexpr std::array blends{"over", "add", "multiply", "screen"};

/// Draws the name with the details below it.
class LayerDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const override {
        QStyleOptionViewItem shown = option;
        initStyleOption(&shown, index);
        QString const name = std::exchange(shown.text, QStringLiteral(" "));
        QStyle const& style = *shown.widget->style();
        style.drawControl(QStyle::CE_ItemViewItem, &shown, painter, shown.widget);
        QRect const text = style.subElementRect(QStyle::SE_ItemViewItemText, &shown, shown.widget);
        QRect place(
            text.left() + 4, option.rect.top() + 5, option.rect.right() - text.left() - 8, shown.fontMetrics.height());
        bool const isSelected = option.state & QStyle::State_Selected;
        QColor const colour = shown.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
        painter->save();
        painter->setPen(colour);
        painter->drawText(
            place, Qt::AlignLeft | Qt::AlignVCenter, shown.fontMetrics.elidedText(name, Qt::ElideRight, place.width()));
        QColor dim = colour;
        dim.setAlphaF(0.65F);
        painter->setPen(dim);
        painter->drawText(place.translated(0, place.height() + 1), Qt::AlignLeft | Qt::AlignVCenter,
            index.data(LayersModel::DetailsRole).toString());
        painter->restore();
    }
    QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override {
        QSize const size = QStyledItemDelegate::sizeHint(option, index);
        return {size.width(), std::max(LayersModel::thumbnailSide, 2 * option.fontMetrics.height()) + 10};
    }
    void updateEditorGeometry(
        QWidget* editor, QStyleOptionViewItem const& option, QModelIndex const& index) const override {
        QStyledItemDelegate::updateEditorGeometry(editor, option, index);
        QRect place = editor->geometry();
        place.setRight(option.rect.right());
        place.setHeight(editor->sizeHint().height());
        place.moveCenter({place.center().x(), option.rect.center().y()});
        editor->setGeometry(place);
    }
};

QListView* makeList(QAbstractItemModel* model, QWidget* parent) {
    auto* const list = new QListView(parent);
    list->setModel(model);
    list->setItemDelegate(new LayerDelegate(list));
    list->setIconSize({LayersModel::thumbnailSide, LayersModel::thumbnailSide});
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setDragDropMode(QAbstractItemView::DragDrop);
    list->setDefaultDropAction(Qt::MoveAction);
    list->setDragDropOverwriteMode(false);
    list->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    list->setAccessibleName(LayersPanel::tr("Layers"));
    list->setUniformItemSizes(true);
    list->setFrameShape(QFrame::NoFrame);
    return list;
}

} // namespace

LayersPanel::LayersPanel(Session& session, QWidget* parent)
    : QWidget(parent), _session(session), _model(new LayersModel(session, this)), _list(makeList(_model, this)),
      _opacity(new QSlider(Qt::Horizontal, this)), _percent(new QSpinBox(this)), _blend(new QComboBox(this)) {
    arrange();
    connectControls();
    showSelection();
}

void LayersPanel::arrange() {
    _opacity->setRange(0, 100);
    _opacity->setAccessibleName(tr("Opacity"));
    _percent->setRange(0, 100);
    _percent->setSuffix(tr(" %"));
    _percent->setKeyboardTracking(false);
    _percent->setAccessibleName(tr("Opacity in percent"));
    for (char const* const mode : blends)
        _blend->addItem(QString::fromLatin1(mode));
    _blend->setAccessibleName(tr("Blend mode"));

    auto* const opacity = new QHBoxLayout;
    opacity->addWidget(_opacity);
    opacity->addWidget(_percent);
    auto* const form = new QFormLayout;
    form->setContentsMargins(8, 8, 8, 6);
    form->addRow(tr("&Blend"), _blend);
    auto* const label = new QLabel(tr("&Opacity"), this);
    label->setBuddy(_opacity);
    form->addRow(label, opacity);
    auto* const box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);
    box->addLayout(form);
    box->addWidget(_list);
}

void LayersPanel::connectControls() {
    connect(_list->selectionModel(), &QItemSelectionModel::selectionChanged, this, &LayersPanel::readSelection);
    connect(&_session, &Session::selectionChanged, this, &LayersPanel::showSelection);
    connect(&_session, &Session::documentChanged, this, [this](Document const& before) {
        // The rows of layers that come and go; a drag changes only values.
        before.layers().size() == _session.document().layers().size() ? showValues() : showSelection();
    });
    connect(_opacity, &QSlider::sliderPressed, this,
        [this] { _session.attempt([this] { _slide = std::make_unique<LongStep>(_session.editor(), "Opacity"); }); });
    connect(_opacity, &QSlider::sliderReleased, this, [this] {
        if (auto const slide = std::exchange(_slide, nullptr)) _session.attempt([&] { slide->end(); });
    });
    connect(_opacity, &QSlider::valueChanged, this, &LayersPanel::setOpacity);
    connect(_percent, &QSpinBox::valueChanged, this, &LayersPanel::setOpacity);
    connect(_blend, &QComboBox::activated, this,
        [this](int mode) { _session.perform(std::string("Blend > ") + blends[static_cast<std::size_t>(mode)]); });
}

void LayersPanel::renameCurrent() {
    if (_list->currentIndex().isValid()) _list->edit(_list->currentIndex());
}

void LayersPanel::readSelection() {
    if (_isShowing) return;
    std::vector<LayerId> ids;
    for (QModelIndex const& index : _list->selectionModel()->selectedIndexes())
        ids.push_back(_model->layerAt(index));
    _session.select(ids);
}

void LayersPanel::showSelection() {
    bool const wasShowing = std::exchange(_isShowing, true);
    QItemSelection selection;
    QModelIndex last;
    for (Layer const& layer : _session.selected()) {
        last = _model->indexOf(layer.id);
        if (last.isValid()) selection.select(last, last);
    }
    _list->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (last.isValid() && !_list->selectionModel()->isSelected(_list->currentIndex()))
        _list->selectionModel()->setCurrentIndex(last, QItemSelectionModel::NoUpdate);
    _isShowing = wasShowing;
    showValues();
}

void LayersPanel::showValues() {
    std::vector<Layer> const layers = _session.selected();
    for (QWidget* const control :
        {static_cast<QWidget*>(_opacity), static_cast<QWidget*>(_percent), static_cast<QWidget*>(_blend)})
        control->setEnabled(!layers.empty());
    QSignalBlocker const blockers[] = {QSignalBlocker(_opacity), QSignalBlocker(_percent), QSignalBlocker(_blend)};
    PlacedPicture const shown = layers.empty() ? PlacedPicture() : layers.back().placed;
    int const percent = static_cast<int>(std::lround(shown.opacity * 100));
    if (!_slide) _opacity->setValue(percent);
    _percent->setValue(percent);
    bool const isMixed =
        std::ranges::any_of(layers, [&](Layer const& layer) { return layer.placed.blend != shown.blend; });
    _blend->setCurrentIndex(isMixed ? -1 : static_cast<int>(shown.blend));
}

void LayersPanel::setOpacity(int percent) {
    if (_slide)
        _session.attempt([&] { _slide->edit([&] { changeOpacity(percent); }); });
    else
        changeOpacity(percent);
}

void LayersPanel::changeOpacity(int percent) {
    _session.perform("Opacity", {QString::number(percent / 100.0).toStdString()});
}

} // namespace compositor::window
