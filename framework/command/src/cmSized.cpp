#include "framework/command/cmSized.h"

#include "framework/command/cmMacroCommand.h"

namespace Ko {

CmSized::~CmSized() = default;

std::size_t CmSized::of(CmCommand const& command) noexcept {
    if (auto const* const sized = dynamic_cast<CmSized const*>(&command)) return sized->getMemorySize();
    auto const* const macro = dynamic_cast<CmMacroCommand const*>(&command);
    std::size_t sum = 0;
    for (int index = 0; macro && index < macro->getSize(); ++index)
        sum += of(*macro->getCommand(index));
    return sum;
}

} // namespace Ko
