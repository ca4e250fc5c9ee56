#include "framework/command/cmMacroCommand.h"

#include "framework/command/cmCommandStack.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "resmgt/xmlWriter.h"

#include <algorithm>

namespace Ko {

class CmMacroCommandImp {
public:
    Vector<RCShdPtr<CmCommand>> commands;
    LiString description;
};

CmMacroCommand::CmMacroCommand() : _imp(std::make_unique<CmMacroCommandImp>()) {}
CmMacroCommand::~CmMacroCommand() = default;

RCShdPtr<CmMacroCommand> CmMacroCommand::create() {
    return RCShdPtr<CmMacroCommand>::create();
}

void CmMacroCommand::add(RCShdPtr<CmCommand> cmd) {
    _imp->commands.push_back(std::move(cmd));
}

RCShdPtr<CmCommand> CmMacroCommand::removeLast() {
    RCShdPtr<CmCommand> last = std::move(_imp->commands.back());
    _imp->commands.pop_back();
    return last;
}

bool CmMacroCommand::isEmpty() const noexcept {
    return _imp->commands.empty();
}

void CmMacroCommand::clear() noexcept {
    _imp->commands.clear();
}

void CmMacroCommand::makeRoom(std::size_t count) {
    auto& commands = _imp->commands;
    std::size_t const needed = commands.size() + count;
    if (needed > commands.capacity()) commands.reserve(std::max<std::size_t>({4, needed, 2 * commands.size()}));
}

void CmMacroCommand::setDescription(LiString const& text) {
    _imp->description = text;
}
LiString const& CmMacroCommand::getOwnDescription() const noexcept {
    return _imp->description;
}

LiString CmMacroCommand::getDescription() const {
    if (!_imp->description.empty() || isEmpty()) return _imp->description;
    LiString joined;
    for (RCShdPtr<CmCommand> const& command : _imp->commands)
        if (LiString const description = command->getDescription(); !description.empty())
            joined += (joined.empty() ? "" : "; ") + description;
    return "Macro: " + joined;
}

// What the commands do through undo guards of their own is part of this macro already.
void CmMacroCommand::executeInternal() {
    CmUndoGuardNoLog const guard(false);
    for (RCShdPtr<CmCommand> const& command : _imp->commands)
        CmCommandStack::executeStatic(command);
}

void CmMacroCommand::unexecuteInternal() {
    CmUndoGuardNoLog const guard(false);
    for (auto command = _imp->commands.rbegin(); command != _imp->commands.rend(); ++command)
        CmCommandStack::unexecuteStatic(*command);
}

void CmMacroCommand::dump(XmlWriter& writer) const {
    writer.openTag("MacroCommand");
    if (!_imp->description.empty()) writer.writeTag("Description", _imp->description);
    for (RCShdPtr<CmCommand> const& command : _imp->commands)
        command->dump(writer);
    writer.closeTag();
}

} // namespace Ko
