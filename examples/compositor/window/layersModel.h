#pragma once

#include "window/session.h"

#include <QAbstractListModel>
#include <QCache>
#include <QPixmap>
#include <vector>

namespace compositor::window {

/// The layers of a document for item views, the highest first: name, thumbnail, and whether it is visible as a check mark. Edits and drops
/// become steps of the history.
class LayersModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        IdRole = Qt::UserRole, ///< The `LayerId`.
        DetailsRole            ///< Blend mode and opacity in words.
    };
    static constexpr int thumbnailSide = 36;

    explicit LayersModel(Session& session, QObject* parent = nullptr);

    /// The index of a layer; invalid when there is none.
    [[nodiscard]] QModelIndex indexOf(LayerId id) const;
    [[nodiscard]] LayerId layerAt(QModelIndex const& index) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    bool setData(QModelIndex const& index, QVariant const& value, int role) override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(QModelIndexList const& indexes) const override;
    bool dropMimeData(
        QMimeData const* data, Qt::DropAction action, int row, int column, QModelIndex const& parent) override;

private:
    void update();
    void removeGone(std::vector<Layer> const& wanted);
    void arrange(std::vector<Layer> const& wanted);
    QPixmap thumbnail(Layer const& layer) const;

    Session& _session;
    // The layers that are shown, the highest first.
    std::vector<Layer> _rows;
    mutable QCache<Picture const*, std::pair<std::weak_ptr<Picture const>, QPixmap>> _thumbnails{200};
};

} // namespace compositor::window
