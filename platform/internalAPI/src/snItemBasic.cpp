#include "internalAPI/snItemBasic.h"

#include "internalAPI/snItemBasic.imp.h"

namespace Ko {

template class SnItemBasic<LiString>;

} // namespace Ko
