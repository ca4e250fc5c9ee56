#include "adapters/qt/qtJobModel.h"

#include "adapters/qt/src/qtGuarded.h"
#include "adapters/qt/src/qtJobTexts.h"
#include "adapters/qt/src/qtShapes.h"
#include "framework/bgTask/bgJobHints.h"
#include "framework/bgTask/bgJobReport.h"

#include <algorithm>

namespace Ko {
namespace {

using State = BgJobHintChangeState;

// Messages that a row keeps.
constexpr qsizetype maxMessages = 100;

State::JobState_t stateOf(BgJob const& job) {
    return job.getState()->getHintValue();
}

QIcon iconOf(BgJob const& job) {
    switch (stateOf(job)) {
    case State::Complete:
        return qtIcon(QtShape::Done);
    case State::Failed:
        return qtIcon(QtShape::Failed);
    case State::Stopped:
        return qtIcon(QtShape::Cancel);
    case State::Busy:
        return qtIcon(job.isPaused() ? QtShape::Pause : QtShape::Resume);
    default:
        return qtIcon(job.isPaused() ? QtShape::Pause : QtShape::Waiting);
    }
}

QString waitText(RCShdPtr<BgJob> const& job) {
    QStringList const names = qtPredecessors(job);
    return names.isEmpty() ? qtDetailText(*job) : QtJobModel::tr("Waits for %1").arg(names.join(QStringLiteral(", ")));
}

QString spokenText(RCShdPtr<BgJob> const& job) {
    QString text = QString::fromStdString(job->getName()) + QStringLiteral(", ") + waitText(job);
    if (auto const progress = qtProgress(*job)) text += QStringLiteral(", %1%").arg(qRound(*progress * 100));
    return text;
}

QVariant progressOf(BgJob& job) {
    auto const progress = qtProgress(job);
    return progress ? QVariant(*progress) : QVariant();
}

QVariant remainingOf(BgJob const& job) {
    auto const remaining = job.getRemaining();
    if (!remaining) return {};
    return std::chrono::duration<double>(*remaining).count();
}

QString toText(BgMessage const& message) {
    QString const text = QString::fromStdString(message.text);
    return message.severity == BgMessage::Severity::Warning ? QStringLiteral("\u26A0 ") + text : text;
}

} // namespace

QtJobModel::QtJobModel(QObject* parent, BgFollow follow) : QAbstractListModel(parent) {
    BgManager& manager = BgManager::getInstance();
    _changes = manager.onJobs([this](BgManagerHintJobs const& hint) { apply(hint); }, follow);
    for (RCShdPtr<BgJob> const& job : manager.getJobs())
        if (follow == BgFollow::JobsAndUiJobs || !manager.isUiJob(*job)) append(job);
    updateSummary();
}

QtJobModel::~QtJobModel() = default;

RCShdPtr<BgJob> QtJobModel::getJob(int row) const {
    return row >= 0 && row < rowCount() ? _rows[static_cast<std::size_t>(row)].job : nullptr;
}

int QtJobModel::getRow(BgJob const& job) const noexcept {
    auto const found = std::ranges::find_if(_rows, [&](Row const& row) { return row.job.get() == &job; });
    return found == _rows.end() ? -1 : static_cast<int>(found - _rows.begin());
}

void QtJobModel::setRetry(RCShdPtr<BgJob> const& job, Retry retry) {
    // The event that lists a new job may still wait.
    if (getRow(*job) < 0) append(job);
    int const row = getRow(*job);
    _rows[static_cast<std::size_t>(row)].retry = std::move(retry);
    Q_EMIT dataChanged(index(row), index(row));
}

int QtJobModel::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant QtJobModel::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    return dataOf(at(index), role);
}

// With the last messages.
QString QtJobModel::toolTipOf(Row const& row) const {
    auto const messages = row.messages.mid(std::max<qsizetype>(row.messages.size() - 5, 0));
    return (QStringList{QString::fromStdString(row.job->getName()), waitText(row.job)} + messages).join(u'\n');
}

QVariant QtJobModel::dataOf(Row const& row, int role) const {
    BgJob& job = *row.job;
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(job.getName());
    case Qt::DecorationRole:
        return iconOf(job);
    case Qt::ForegroundRole:
        return stateOf(job) == State::Failed ? QVariant(qtFailureColour()) : QVariant();
    case Qt::AccessibleTextRole:
        return spokenText(row.job);
    case Qt::ToolTipRole:
        return toolTipOf(row);
    case StateRole:
        return static_cast<int>(stateOf(job));
    case DetailRole:
        return waitText(row.job);
    case ProgressRole:
        return progressOf(job);
    case RemainingRole:
        return remainingOf(job);
    case PhaseRole:
        return QString::fromStdString(job.getPhase());
    case MessagesRole:
        return row.messages;
    case ReasonRole:
        return QString::fromStdString(job.getReason());
    case WaitsForRole:
        return qtPredecessors(row.job);
    case IsPausedRole:
        return job.isPaused();
    case IsRunningRole:
        return job.isRunning();
    case CanRetryRole:
        return row.retry && (stateOf(job) == State::Failed || stateOf(job) == State::Stopped);
    default:
        return {};
    }
}

void QtJobModel::cancel(int row) {
    if (auto const job = getJob(row)) job->requestStop();
}

void QtJobModel::cancelAll() {
    // The last ones first: those that wait would only begin when others end.
    for (int row = rowCount(); row > 0; --row)
        cancel(row - 1);
}

void QtJobModel::setPaused(int row, bool isPaused) {
    auto const job = getJob(row);
    if (!job) return;
    isPaused ? job->pause() : job->resume();
    Q_EMIT dataChanged(index(row), index(row));
}

void QtJobModel::retry(int row) {
    if (!index(row).isValid() || !index(row).data(CanRetryRole).toBool()) return;
    // The callable may change the list.
    Retry const again = _rows[static_cast<std::size_t>(row)].retry;
    auto const before = getJob(row);
    RCShdPtr<BgJob> job;
    if (qtFailureOf([&] { job = again(); }) || !job) return;
    setRetry(job, again);
    remove(getRow(*before));
}

void QtJobModel::remove(int row) {
    auto const job = getJob(row);
    if (!job || job->isRunning()) return;
    removeRow(row);
    updateSummary();
    // Releases the protocol of a job that has ended, which does not wait; fails where the job was removed from the list already.
    static_cast<void>(qtFailureOf([&] { BgManager::getInstance().stopAndDeleteJob(job); }));
}

void QtJobModel::removeEnded() {
    for (int row = rowCount(); row > 0; --row)
        remove(row - 1);
}

void QtJobModel::apply(BgManagerHintJobs const& hint) {
    for (BgJobChange const& change : hint.getChanges()) {
        int const row = getRow(*change.job);
        if (change.kind == BgJobChange::Kind::Removed) {
            if (row >= 0) removeRow(row);
        } else if (row >= 0)
            Q_EMIT dataChanged(index(row), index(row));
        else if (change.kind == BgJobChange::Kind::Added)
            append(change.job);
    }
    // What a job waits for changes with other jobs.
    auto const isWaiting = [](Row const& row) { return stateOf(*row.job) == State::Waiting; };
    auto const first = std::ranges::find_if(_rows, isWaiting);
    if (first != _rows.end()) Q_EMIT dataChanged(index(static_cast<int>(first - _rows.begin())), index(rowCount() - 1));
    updateSummary();
}

void QtJobModel::append(RCShdPtr<BgJob> const& job) {
    beginInsertRows({}, rowCount(), rowCount());
    Row row{job};
    row.said = job->on<BgJobHintMessage>(
        [this, &watched = *job](BgJobHintMessage const& said) { addMessages(watched, said); });
    _rows.push_back(std::move(row));
    endInsertRows();
}

void QtJobModel::addMessages(BgJob const& job, BgJobHintMessage const& hint) {
    int const row = getRow(job);
    if (row < 0) return;
    QStringList& messages = _rows[static_cast<std::size_t>(row)].messages;
    for (BgMessage const& message : hint.getMessages())
        messages.append(toText(message));
    if (hint.getNumOmitted() > 0) messages.append(tr("and %1 more").arg(hint.getNumOmitted()));
    if (messages.size() > maxMessages) messages.remove(0, messages.size() - maxMessages);
    Q_EMIT dataChanged(index(row), index(row));
}

void QtJobModel::removeRow(int row) {
    beginRemoveRows({}, row, row);
    // Its subscription may destroy the job, which may run code of the host.
    Row const removed = std::move(_rows[static_cast<std::size_t>(row)]);
    _rows.erase(_rows.begin() + row);
    endRemoveRows();
}

void QtJobModel::updateSummary() {
    Summary summary;
    float done = 0;
    int numInBatch = 0;
    bool isKnown = true;
    for (Row& row : _rows) {
        bool const isRunning = row.job->isRunning();
        row.isInBatch = row.isInBatch || isRunning;
        summary.numRunning += isRunning ? 1 : 0;
        summary.numFailed += stateOf(*row.job) == State::Failed ? 1 : 0;
        if (!row.isInBatch) continue;
        ++numInBatch;
        auto const progress = qtProgress(*row.job);
        isKnown = isKnown && (progress || stateOf(*row.job) != State::Busy);
        done += !isRunning ? 1 : progress.value_or(0);
    }
    if (summary.numRunning == 0)
        for (Row& row : _rows)
            row.isInBatch = false;
    else if (isKnown)
        summary.progress = done / static_cast<float>(numInBatch);
    QStringList parts;
    if (summary.numRunning > 0)
        parts.append(summary.numRunning == 1 ? tr("1 job") : tr("%1 jobs").arg(summary.numRunning));
    if (summary.progress) parts.append(QStringLiteral("%1%").arg(qRound(*summary.progress * 100)));
    if (summary.numFailed > 0) parts.append(tr("%1 failed").arg(summary.numFailed));
    summary.text = parts.join(QStringLiteral(", "));
    bool const isOther = summary.text != _summary.text || summary.progress != _summary.progress;
    _summary = summary;
    if (isOther) Q_EMIT summaryChanged();
}

} // namespace Ko
