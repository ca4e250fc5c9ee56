#pragma once

#include "framework/command/cmCommand.h"

#include <cstddef>

namespace Ko {

/// Optional interface of a command that holds much memory, such as a picture: derive from it beside `CmCommand`. A history with a
/// budget (`CmCommandStack::setMaxMemory`) counts it.
class KO_FRAMEWORK_API CmSized {
public:
    /// The memory that the command holds, in bytes. Asked once, when the command is logged.
    [[nodiscard]] virtual std::size_t getMemorySize() const noexcept = 0;

    /// The size that a command tells: 0 for a command without this interface, the sum of its members for a macro.
    [[nodiscard]] static std::size_t of(CmCommand const& command) noexcept;

protected:
    CmSized() = default;
    CmSized(CmSized const&) = default;
    CmSized& operator=(CmSized const&) = default;
    virtual ~CmSized();
};

} // namespace Ko
