#pragma once

#include <iosfwd>

namespace compositor {

/// Writes a table of the plug-ins, by directory: what each declares, and its state with the reason.
void listPlugIns(std::ostream& output);

} // namespace compositor
