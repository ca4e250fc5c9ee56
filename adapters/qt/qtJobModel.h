#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/bgTask/bgJob.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/bgManagerHints.h"

#include <QAbstractListModel>
#include <QStringList>
#include <functional>
#include <optional>
#include <vector>

namespace Ko {

/// The jobs of the manager as a list for any view: what each does, how far it is, what it waits for and why it failed.
///
/// A row for each listed job, in the order of submission. Ended jobs stay until they are removed, with their messages. Changes come as events
/// of the library, one for all jobs a turn of the loop (`QtEventLoop`). No operation waits. Application thread only; must not
/// outlive the start-up of the framework.
///
///     auto* const jobs = new QtJobModel(window);
///     auto* const delegate = new QtJobDelegate(window);
///     delegate->show(*listView, *jobs);
class KO_QT_API QtJobModel : public QAbstractListModel {
    Q_OBJECT

public:
    /// What the model has beside the name (`Qt::DisplayRole`), an icon, a tool tip and a line in words for screen readers.
    enum Role {
        StateRole = Qt::UserRole, ///< `BgJobHintChangeState::JobState_t`, as an int.
        DetailRole,    ///< QString: phase, units and remaining time, or the state, or the reason of a failure.
        ProgressRole,  ///< float from 0 to 1; invalid where it is unknown, or the job is not Busy.
        RemainingRole, ///< double, seconds; invalid where there is no estimate.
        PhaseRole,     ///< QString: the last phase.
        MessagesRole,  ///< QStringList: the last messages, the newest last; a warning begins with a sign.
        ReasonRole,    ///< QString: why the job has failed.
        WaitsForRole,  ///< QStringList: the names of the jobs that it waits for.
        IsPausedRole,  ///< bool.
        IsRunningRole, ///< bool: the job has not ended.
        CanRetryRole   ///< bool: the job did not complete, and `setRetry` was called for it.
    };

    /// A summary of the jobs that have not ended, for a task bar or a status line.
    struct Summary {
        int numRunning = 0; ///< How many have not ended, those that wait included.
        int numFailed = 0;  ///< How many listed jobs have failed.
        /// Of all jobs since there were none; nothing where it is unknown, or nothing runs.
        std::optional<float> progress = {};
        /// "2 jobs, 45%"; empty where nothing runs and nothing has failed.
        QString text = {};
    };

    /// Submits a job again. @returns the new job; null where that is not possible any more.
    using Retry = std::function<RCShdPtr<BgJob>()>;

    /// @param follow whether to list user-interface jobs, too.
    explicit QtJobModel(QObject* parent = nullptr, BgFollow follow = BgFollow::Jobs);
    ~QtJobModel() override;

    /// The job of a row.
    [[nodiscard]] RCShdPtr<BgJob> getJob(int row) const;
    /// The row of a job; -1 where it is not listed.
    [[nodiscard]] int getRow(BgJob const& job) const noexcept;
    /// Lets the user retry this job when it has failed or was stopped; the new job can be retried as well.
    void setRetry(RCShdPtr<BgJob> const& job, Retry retry);
    /// All jobs in short.
    [[nodiscard]] Summary const& getSummary() const noexcept { return _summary; }

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;

public Q_SLOTS:
    /// Asks a job to end.
    void cancel(int row);
    /// Asks all jobs to end.
    void cancelAll();
    /// Pauses a job, or lets it go on.
    void setPaused(int row, bool isPaused);
    /// Submits a job that has failed or was stopped once more, and removes it.
    void retry(int row);
    /// Removes a job that has ended.
    void remove(int row);
    /// Removes all jobs that have ended.
    void removeEnded();

Q_SIGNALS:
    /// The summary has changed.
    void summaryChanged();

private:
    struct Row {
        RCShdPtr<BgJob> job;
        QStringList messages = {};
        Retry retry = {};
        // Whether the progress of the job counts in the summary: since then, there was always a job that runs.
        bool isInBatch = false;
        ObSubscription said = {};
    };

    Row const& at(QModelIndex const& index) const { return _rows[static_cast<std::size_t>(index.row())]; }
    QString toolTipOf(Row const& row) const;
    QVariant dataOf(Row const& row, int role) const;
    void apply(BgManagerHintJobs const& hint);
    void append(RCShdPtr<BgJob> const& job);
    void addMessages(BgJob const& job, BgJobHintMessage const& hint);
    void removeRow(int row);
    void updateSummary();

    std::vector<Row> _rows;
    Summary _summary;
    ObSubscription _changes;
};

} // namespace Ko
