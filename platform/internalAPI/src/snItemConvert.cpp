#include "internalAPI/snItemConvert.h"

#include "internalAPI/snItemConvert.imp.h"

namespace Ko {

template class SnIsItem<LiString>;
template class SnItemConvert<LiString>;

} // namespace Ko
