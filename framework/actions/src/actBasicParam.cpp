#include "framework/actions/actBasicParam.h"

#include "internalAPI/snItemBasic.imp.h"
#include "internalAPI/snItemConvert.imp.h"

namespace Ko {

template class SnItemBasic<ActBasicParam>;
template class SnIsItem<ActBasicParam>;
template class SnItemConvert<ActBasicParam>;

ActBasicParam::ActBasicParam() = default;
ActBasicParam::ActBasicParam(LiString const& value) : _value(value) {}

void ActBasicParam::dump(std::ostream& stream) const {
    stream << _value;
}

bool ActBasicParam::isNone(RCShdPtr<SnItem const> const& item) {
    auto const* const param = dynamic_cast<SnItemBasic<ActBasicParam> const*>(item.get());
    return param && param->get().getValue().empty();
}

void ActBasicParam::initialize() {
    SnItemConvert<ActBasicParam>::initialize();
}
void ActBasicParam::finalize() {
    SnItemConvert<ActBasicParam>::finalize();
}

} // namespace Ko
