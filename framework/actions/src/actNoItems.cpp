#include "framework/actions/src/actNoItems.h"

#include "framework/actions/actBasicParam.h"

namespace Ko {

RCShdPtr<SnItem const> ActNoItems::_target;
RCShdPtr<SnItem const> ActNoItems::_input;

void ActNoItems::initialize() {
    _target = create();
    _input = create();
}
void ActNoItems::finalize() {
    _target.reset();
    _input.reset();
}

RCShdPtr<SnItem const> ActNoItems::create() {
    return SnItemBasic<ActBasicParam>::create(ActBasicParam());
}

} // namespace Ko
