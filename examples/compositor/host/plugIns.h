#pragma once

#include <iosfwd>

namespace compositor {

/// The plug-ins of the host: operators (`*.op.so`) and generators (`*.gen.so`) in the plug-in directories. One object per
/// process, created before another object sets the handler for messages, which this class uses while it loads.
class PlugIns {
public:
    /// Loads the plug-ins. Writes a line to `errors` for each that is refused or fails, and continues with the others.
    explicit PlugIns(std::ostream& errors);
};

} // namespace compositor
