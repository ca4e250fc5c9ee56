#include "framework/actions/src/actQuery.h"

#include <algorithm>

namespace Ko {

void ActFindings::endAction(ActAction const& action) {
    if (_targets.size() == _ended) return;
    _actions.push_back({action.getDescription(), &action, _ended, _targets.size()});
    _ended = _targets.size();
}

Vector<ActFindings::Action const*> ActFindings::sorted() const {
    Vector<Action const*> result;
    result.reserve(_actions.size());
    for (Action const& found : _actions)
        result.push_back(&found);
    std::sort(result.begin(), result.end(), [](Action const* a, Action const* b) {
        int const order = a->description.compare(b->description);
        return order < 0 || (order == 0 && a < b);
    });
    return result;
}

} // namespace Ko
