#include "adapters/qt/src/qtJobTexts.h"

#include "framework/bgTask/bgManager.h"

#include <QCoreApplication>
#include <cmath>

namespace Ko {
namespace {

using State = BgJobHintChangeState;

QString tr(char const* text) {
    return QCoreApplication::translate("Ko::QtJobModel", text);
}

QString remainingText(std::chrono::duration<double> remaining) {
    double const seconds = std::ceil(remaining.count());
    if (seconds < 60) return tr("%1 s left").arg(seconds);
    if (seconds < 3600) return tr("%1 min left").arg(std::ceil(seconds / 60));
    return tr("%1 h left").arg(std::ceil(seconds / 3600));
}

QString unitsText(BgUnits const& units) {
    if (units.unit.empty()) return {};
    QString const unit = QString::fromStdString(units.unit);
    if (units.total <= 0) return tr("%1 %2").arg(units.done).arg(unit);
    return tr("%1 of %2 %3").arg(units.done).arg(units.total).arg(unit);
}

QString busyText(BgJob const& job) {
    QStringList parts{QString::fromStdString(job.getPhase()), unitsText(job.getUnits())};
    if (job.isPaused())
        parts.prepend(tr("Paused"));
    else if (auto const remaining = job.getRemaining())
        parts.append(remainingText(*remaining));
    parts.removeAll(QString());
    return parts.isEmpty() ? tr("Running") : parts.join(QStringLiteral(" \u00B7 "));
}

QString stateText(BgJob const& job) {
    switch (job.getState()->getHintValue()) {
    case State::Busy:
        return job.isPaused() ? tr("Paused") : tr("Running");
    case State::Stopping:
        return tr("Stopping\u2026");
    case State::Stopped:
        return tr("Cancelled");
    case State::Complete:
        return tr("Done");
    case State::Failed:
        return tr("Failed");
    case State::Idle:
    case State::Waiting:
        break;
    }
    return job.isPaused() ? tr("Paused") : tr("Waiting");
}

} // namespace

QString qtDetailText(BgJob const& job) {
    QString const reason = QString::fromStdString(job.getReason()).simplified();
    auto const state = job.getState()->getHintValue();
    if (state == State::Busy) return busyText(job);
    return reason.isEmpty()         ? stateText(job)
           : state == State::Failed ? reason
                                    : stateText(job) + QStringLiteral(": ") + reason;
}

std::optional<float> qtProgress(BgJob& job) {
    auto const state = job.getState()->getHintValue();
    if (state != State::Busy && state != State::Stopping) return std::nullopt;
    float const progress = job.getStatistics().progress();
    if (std::isnan(progress)) return std::nullopt;
    return std::clamp(progress, 0.0f, 1.0f);
}

QStringList qtPredecessors(RCShdPtr<BgJob> const& job) {
    QStringList names;
    if (job->getState()->getHintValue() != State::Waiting) return names;
    for (auto const& predecessor : BgManager::getInstance().getPredecessors(job))
        names.append(QString::fromStdString(predecessor->getName()));
    return names;
}

} // namespace Ko
