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

    /// The size of any command: 0 without this interface; for a macro, the sum of its members.
    [[nodiscard]] static std::size_t of(CmCommand const& command) noexcept;

protected:
    CmSized() = default;
    CmSized(CmSized const&) = default;
    CmSized& operator=(CmSized const&) = default;
    virtual ~CmSized();
};

} // namespace Ko
