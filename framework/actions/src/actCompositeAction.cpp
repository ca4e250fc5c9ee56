#include "framework/actions/actCompositeAction.h"

#include "framework/actions/src/actQuery.h"

#include <array>
#include <map>
#include <utility>

namespace Ko {

namespace {

/// The answers of nested composites about one target and one input, kept until the outermost of them has returned: members
/// of a composite may be composites, which ask their own members in turn. A composite that is reached again while it asks
/// adds nothing to itself; one that several others share is asked once. Composites are distinguished by their descriptions,
/// since these determine their members.
class Question {
public:
    Question(SnItem const* target, SnItem const* input) noexcept
        : _target(target), _input(input), _outer(std::exchange(_innermost, this)) {}
    ~Question() { _innermost = _outer; }
    Question(Question const&) = delete;
    Question& operator=(Question const&) = delete;

    /// The answers about the two that are being collected; null if there are none.
    static Question* find(SnItem const* target, SnItem const* input) noexcept {
        Question* question = _innermost;
        while (question && !(question->_target == target && question->_input == input))
            question = question->_outer;
        return question;
    }

    /// The result of the first call of `ask`; false while that call lasts.
    template <class Ask>
    bool isValid(LiString const& composite, Ask ask) {
        auto const [answer, isNew] = _answers.try_emplace(composite, false);
        if (isNew) answer->second = ask();
        return answer->second;
    }

private:
    static inline Question* _innermost = nullptr;

    SnItem const* const _target;
    SnItem const* const _input;
    Question* const _outer;
    std::map<LiString, bool> _answers;
};

} // namespace

ActCompositeAction::ActCompositeAction() = default;
ActCompositeAction::~ActCompositeAction() = default;

bool ActCompositeAction::inputValid(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const {
    LiString const name = getDescription();
    auto const ask = [&] { return ActQuery(input, name).getFirst(std::array{target}).has_value(); };
    if (Question* const outer = Question::find(target.get(), input.get())) return outer->isValid(name, ask);
    return Question(target.get(), input.get()).isValid(name, ask);
}

void ActCompositeAction::performAction(
    RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&, RCShdPtr<SnSelection> const&) const {}

} // namespace Ko
