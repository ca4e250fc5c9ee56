#pragma once

#include "adapters/qt/qtApi.h"
#include "resmgt/msgServer.h"

#include <QObject>
#include <QString>
#include <chrono>
#include <memory>

namespace Ko {

/// Lets the loop of Qt process the events of the library, without polling.
///
///     Ko::InInitScope const framework(argc, argv);
///     QApplication application(argc, argv);
///     Ko::QtEventLoop events;
///     QObject::connect(&events, &Ko::QtEventLoop::message, ...);
///     return application.exec();
///
/// Events run between input, timers and painting, at most for the budget at a time, in the loop of the application and in nested ones, such as
/// that of a modal dialog which an event opens. Events that were posted before this object exists run as soon as the loop does. One
/// object at a time: it occupies the wake-up handler and the handler of messages, and removes both at its end. Application thread
/// only, which has to be that of the user interface; within the start-up of the framework.
class KO_QT_API QtEventLoop : public QObject {
    Q_OBJECT

public:
    explicit QtEventLoop(QObject* parent = nullptr);
    ~QtEventLoop() override;

    /// Limits the time for which events run before input and painting have their turn; one event runs in any case. 8 ms by default.
    void setBudget(std::chrono::nanoseconds budget) noexcept { _budget = budget; }
    /// The time for which events run at a time.
    [[nodiscard]] std::chrono::nanoseconds getBudget() const noexcept { return _budget; }
    /// Processes the events that wait, without a limit of time: for the end of the application, when the loop of Qt has
    /// returned. Those that they post wait for the next call.
    void processWaiting();

Q_SIGNALS:
    /// The library or a job has a message for the user. Always by an event of its own, never inside the call that shows the message, so
    /// a slot may open a dialog. Messages without a receiver are written as a warning of Qt.
    void message(Ko::Msg::Severity severity, QString const& text);
    /// An event threw an exception, which ends here; the following events run all the same.
    /// `ExProgramAborted` passes on instead, which ends the process.
    void eventFailed(QString const& reason);

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    class Waker;

    template <class Process>
    bool process(Process run);

    std::shared_ptr<Waker> _waker;
    std::chrono::nanoseconds _budget = std::chrono::milliseconds(8);
    int _timer = 0;
};

} // namespace Ko
