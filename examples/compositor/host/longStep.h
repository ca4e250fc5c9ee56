#pragma once

#include "framework/command/cmReplay.h"
#include "host/editor.h"

#include <functional>
#include <string>

namespace compositor {

/// One step of the history that is made by several events, such as a drag. Between them the loop of the host runs. One at a time,
/// and not inside a guard.
class LongStep {
public:
    /// Begins the step. @param description in the history.
    LongStep(Editor& editor, std::string description);
    /// Cancels the step unless it has ended.
    ~LongStep();
    LongStep(LongStep const&) = delete;
    LongStep& operator=(LongStep const&) = delete;

    /// Runs edits that belong to the step.
    void edit(std::function<void()> const& edits) const;
    /// Ends the step, which is logged if it changed something.
    void end();
    /// Takes the step back. Document and history are as before it, unless a command fails on the way.
    Ko::CmReplay cancel();

private:
    Editor& _editor;
    std::string _description;
    bool _isOpen = true;
};

} // namespace compositor
