#pragma once

namespace Ko {

/// What a guard is to a long transaction: an interactive operation, such as a drag, that spans several guards.
class PiExecParam {
public:
    /// A step of its own, or the begin, a part or the end of a long transaction.
    enum Transition : int { NOT_TRANSITION = 0, BEGIN_TRANSITION = 1, TRANSITION = 2, END_TRANSITION = 3 };

    /// By default a guard is a step of its own:
    PiExecParam(Transition transition = NOT_TRANSITION) noexcept : _transition(transition) {}
    Transition get() const noexcept { return _transition; }

private:
    Transition _transition;
};

} // namespace Ko
