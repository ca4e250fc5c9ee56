#include "pluginAPI/piCommandStack.h"

namespace Ko {

PiCommandStack::PiCommandStack() = default;
PiCommandStack::~PiCommandStack() = default;

} // namespace Ko
