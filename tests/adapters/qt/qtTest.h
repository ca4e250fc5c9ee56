#pragma once

#include <QCoreApplication>
#include <QTimer>

namespace Ko {

/// Runs the loop of Qt until a condition holds. @returns false where it does not hold for long.
template <class Condition>
bool runUntil(Condition condition) {
    QTimer limit; // wakes the loop
    limit.setSingleShot(true);
    limit.start(30'000);
    while (!condition() && limit.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

} // namespace Ko
