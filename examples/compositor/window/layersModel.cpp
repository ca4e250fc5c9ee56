#include "window/layersModel.h"

#include "framework/command/cmUndoGuard.h"
#include "host/actions.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <set>

namespace compositor::window {

namespace {

constexpr char const* mimeType = "application/x-compositor-layer-rows";

// A few samples for each pixel are enough for so small a picture, whatever its size.
QImage sampled(Picture const& picture, QSize size) {
    constexpr int perSide = 3;
    QImage large(size * perSide, QImage::Format_RGBA8888);
    for (int y = 0; y < large.height(); ++y) {
        auto const row = picture.row(y * picture.size().height / large.height());
        auto* const line = reinterpret_cast<Colour*>(large.scanLine(y));
        for (int x = 0; x < large.width(); ++x)
            line[x] = row[static_cast<std::size_t>(std::int64_t{x} * picture.size().width / large.width())];
    }
    return large.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

LayersModel::LayersModel(Session& session, QObject* parent) : QAbstractListModel(parent), _session(session) {
    connect(&_session, &Session::documentChanged, this, &LayersModel::update);
    update();
}

QModelIndex LayersModel::indexOf(LayerId id) const {
    auto const found = std::ranges::find(_rows, id, &Layer::id);
    return found == _rows.end() ? QModelIndex() : index(static_cast<int>(found - _rows.begin()));
}

LayerId LayersModel::layerAt(QModelIndex const& index) const {
    return _rows[static_cast<std::size_t>(index.row())].id;
}

int LayersModel::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant LayersModel::data(QModelIndex const& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    Layer const& layer = _rows[static_cast<std::size_t>(index.row())];
    PlacedPicture const& placed = layer.placed;
    Size const size = placed.picture->size();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return QString::fromStdString(layer.name);
    case Qt::DecorationRole:
        return thumbnail(layer);
    case Qt::CheckStateRole:
        return placed.isVisible ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole:
        return tr("%1, %2 x %3 pixels at (%4, %5)")
            .arg(QString::fromStdString(layer.name).toHtmlEscaped())
            .arg(size.width)
            .arg(size.height)
            .arg(placed.x)
            .arg(placed.y);
    case Qt::AccessibleDescriptionRole:
    case DetailsRole:
        return tr("%1, %2 %")
            .arg(QString::fromStdString(toString(placed.blend)))
            .arg(std::lround(placed.opacity * 100));
    case IdRole:
        return QVariant::fromValue(layer.id);
    default:
        return {};
    }
}

bool LayersModel::setData(QModelIndex const& index, QVariant const& value, int role) {
    if (!index.isValid()) return false;
    Layer const layer = _session.document().layer(layerAt(index));
    if (role == Qt::EditRole) {
        std::string const name = value.toString().toStdString();
        if (name == layer.name) return false;
        return _session.attempt([&] { EditActions::perform(_session.editor(), "Rename", {layer}, {name}); });
    }
    if (role != Qt::CheckStateRole) return false;
    return _session.attempt([&] { EditActions::perform(_session.editor(), "Visible", {layer}, {}); });
}

Qt::ItemFlags LayersModel::flags(QModelIndex const& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable | Qt::ItemIsUserCheckable |
           Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

QStringList LayersModel::mimeTypes() const {
    return {mimeType};
}

// Owned by the drag.
QMimeData* LayersModel::mimeData(QModelIndexList const& indexes) const {
    QByteArray ids;
    QDataStream stream(&ids, QIODevice::WriteOnly);
    stream << QCoreApplication::applicationPid();
    std::set<int> rows;
    for (QModelIndex const& index : indexes)
        rows.insert(index.row());
    for (int const row : rows)
        stream << quint64{_rows[static_cast<std::size_t>(row)].id};
    auto* const data = new QMimeData;
    data->setData(mimeType, ids);
    return data;
}

// The layers come to lie above that which was at the row.
bool LayersModel::dropMimeData(QMimeData const* data, Qt::DropAction, int row, int, QModelIndex const& parent) {
    QByteArray const bytes = data->data(mimeType);
    QDataStream stream(bytes);
    qint64 process = 0;
    stream >> process;
    if (bytes.isEmpty() || process != QCoreApplication::applicationPid()) return false;
    std::vector<LayerId> moved;
    for (quint64 id = 0; !stream.atEnd() && (stream >> id, true);)
        if (_session.document().contains(id)) moved.push_back(id);
    std::vector<LayerId> order(_rows.size());
    std::ranges::transform(_rows, order.begin(), &Layer::id);
    int const place = row >= 0 ? row : parent.isValid() ? parent.row() : rowCount();
    auto const isMoved = [&](LayerId id) { return std::ranges::find(moved, id) != moved.end(); };
    auto const above = std::count_if(order.begin(), order.begin() + place, std::not_fn(isMoved));
    std::erase_if(order, isMoved);
    order.insert(order.begin() + above, moved.begin(), moved.end());
    return !moved.empty() && _session.attempt([&] {
        Ko::CmUndoGuard const guard(_session.editor().history(), "Reorder Layers");
        for (std::size_t index = 0; index < order.size(); ++index)
            if (_session.document().indexOf(order[order.size() - 1 - index]) != index)
                _session.editor().reorderLayer(order[order.size() - 1 - index], index);
    });
}

void LayersModel::update() {
    std::vector<Layer> const wanted(_session.document().layers().rbegin(), _session.document().layers().rend());
    removeGone(wanted);
    arrange(wanted);
}

void LayersModel::removeGone(std::vector<Layer> const& wanted) {
    for (int row = rowCount() - 1; row >= 0; --row) {
        LayerId const id = _rows[static_cast<std::size_t>(row)].id;
        if (std::ranges::find(wanted, id, &Layer::id) != wanted.end()) continue;
        beginRemoveRows({}, row, row);
        _rows.erase(_rows.begin() + row);
        endRemoveRows();
    }
}

void LayersModel::arrange(std::vector<Layer> const& wanted) {
    for (std::size_t place = 0; place < wanted.size(); ++place) {
        int const row = static_cast<int>(place);
        int const now = indexOf(wanted[place].id).row();
        if (now < 0) {
            beginInsertRows({}, row, row);
            _rows.insert(_rows.begin() + row, wanted[place]);
            endInsertRows();
        } else if (now != row) {
            // The rows above are in order already, so it comes from below.
            beginMoveRows({}, now, now, {}, row);
            std::rotate(_rows.begin() + row, _rows.begin() + now, _rows.begin() + now + 1);
            endMoveRows();
        }
        if (_rows[place] == wanted[place]) continue;
        _rows[place] = wanted[place];
        Q_EMIT dataChanged(index(row), index(row));
    }
}

QPixmap LayersModel::thumbnail(Layer const& layer) const {
    SharedPicture const& picture = layer.placed.picture;
    auto const* const cached = _thumbnails.object(picture.get());
    if (cached && cached->first.lock() == picture) return cached->second;
    QSize size(picture->size().width, picture->size().height);
    size.scale(2 * thumbnailSide, 2 * thumbnailSide, Qt::KeepAspectRatio);
    size = size.expandedTo({1, 1});
    QPixmap pixmap(2 * thumbnailSide, 2 * thumbnailSide);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QRect place(QPoint(0, 0), size);
    place.moveCenter(pixmap.rect().center());
    painter.fillRect(place, Qt::white);
    painter.fillRect(place, QBrush(QColor(0, 0, 0, 40), Qt::Dense4Pattern));
    painter.drawImage(place, sampled(*picture, size));
    painter.end();
    pixmap.setDevicePixelRatio(2.0);
    _thumbnails.insert(picture.get(), new std::pair(std::weak_ptr(picture), pixmap));
    return pixmap;
}

} // namespace compositor::window
