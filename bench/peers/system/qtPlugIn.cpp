// A small plug-in for the loader of Qt: one object.

#include <QObject>
#include <QtPlugin>

class BenchPlugIn final : public QObject {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "bench.plugIn")
};

#include "qtPlugIn.moc"
