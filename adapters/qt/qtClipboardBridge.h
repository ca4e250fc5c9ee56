#pragma once

#include "adapters/qt/qtApi.h"
#include "adapters/qt/qtDragAndDrop.h"
#include "internalAPI/cbSubscription.h"

#include <QObject>

namespace Ko {

/// Connects the library's clipboard with that of the system, both ways.
///
/// What the application copies or cuts is offered to other programs in the forms of its carrier (`DrFormats`), which are made when a
/// program asks for one. What another program copies becomes the content of `DrClipboard`; its forms are fetched when the application
/// asks for them, as long as the program offers them. At its end, the bridge leaves the forms of the present content with the system.
/// One object at a time; application thread only, between the start of `QApplication` and its end.
///
///     Ko::QtClipboardBridge const clipboard;
class KO_QT_API QtClipboardBridge : public QObject {
    Q_OBJECT

public:
    explicit QtClipboardBridge(QObject* parent = nullptr);
    ~QtClipboardBridge() override;

    /// Makes the items of what other programs have copied. By default `QtDragAndDrop::importTexts`.
    void setImport(QtImport import);

private:
    void exportContent();
    void importContent();

    QtImport _import;
    CbSubscription _changes;
    // Whether a change of one clipboard is being passed on to the other.
    bool _isPassing = false;
};

} // namespace Ko
