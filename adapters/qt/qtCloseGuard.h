#pragma once

#include "adapters/qt/qtApi.h"

#include <QObject>
#include <QStringList>
#include <chrono>
#include <functional>
#include <memory>

class QWidget;

namespace Ko {

/// Lets a window close only when the user agrees and the jobs have ended, without ever freezing it.
///
/// A close of the window is first put to the questions of the host, such as whether to save. Then all jobs are asked to end. Meanwhile the
/// window stays responsive; it closes when the jobs have ended, at the latest when the grace period is over. Application thread only;
/// `QtEventLoop` or another loop has to deliver the events of the library.
///
///     auto* const guard = new QtCloseGuard(window);
///     guard->addQuestion([&] { return document.isSaved() || askToSave(window); });
class KO_QT_API QtCloseGuard : public QObject {
    Q_OBJECT

public:
    /// Whether to go on with the close. May open dialogs.
    using Question = std::function<bool()>;

    /// Guards a window, which becomes the parent.
    explicit QtCloseGuard(QWidget& window);
    ~QtCloseGuard() override;

    /// Adds a question, asked after the earlier ones; the first refusal keeps the window open.
    void addQuestion(Question question);
    /// Replaces the question that is asked where jobs have not ended. It is given their names, without those of
    /// user-interface jobs. By default a dialog asks whether to cancel them. Without a question, jobs are cancelled silently.
    void setJobsQuestion(std::function<bool(QStringList const& names)> question);
    /// Limits the wait for the jobs. 5 s by default.
    void setGrace(std::chrono::milliseconds grace) noexcept;
    /// Whether the window closes as soon as the jobs have ended.
    [[nodiscard]] bool isClosing() const noexcept;

Q_SIGNALS:
    /// The window waits for jobs, for instance to show it.
    void waiting(QStringList const& names);
    /// The window closes. These jobs have not ended in time.
    void closing(QStringList const& unended);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct State;

    bool agree();
    void stopJobs();
    void finish(QStringList const& unended);

    std::shared_ptr<State> _state;
};

} // namespace Ko
