#pragma once

#include "resmgt/osFilePath.h"

#include <iosfwd>
#include <map>
#include <string>

namespace compositor {

/// The host's plug-ins: operators (`*.op.so`) and generators (`*.gen.so`) from the plug-in directories. One a process, made
/// before what sets a handler for messages, such as `Jobs`: it has one of its own while it loads.
class PlugIns {
public:
    /// Loads them. One that fails is told in a line on `errors`; the others are loaded all the same.
    explicit PlugIns(std::ostream& errors);
    /// The directories, and what became of each file there that has the name of a plug-in.
    void list(std::ostream& output) const;

private:
    std::string fateOf(Ko::OsFilePath const& path) const;

    // By path, of those that were opened: why they failed; nothing when they did not.
    std::map<std::string, std::string> _failures;
};

} // namespace compositor
