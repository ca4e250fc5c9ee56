#pragma once

#include "framework/command/cmSized.h"

#include <typeinfo>

namespace Ko {

/// Finds the sizes of commands, as `CmSized::of` does.
///
/// A cast to an interface that is no base of `CmCommand` is slow, and neighbouring commands are mostly of one class. So it
/// remembers where the objects of the last class have the interface.
class CmSizeFinder {
public:
    /// In bytes.
    std::size_t operator()(CmCommand const& command) noexcept;

private:
    void lookUp(CmCommand const& command, std::type_info const& type) noexcept;

    std::type_info const* _type = nullptr;
    bool _isSized = false;
    // A macro of a derived class, whose members are asked.
    bool _isMacro = false;
    // From the command to its interface, in bytes.
    std::ptrdiff_t _offset = 0;
};

} // namespace Ko
