#include "framework/actions/actTypedAction.h"

#include "framework/actions/actTypedAction.imp.h"

namespace Ko {

template class ActTypedAction<LiString, LiString>;

} // namespace Ko
