#include "framework/command/src/cmSizeFinder.h"

#include "framework/command/cmMacroCommand.h"

namespace Ko {

namespace {

template <class Object>
std::byte const* addressOf(Object const& object) noexcept {
    return static_cast<std::byte const*>(static_cast<void const*>(&object));
}

} // namespace

std::size_t CmSizeFinder::operator()(CmCommand const& command) noexcept {
    std::type_info const& type = typeid(command);
    if (&type == &typeid(CmMacroCommand)) {
        auto const& macro = static_cast<CmMacroCommand const&>(command);
        std::size_t sum = 0;
        for (int index = 0; index < macro.getSize(); ++index)
            sum += (*this)(*macro.getCommand(index));
        return sum;
    }
    if (&type != _type) lookUp(command, type);
    if (_isMacro) return CmSized::of(command);
    if (!_isSized) return 0;
    return static_cast<CmSized const*>(static_cast<void const*>(addressOf(command) + _offset))->getMemorySize();
}

void CmSizeFinder::lookUp(CmCommand const& command, std::type_info const& type) noexcept {
    auto const* const sized = dynamic_cast<CmSized const*>(&command);
    _type = &type;
    _isSized = sized != nullptr;
    _isMacro = !sized && dynamic_cast<CmMacroCommand const*>(&command);
    _offset = sized ? addressOf(*sized) - addressOf(command) : 0;
}

} // namespace Ko
