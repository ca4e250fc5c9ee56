#include "docs/examples/window.h"

#include "base/inInitMgr.h"

#include <QApplication>

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    QApplication const application(argc, argv);
    QtEventLoop events;
    Document document;
    addActions(document);
    Window window(document, events);
    window.show();
    return QApplication::exec();
}
