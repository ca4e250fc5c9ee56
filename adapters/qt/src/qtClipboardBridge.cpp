#include "adapters/qt/qtClipboardBridge.h"

#include "adapters/qt/src/qtCarrierData.h"
#include "adapters/qt/src/qtGuarded.h"
#include "framework/dragAndDrop/drClipboard.h"

#include <QClipboard>
#include <QDebug>
#include <QGuiApplication>
#include <QScopedValueRollback>

namespace Ko {
namespace {

QtCarrierData const* ownData() {
    return qobject_cast<QtCarrierData const*>(QGuiApplication::clipboard()->mimeData());
}

} // namespace

QtClipboardBridge::QtClipboardBridge(QObject* parent) : QObject(parent), _import(QtDragAndDrop::importTexts) {
    _changes = DrClipboard::getInstance().onChange([this](DrClipboardChange const&) { exportContent(); });
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &QtClipboardBridge::importContent);
    if (DrClipboard::getInstance().getContent()->getSelection()->isEmpty())
        importContent();
    else
        exportContent();
}

QtClipboardBridge::~QtClipboardBridge() {
    QtCarrierData const* const own = ownData();
    if (!own) return;
    disconnect(QGuiApplication::clipboard(), nullptr, this, nullptr);
    auto left = std::make_unique<QMimeData>();
    for (LiString const& type : own->getCarrier()->getFormats().getTypes())
        left->setData(QString::fromStdString(type), own->data(QString::fromStdString(type)));
    QGuiApplication::clipboard()->setMimeData(left.release());
}

void QtClipboardBridge::setImport(QtImport import) {
    _import = std::move(import);
    importContent();
}

void QtClipboardBridge::exportContent() {
    if (_isPassing) return;
    QScopedValueRollback const passing(_isPassing, true);
    auto const content = DrClipboard::getInstance().getContent();
    if (!content->getSelection()->isEmpty())
        QGuiApplication::clipboard()->setMimeData(QtDragAndDrop::toMimeData(content).release());
    else if (ownData())
        QGuiApplication::clipboard()->clear();
}

void QtClipboardBridge::importContent() {
    QMimeData const* const data = QGuiApplication::clipboard()->mimeData();
    // An empty clipboard may only be out of reach: systems hide it from programs without the focus.
    if (_isPassing || !data || data->formats().isEmpty() || ownData()) return;
    QScopedValueRollback const passing(_isPassing, true);
    auto const failure = qtFailureOf([&] {
        if (auto const carrier = QtDragAndDrop::toCarrier(*data, _import))
            DrClipboard::getInstance().setContent(carrier, DrClipboard::Copy);
        else
            DrClipboard::getInstance().clear();
    });
    if (failure) qWarning().noquote() << *failure;
}

} // namespace Ko
