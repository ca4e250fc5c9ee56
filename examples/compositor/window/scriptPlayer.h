#pragma once

#include "window/session.h"

#include <chrono>

namespace compositor::window {

/// Plays a script in a window, statement by statement, so that it can be watched. Its lines and errors are signals. The jobs of the script
/// are those of the window.
class ScriptPlayer : public QObject {
    Q_OBJECT

public:
    /// @param pause before each statement.
    ScriptPlayer(Session& session, std::chrono::milliseconds pause, QObject* parent = nullptr);

    /// Returns at the end of the script. The window is drawn meanwhile, and takes no input.
    /// @returns whether there was no error.
    bool play(QString const& path);
    /// Ends the script before its next statement.
    void stop() { _isStopped = true; }
    [[nodiscard]] bool isPlaying() const { return _isPlaying; }

Q_SIGNALS:
    void line(QString const& text);
    void fault(QString const& text);

private:
    bool waitBeforeNext();

    Session& _session;
    std::chrono::milliseconds _pause;
    bool _isStopped = false;
    bool _isPlaying = false;
};

} // namespace compositor::window
