#pragma once

#include <iosfwd>

namespace compositor {

/// The plug-ins of the host: operators (`*.op.so`) and generators (`*.gen.so`) in the plug-in directories. One object per
/// process, created before `Jobs`: both set the handler for messages, this class only while it loads.
class PlugIns {
public:
    /// Loads the plug-ins. Writes a line to `errors` for each that is refused or fails, and continues with the others.
    explicit PlugIns(std::ostream& errors);
    /// Writes a table of the plug-ins, by directory: what each declares, and its state with the reason.
    void list(std::ostream& output) const;
};

} // namespace compositor
