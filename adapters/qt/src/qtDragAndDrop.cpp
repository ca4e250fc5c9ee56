#include "adapters/qt/qtDragAndDrop.h"

#include "adapters/qt/src/qtCarrierData.h"
#include "adapters/qt/src/qtGuarded.h"
#include "adapters/qt/src/qtOwned.h"
#include "framework/dragAndDrop/drGesture.h"
#include "internalAPI/snItemBasic.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>
#include <utility>

namespace Ko {
namespace {

constexpr std::pair<DrEffect, Qt::DropAction> actions[] = {
    {DrEffect::Copy, Qt::CopyAction}, {DrEffect::Move, Qt::MoveAction}, {DrEffect::Link, Qt::LinkAction}};

Qt::DropAction toAction(DrEffect effect) {
    for (auto const& [its, action] : actions)
        if (its == effect) return action;
    return Qt::IgnoreAction;
}

DrEffect toEffect(Qt::DropAction action) {
    for (auto const& [effect, its] : actions)
        if (its == action) return effect;
    return action == Qt::TargetMoveAction ? DrEffect::Move : DrEffect::None;
}

template <class IsIn>
Qt::DropActions toActions(IsIn isIn) {
    Qt::DropActions result;
    for (auto const& [effect, action] : actions)
        if (isIn(effect)) result |= action;
    return result;
}

DrEffects toEffects(Qt::DropActions possible) {
    auto const take = [&](DrEffect effect) { return possible & toAction(effect) ? effect : DrEffect::None; };
    return {take(DrEffect::Copy), take(DrEffect::Move), take(DrEffect::Link)};
}

DrEffect wantedEffect(QDropEvent const& event, bool isOwn) {
    bool const isCopy = event.modifiers() & Qt::ControlModifier;
    bool const isMove = event.modifiers() & Qt::ShiftModifier;
    if (isCopy && isMove) return DrEffect::Link;
    if (isCopy) return DrEffect::Copy;
    if (isMove || isOwn) return DrEffect::Move;
    return toEffect(event.proposedAction());
}

constexpr QPoint nowhere(-1, -1);

} // namespace

QtDragAndDrop::QtDragAndDrop(QWidget& widget, RCShdPtr<DrSrcSink> part)
    : QObject(&widget), _widget(&widget), _part(std::move(part)), _import(importTexts) {
    widget.setAcceptDrops(true);
    widget.installEventFilter(this);
}

QtDragAndDrop::~QtDragAndDrop() = default;

void QtDragAndDrop::setPart(RCShdPtr<DrSrcSink> part) {
    _part = std::move(part);
}
void QtDragAndDrop::setPlaces(Places places) {
    _places = std::move(places);
}
void QtDragAndDrop::setPicture(Picture picture) {
    _picture = std::move(picture);
}
void QtDragAndDrop::setImport(QtImport import) {
    _import = std::move(import);
}
void QtDragAndDrop::setStartsByMouse(bool isOn) noexcept {
    _startsByMouse = isOn;
}

DrEffect QtDragAndDrop::start(QPoint const& grabbed) {
    QPointer<QtDragAndDrop> const self = this; // a drop may close the window
    auto const source = _part;
    DrEffect effect = DrEffect::None;
    auto const failure = qtFailureOf([&] {
        auto const carrier = source ? DrGesture::begin(source) : nullptr;
        if (!carrier) return;
        carrier->setLocation({static_cast<float>(grabbed.x()), static_cast<float>(grabbed.y())});
        auto* const data = qtOwned<QtCarrierData>(carrier);
        data->source = source;
        QPointer<QtCarrierData> const kept = data;
        auto* const drag = qtOwned<QDrag>(_widget); // Qt deletes it when it has ended
        drag->setMimeData(data);
        if (_picture) drag->setPixmap(_picture(*carrier));
        DrEffects const offered = carrier->getOffered();
        Qt::DropAction const done =
            drag->exec(toActions([&](DrEffect each) { return offered.contains(each); }), Qt::MoveAction);
        effect = toEffect(done);
        if (kept && kept->isConsumed) {
            effect = carrier->getEffect();
        } else if (effect == DrEffect::None) {
            DrGesture::cancel(source, nullptr, carrier);
        } else {
            // Another program has taken a copy.
            carrier->setEffect(effect);
            source->dropCompleted(carrier);
        }
    });
    if (failure && self) Q_EMIT failed(*failure);
    return effect;
}

std::unique_ptr<QMimeData> QtDragAndDrop::toMimeData(RCShdPtr<DrCarrier> const& carrier) {
    return std::make_unique<QtCarrierData>(carrier);
}

RCShdPtr<DrCarrier> QtDragAndDrop::toCarrier(QMimeData const& data, QtImport const& import) {
    if (auto const* const own = qobject_cast<QtCarrierData const*>(&data)) return own->getCarrier();
    auto const items = SnSelection::create();
    DrFormats const formats = qtFormatsOf(data);
    import(formats, *items);
    if (items->isEmpty()) return nullptr;
    auto const carrier = DrCarrier::create(items);
    carrier->setFormats(formats);
    return carrier;
}

void QtDragAndDrop::importTexts(DrFormats const& formats, SnSelection& items) {
    auto const files = formats.make("text/uri-list");
    for (QByteArray const& line : QByteArray::fromStdString(files.value_or("")).split('\n'))
        if (QUrl const url = QUrl::fromEncoded(line.trimmed()); url.isLocalFile())
            items.add(SnItemBasic<LiString>::create(url.toLocalFile().toStdString()));
    if (!items.isEmpty()) return;
    // With or without parameters, such as the character set.
    for (LiString const& type : formats.getTypes())
        if (type == "text/plain" || type == "text/plain;charset=utf-8")
            if (auto const text = formats.make(type); text && !text->empty()) {
                items.add(SnItemBasic<LiString>::create(*text));
                return;
            }
}

bool QtDragAndDrop::eventFilter(QObject* watched, QEvent* event) {
    if (watched != _widget) return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        return handleMouse(static_cast<QMouseEvent const&>(*event));
    case QEvent::DragEnter:
    case QEvent::DragMove:
        return hover(static_cast<QDropEvent&>(*event));
    case QEvent::Drop:
        return drop(static_cast<QDropEvent&>(*event));
    case QEvent::DragLeave:
        leave();
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

bool QtDragAndDrop::handleMouse(QMouseEvent const& event) {
    QPoint const point = event.position().toPoint();
    if (event.type() == QEvent::MouseButtonPress && event.button() == Qt::LeftButton) _pressed = point;
    if (event.type() == QEvent::MouseButtonRelease) _pressed = nowhere;
    bool const isPulled = event.type() == QEvent::MouseMove && event.buttons() & Qt::LeftButton &&
                          _pressed != nowhere &&
                          (point - _pressed).manhattanLength() >= QApplication::startDragDistance();
    if (!isPulled || !_startsByMouse || !_part || !_part->willPopulateSelection()) return false;
    start(std::exchange(_pressed, nowhere));
    return true;
}

DrPlace QtDragAndDrop::placeAt(QPoint const& point) const {
    DrPlace place = _places ? _places(point) : DrPlace{};
    place.point = {static_cast<float>(point.x()), static_cast<float>(point.y())};
    return place;
}

bool QtDragAndDrop::hover(QDropEvent& event) {
    event.ignore();
    auto const failure = qtFailureOf([&] {
        auto const* const data = event.mimeData();
        bool const isOwn = qobject_cast<QtCarrierData const*>(data);
        // The data of other programs are imported once, when they enter.
        if (!_hovering || _hoveringData != data) _hovering = toCarrier(*data, _import);
        _hoveringData = const_cast<QMimeData*>(data);
        if (!_hovering || !_part) return;
        if (!isOwn) _hovering->setOffered(toEffects(event.possibleActions()));
        DrEffect const effect =
            DrGesture::hover(_part, _hovering, wantedEffect(event, isOwn), placeAt(event.position().toPoint()));
        if (effect == DrEffect::None) return;
        event.setDropAction(toAction(effect));
        event.accept();
    });
    if (failure) Q_EMIT failed(*failure);
    return true;
}

bool QtDragAndDrop::drop(QDropEvent& event) {
    event.ignore();
    QPointer<QtDragAndDrop> const self = this;
    auto* const own = qobject_cast<QtCarrierData*>(const_cast<QMimeData*>(event.mimeData()));
    DrEffect effect = DrEffect::None;
    RCShdPtr<DrCarrier> carrier;
    auto const failure = qtFailureOf([&] {
        carrier = _hovering ? _hovering : toCarrier(*event.mimeData(), _import);
        _hovering.reset();
        auto const part = _part;
        if (!carrier || !part) return;
        if (own) own->isConsumed = true;
        effect = DrGesture::drop(
            own ? own->source : nullptr, part, carrier, wantedEffect(event, own), placeAt(event.position().toPoint()));
    });
    if (effect != DrEffect::None) {
        event.setDropAction(toAction(effect));
        event.accept();
    }
    if (!self) return true;
    if (failure)
        Q_EMIT failed(*failure);
    else if (effect != DrEffect::None)
        Q_EMIT dropped(carrier, effect);
    return true;
}

void QtDragAndDrop::leave() {
    _hovering.reset();
}

} // namespace Ko
