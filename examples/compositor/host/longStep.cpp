#include "host/longStep.h"

#include "framework/command/cmUndoGuard.h"

#include <utility>

namespace compositor {

using Ko::CmUndoGuard;
using Ko::PiExecParam;

LongStep::LongStep(Editor& editor, std::string description) : _editor(editor), _description(std::move(description)) {
    CmUndoGuard const guard(_editor.history(), _description, PiExecParam::BEGIN_TRANSITION);
}

LongStep::~LongStep() {
    try {
        if (_isOpen) cancel();
    } catch (std::exception const&) {
        // The history has logged the fault.
    }
}

void LongStep::edit(std::function<void()> const& edits) const {
    CmUndoGuard const guard(_editor.history(), _description, PiExecParam::TRANSITION);
    edits();
}

void LongStep::end() {
    _isOpen = false;
    CmUndoGuard const guard(_editor.history(), _description, PiExecParam::END_TRANSITION);
}

Ko::CmReplay LongStep::cancel() {
    _isOpen = false;
    return CmUndoGuard::abandonLongTransition();
}

} // namespace compositor
