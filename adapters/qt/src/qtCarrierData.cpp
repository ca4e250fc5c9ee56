#include "adapters/qt/src/qtCarrierData.h"

#include "adapters/qt/src/qtGuarded.h"

#include <QBuffer>
#include <QDebug>
#include <QImage>
#include <algorithm>

namespace Ko {
namespace {

// Recognised by programs that use this library, also where a carrier has no form for others.
QString const carrierType = QStringLiteral("application/x-koframework-carrier");
// From this one, Qt makes all forms of pictures that it can write.
QString const pictureType = QStringLiteral("application/x-qt-image");

bool isPicture(LiString const& type) {
    return type.starts_with("image/");
}

std::string toPng(QImage const& picture) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return bytes.toStdString();
}

} // namespace

QStringList QtCarrierData::formats() const {
    QStringList types;
    Vector<LiString> const forms = _carrier->getFormats().getTypes();
    for (LiString const& type : forms)
        types.append(QString::fromStdString(type));
    if (std::ranges::any_of(forms, isPicture)) types.append(pictureType);
    types.append(carrierType);
    return types;
}

QVariant QtCarrierData::retrieveData(QString const& type, QMetaType) const {
    if (type == carrierType) return QByteArray();
    LiString wanted = type.toStdString();
    if (type == pictureType) {
        Vector<LiString> const forms = _carrier->getFormats().getTypes();
        auto const form = std::ranges::find_if(forms, isPicture);
        if (form == forms.end()) return {};
        wanted = *form;
    }
    std::optional<std::string> made;
    auto const failure = qtFailureOf([&] { made = _carrier->getFormats().make(wanted); });
    if (failure) qWarning().noquote() << *failure;
    if (!made) return {};
    QByteArray const bytes = QByteArray::fromStdString(*made);
    return type == pictureType ? QVariant(QImage::fromData(bytes)) : QVariant(bytes);
}

DrFormats qtFormatsOf(QMimeData const& data) {
    DrFormats formats;
    QPointer<QMimeData const> const source = &data;
    auto const requireSource = [source] {
        if (!source) throw ExInternalError(__FILE__, __LINE__, "The data of the other program are gone.");
    };
    for (QString const& type : data.formats())
        if (type != pictureType && type != carrierType)
            formats.add(type.toStdString(), [=] {
                requireSource();
                return source->data(type).toStdString();
            });
    if (data.hasImage() && !formats.contains("image/png"))
        formats.add("image/png", [=] {
            requireSource();
            return toPng(qvariant_cast<QImage>(source->imageData()));
        });
    return formats;
}

} // namespace Ko
