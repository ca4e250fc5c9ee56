#include "framework/bgTask/bgProgressReport.h"

namespace Ko {

BgProgressReport::~BgProgressReport() = default;

} // namespace Ko
