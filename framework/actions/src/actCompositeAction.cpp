#include "framework/actions/actCompositeAction.h"

#include "framework/actions/actRegistry.h"

namespace Ko {

namespace {

/// The question whether a composite is valid, while it is being answered: the members that are asked may be composites
/// that ask in turn.
class Question {
public:
    Question(ActAction const& composite, SnItem const* target, SnItem const* input) noexcept
        : _composite(composite), _target(target), _input(input), _outer(_innermost) {
        _innermost = this;
    }
    ~Question() { _innermost = _outer; }
    Question(Question const&) = delete;
    Question& operator=(Question const&) = delete;

    /// Whether the same question is asked within itself, which would go on for ever.
    bool isRepeated() const noexcept {
        for (Question const* outer = _outer; outer; outer = outer->_outer)
            if (&outer->_composite == &_composite && outer->_target == _target && outer->_input == _input) return true;
        return false;
    }

private:
    static inline Question* _innermost = nullptr;

    ActAction const& _composite;
    SnItem const* _target;
    SnItem const* _input;
    Question* _outer;
};

} // namespace

ActCompositeAction::ActCompositeAction() = default;
ActCompositeAction::~ActCompositeAction() = default;

bool ActCompositeAction::inputValid(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const {
    Question const question(*this, target.get(), input.get());
    if (question.isRepeated()) return false;
    return !ActRegistry::getInstance().getActions(target, input, getDescription(), ActRegistry::FirstOnly).atEnd();
}

void ActCompositeAction::performAction(
    RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&, RCShdPtr<SnSelection> const&) const {}

} // namespace Ko
