#include "adapters/qt/qtCloseGuard.h"

#include "adapters/qt/src/qtGuarded.h"
#include "framework/bgTask/bgJob.h"
#include "framework/bgTask/bgManager.h"

#include <QEvent>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QWidget>
#include <vector>

namespace Ko {
namespace {

// User-interface jobs, such as those that draw a view, are short and concern nobody.
QStringList namesOfRunning() {
    BgManager& manager = BgManager::getInstance();
    QStringList names;
    for (RCShdPtr<BgJob> const& job : manager.getJobs())
        if (job->isRunning() && !manager.isUiJob(*job)) names.append(QString::fromStdString(job->getName()));
    return names;
}

bool askToCancel(QWidget* window, QStringList const& names) {
    QMessageBox box(QMessageBox::Question, QtCloseGuard::tr("Jobs are running"),
        QtCloseGuard::tr("Cancel them and close?"), QMessageBox::NoButton, window);
    box.setInformativeText(names.mid(0, 5).join(u'\n') + (names.size() > 5 ? QStringLiteral("\n\u2026") : QString()));
    auto* const cancel = box.addButton(QtCloseGuard::tr("Cancel Jobs and Close"), QMessageBox::AcceptRole);
    box.setEscapeButton(box.addButton(QtCloseGuard::tr("Keep Open"), QMessageBox::RejectRole));
    box.exec();
    return box.clickedButton() == cancel;
}

} // namespace

/// Shared with the event that ends the wait, which may come after the end of the guard.
struct QtCloseGuard::State {
    enum class Step { Open, Asking, Waiting, Closing };

    QtCloseGuard* guard;
    QWidget* window;
    Step step = Step::Open;
    std::vector<Question> questions = {};
    std::function<bool(QStringList const&)> jobsQuestion = {};
    std::chrono::milliseconds grace = std::chrono::seconds(5);
};

QtCloseGuard::QtCloseGuard(QWidget& window) : QObject(&window), _state(std::make_shared<State>(State{this, &window})) {
    _state->jobsQuestion = [&window](QStringList const& names) { return askToCancel(&window, names); };
    window.installEventFilter(this);
}

QtCloseGuard::~QtCloseGuard() {
    _state->guard = nullptr;
}

void QtCloseGuard::addQuestion(Question question) {
    _state->questions.push_back(std::move(question));
}
void QtCloseGuard::setJobsQuestion(std::function<bool(QStringList const& names)> question) {
    _state->jobsQuestion = std::move(question);
}
void QtCloseGuard::setGrace(std::chrono::milliseconds grace) noexcept {
    _state->grace = grace;
}
bool QtCloseGuard::isClosing() const noexcept {
    return _state->step == State::Step::Waiting || _state->step == State::Step::Closing;
}

bool QtCloseGuard::eventFilter(QObject* watched, QEvent* event) {
    if (watched != _state->window || event->type() != QEvent::Close || _state->step == State::Step::Closing)
        return QObject::eventFilter(watched, event);
    event->ignore();
    if (_state->step != State::Step::Open) return true;
    auto const state = _state; // a question may destroy the window
    state->step = State::Step::Asking;
    bool const isAgreed = agree();
    if (!state->guard) return true;
    state->step = isAgreed ? State::Step::Waiting : State::Step::Open;
    if (isAgreed) stopJobs();
    return true;
}

bool QtCloseGuard::agree() {
    auto const state = _state;
    bool isAgreed = true;
    auto const failure = qtFailureOf([&] {
        for (Question const& question : std::vector(state->questions))
            if (isAgreed) isAgreed = question() && state->guard;
        QStringList const names = namesOfRunning();
        if (isAgreed && !names.isEmpty() && state->jobsQuestion) isAgreed = state->jobsQuestion(names) && state->guard;
    });
    // A question that fails has not been answered.
    return isAgreed && !failure;
}

void QtCloseGuard::stopJobs() {
    if (QStringList const running = namesOfRunning(); !running.isEmpty()) Q_EMIT waiting(running);
    // The window closes by an event of its own, never inside the event that asked for it.
    BgManager::getInstance().stopAllJobs(_state->grace, [state = _state](Vector<RCShdPtr<BgJob>> const& unended) {
        QStringList names;
        for (RCShdPtr<BgJob> const& job : unended)
            names.append(QString::fromStdString(job->getName()));
        if (state->guard) state->guard->finish(names);
    });
}

void QtCloseGuard::finish(QStringList const& unended) {
    auto const state = _state;
    state->step = State::Step::Closing;
    Q_EMIT closing(unended);
    if (!state->guard) return;
    // The window itself may still refuse, in its own handler.
    QPointer<QWidget> const window = state->window;
    window->close();
    // A window that is shown again later is guarded again.
    state->step = State::Step::Open;
}

} // namespace Ko
