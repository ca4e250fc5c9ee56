#include "resmgt/obHints.h"

namespace Ko {

ObHint::~ObHint() = default;

void ObHints::add(RCShdPtr<ObHint> hint) {
    if (hint.isNull()) RCExUtil::throwExNullPtr(typeid(ObHint).name());
    if (_size < _first.size())
        _first[_size] = std::move(hint);
    else
        _others.push_back(std::move(hint));
    ++_size;
}

std::unique_ptr<ObHints> ObHints::copy() const {
    auto hints = std::make_unique<ObHints>();
    for (std::size_t index = 0; index < _size; ++index)
        hints->add((*this)[index]);
    hints->_isDeferred = _isDeferred;
    return hints;
}

} // namespace Ko
