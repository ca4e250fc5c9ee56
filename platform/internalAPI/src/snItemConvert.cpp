#include "internalAPI/snItemConvert.h"

#include "internalAPI/snItemType.imp.h"

KO_ITEM_TYPE(bool)
KO_ITEM_TYPE(double)

namespace Ko {

template class SnIsItem<LiString>;
template class SnItemConvert<LiString>;

} // namespace Ko
