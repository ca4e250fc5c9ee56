#include "internalAPI/cbDispatcher.h"

#include "internalAPI/cbDispatcher.imp.h"

namespace Ko {

template class CbDispatcher<CbEmptyType>;

} // namespace Ko
