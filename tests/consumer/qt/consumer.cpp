// A host that runs one event of the library by the loop of Qt.
#include "adapters/qt/qtEventLoop.h"
#include "base/evEventManager.h"
#include "base/inInitMgr.h"

#include <QCoreApplication>
#include <iostream>

int main(int argc, char** argv) {
    Ko::InInitScope const framework(argc, argv);
    QCoreApplication const application(argc, argv);
    Ko::QtEventLoop const events;
    Ko::EvEventManager::getInstance().postRequest([] {
        std::cout << "an event in the loop of Qt\n";
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
