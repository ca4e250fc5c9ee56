#pragma once

#include "resmgt/osFilePath.h"

#include <iosfwd>
#include <map>
#include <string>

namespace compositor {

/// The plug-ins of the host: operators (`*.op.so`) and generators (`*.gen.so`) in the plug-in directories. One object per
/// process, created before `Jobs`: both set the handler for messages, this class only while it loads.
class PlugIns {
public:
    /// Loads the plug-ins. Writes a line to `errors` for each that fails, and continues with the others.
    explicit PlugIns(std::ostream& errors);
    /// Writes the directories, and the state of each file in them that has the name of a plug-in.
    void list(std::ostream& output) const;

private:
    std::string stateOf(Ko::OsFilePath const& path) const;

    // For each opened file the reason of its failure, or an empty text.
    std::map<std::string, std::string> _failures;
};

} // namespace compositor
