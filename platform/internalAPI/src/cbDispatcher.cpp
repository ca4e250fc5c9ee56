#include "internalAPI/cbDispatcher.h"

#include "internalAPI/cbDispatcher.imp.h"

namespace Ko {

CbConnection::CbConnection() = default;
CbConnection::~CbConnection() = default;

template class CbDispatcher<CbEmptyType>;

} // namespace Ko
