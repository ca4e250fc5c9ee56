#include "window/scriptPlayer.h"

#include "script/interpreter.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <fstream>
#include <functional>
#include <ostream>
#include <streambuf>

namespace compositor::window {

namespace {

/// Passes whole lines on.
class LineBuffer final : public std::streambuf {
public:
    explicit LineBuffer(std::function<void(QString const& line)> sink) : _sink(std::move(sink)) {}

private:
    int_type overflow(int_type character) override {
        if (character == '\n')
            _sink(QString::fromStdString(std::exchange(_line, {})));
        else if (character != traits_type::eof())
            _line += traits_type::to_char_type(character);
        return traits_type::not_eof(character);
    }

    std::function<void(QString const& line)> _sink;
    std::string _line;
};

void waitForEvents() {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::ExcludeUserInputEvents);
}

} // namespace

ScriptPlayer::ScriptPlayer(Session& session, std::chrono::milliseconds pause, QObject* parent)
    : QObject(parent), _session(session), _pause(pause) {}

bool ScriptPlayer::play(QString const& path) {
    std::ifstream script(path.toStdString());
    if (!script) {
        Q_EMIT fault(tr("%1 cannot be read").arg(path));
        return false;
    }
    LineBuffer lines([this](QString const& text) { Q_EMIT line(text); });
    LineBuffer faults([this](QString const& text) { Q_EMIT fault(text); });
    std::ostream output(&lines), errors(&faults);
    Jobs jobs(output, errors, Jobs::Bars::NotShown, waitForEvents);
    Interpreter interpreter(_session.editor(), jobs, output, errors);
    interpreter.setPace([this](Statement const&) { return waitBeforeNext(); });
    _isPlaying = true;
    _isStopped = false;
    bool const isWell = interpreter.runScript(script, path.toStdString());
    _isPlaying = false;
    return isWell;
}

bool ScriptPlayer::waitBeforeNext() {
    QEventLoop loop;
    QTimer::singleShot(_pause, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return !_isStopped;
}

} // namespace compositor::window
