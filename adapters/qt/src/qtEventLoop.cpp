#include "adapters/qt/qtEventLoop.h"

#include "adapters/qt/src/qtGuarded.h"
#include "base/evEventManager.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEvent>
#include <QMetaMethod>
#include <QPointer>
#include <QTimerEvent>
#include <mutex>

namespace Ko {
namespace {

QEvent::Type wakeUpType() {
    static int const type = QEvent::registerEventType();
    return static_cast<QEvent::Type>(type);
}

} // namespace

/// The way from any thread to the loop. The handlers share it, as they may still be running on other threads at the end of the loop.
class QtEventLoop::Waker {
public:
    explicit Waker(QtEventLoop* loop) : _loop(loop) {}

    void wake() {
        std::lock_guard const lock(_mutex);
        if (_loop) QCoreApplication::postEvent(_loop, std::make_unique<QEvent>(wakeUpType()).release());
    }
    void show(Msg const& message) {
        std::lock_guard const lock(_mutex);
        if (!_loop) return;
        QMetaObject::invokeMethod(
            _loop,
            [loop = _loop, severity = message.getSeverity(), text = QString::fromStdString(message.getText())] {
                if (loop->isSignalConnected(QMetaMethod::fromSignal(&QtEventLoop::message)))
                    Q_EMIT loop->message(severity, text);
                else
                    qWarning().noquote() << text;
            },
            Qt::QueuedConnection);
    }
    void close() {
        std::lock_guard const lock(_mutex);
        _loop = nullptr;
    }

private:
    std::mutex _mutex;
    QtEventLoop* _loop;
};

QtEventLoop::QtEventLoop(QObject* parent) : QObject(parent), _waker(std::make_shared<Waker>(this)) {
    MsgProtocol::setHandler([waker = _waker](Msg const& message) { waker->show(message); });
    EvEventManager::getInstance().setWakeUpHandler([waker = _waker] { waker->wake(); });
}

QtEventLoop::~QtEventLoop() {
    EvEventManager::getInstance().setWakeUpHandler({});
    MsgProtocol::setHandler({});
    _waker->close();
}

void QtEventLoop::processWaiting() {
    // A call that fails has processed one event at least.
    while (!process([] { EvEventManager::getInstance().processEvents(); })) {
    }
}

bool QtEventLoop::event(QEvent* event) {
    if (event->type() != wakeUpType()) return QObject::event(event);
    // Qt delivers posted events until there are none, before input and painting: events that are run here and post others would keep it from
    // the rest. Timers take turns with the rest.
    if (_timer == 0) _timer = startTimer(0);
    return true;
}

void QtEventLoop::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _timer) return;
    // Before the events: Qt does not call a timer again while it runs, which a nested loop needs.
    killTimer(_timer);
    _timer = 0;
    process([budget = _budget] { EvEventManager::getInstance().processEvents(budget); });
}

template <class Process>
bool QtEventLoop::process(Process run) {
    QPointer<QtEventLoop> const self = this; // an event may destroy this object
    std::optional<QString> const failure = qtFailureOf(run);
    if (!failure || !self) return true;
    Q_EMIT eventFailed(*failure);
    return !self;
}

} // namespace Ko
