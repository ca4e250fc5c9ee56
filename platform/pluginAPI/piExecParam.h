#pragma once

namespace Ko {

/// The part that a guard plays in a long transaction: an interactive operation, such as a drag, that spans several guards.
class PiExecParam {
public:
    /// No part, so that the guard is a step of its own; or the begin, a continuation or the end.
    enum Transition : int { NOT_TRANSITION = 0, BEGIN_TRANSITION = 1, TRANSITION = 2, END_TRANSITION = 3 };

    /// By default, the guard is a step of its own.
    PiExecParam(Transition transition = NOT_TRANSITION) noexcept : _transition(transition) {}
    /// The value that was given.
    [[nodiscard]] Transition get() const noexcept { return _transition; }

private:
    Transition _transition;
};

} // namespace Ko
