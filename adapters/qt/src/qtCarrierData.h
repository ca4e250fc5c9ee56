#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "framework/dragAndDrop/drSrcSink.h"

#include <QMimeData>
#include <QPointer>

namespace Ko {

/// A carrier as data of Qt. Its forms are made when a program asks for one.
class QtCarrierData : public QMimeData {
    Q_OBJECT

public:
    explicit QtCarrierData(RCShdPtr<DrCarrier> carrier) : _carrier(std::move(carrier)) {}

    RCShdPtr<DrCarrier> const& getCarrier() const noexcept { return _carrier; }
    bool hasFormat(QString const& type) const override { return formats().contains(type); }
    QStringList formats() const override;

    // The source of a drag, and whether a sink of this process has consumed it and notified the source.
    RCShdPtr<DrSrcSink> source;
    bool isConsumed = false;

protected:
    QVariant retrieveData(QString const& type, QMetaType wanted) const override;

private:
    RCShdPtr<DrCarrier> const _carrier;
};

/// The forms of data that another program offers, fetched when they are asked for, while the data exist.
DrFormats qtFormatsOf(QMimeData const& data);

} // namespace Ko
