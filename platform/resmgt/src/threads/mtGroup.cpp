#include "resmgt/mtGroup.h"

#include "resmgt/mtGroup.imp.h"

namespace Ko {

template class MtGroup<std::queue<MtTask>>;

} // namespace Ko
