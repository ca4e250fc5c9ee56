#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "framework/dragAndDrop/drSrcSink.h"

#include <QObject>
#include <QPixmap>
#include <QPoint>
#include <QPointer>
#include <functional>
#include <memory>

class QDropEvent;
class QMimeData;
class QMouseEvent;
class QWidget;

namespace Ko {

/// Makes the items of data that come from another program: `formats` fetches each form when it is asked for, which may take time.
using QtImport = std::function<void(DrFormats const& formats, SnSelection& items)>;

/// Lets a widget begin and take drags of the library's carriers, also from and to other programs.
///
/// The source and sink of the view decides what is carried and accepted, by `DrGesture`. The keys choose the effect: Ctrl copies, Shift moves,
/// both link; without a key, own items move and those of others are copied. Other programs see the forms of the carrier (`DrFormats`),
/// made when they are dropped. Application thread only.
///
///     auto* const drags = new QtDragAndDrop(*view->viewport(), layerList);
///     drags->setPlaces([=](QPoint const& point) { return DrPlace{layerAt(point)}; });
class KO_QT_API QtDragAndDrop : public QObject {
    Q_OBJECT

public:
    /// The place of the view at a point of the widget, for the sink.
    using Places = std::function<DrPlace(QPoint const& point)>;
    /// The picture at the pointer during a drag.
    using Picture = std::function<QPixmap(DrCarrier const& carrier)>;

    /// @param widget becomes the parent; for a scrolled view, its viewport.
    /// @param part the source and sink of the view; may be replaced.
    QtDragAndDrop(QWidget& widget, RCShdPtr<DrSrcSink> part);
    ~QtDragAndDrop() override;

    /// Replaces the source and sink, for instance for another document; null for none.
    void setPart(RCShdPtr<DrSrcSink> part);
    /// Finds places. By default every point is a place without a target.
    void setPlaces(Places places);
    /// Draws a picture of what is dragged.
    void setPicture(Picture picture);
    /// Makes the items of what comes from other programs. By default `importTexts`.
    void setImport(QtImport import);
    /// Lets the mouse begin drags in the widget; on by default. Without it, the host calls `start`.
    void setStartsByMouse(bool isOn) noexcept;

    /// Begins a drag with what the source gives, and returns when it has ended.
    /// @param grabbed where it began, in the widget.
    /// @returns the effect; `None` where the source gave nothing or the drag was abandoned.
    DrEffect start(QPoint const& grabbed);

    /// A carrier as data of Qt, for a drag or a clipboard of the host's own. The caller owns it until it gives it to Qt.
    [[nodiscard]] static std::unique_ptr<QMimeData> toMimeData(RCShdPtr<DrCarrier> const& carrier);
    /// The carrier in data of Qt: the same one where this process has made the data, else a new one with the items that `import` makes
    /// and the forms of the data, which are fetched while `data` exists. Null where there are no items.
    [[nodiscard]] static RCShdPtr<DrCarrier> toCarrier(QMimeData const& data, QtImport const& import);
    /// Makes an `SnItemBasic<LiString>` of each local file, by its path, or else one of the text.
    static void importTexts(DrFormats const& formats, SnSelection& items);

Q_SIGNALS:
    /// Something was dropped in the widget, with this effect.
    void dropped(Ko::RCShdPtr<Ko::DrCarrier> const& carrier, Ko::DrEffect effect);
    /// A drag or a drop has failed, with the reason.
    void failed(QString const& reason);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool handleMouse(QMouseEvent const& event);
    bool hover(QDropEvent& event);
    bool drop(QDropEvent& event);
    void leave();
    DrPlace placeAt(QPoint const& point) const;

    QWidget* _widget;
    RCShdPtr<DrSrcSink> _part;
    Places _places;
    Picture _picture;
    QtImport _import;
    bool _startsByMouse = true;
    // Where the button was pressed; a point outside while it is not.
    QPoint _pressed = {-1, -1};
    // What hovers over the widget; null for nothing.
    RCShdPtr<DrCarrier> _hovering;
    QPointer<QObject> _hoveringData;
};

} // namespace Ko
