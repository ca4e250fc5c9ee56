#include "framework/command/cmMacroCommand.h"

#include "base/assertions.h"
#include "framework/command/src/cmOpenGuards.h"
#include "resmgt/xmlWriter.h"

#include <algorithm>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmMacroCommand"};

} // namespace

class CmMacroCommandImp {
public:
    Vector<RCShdPtr<CmCommand>> commands;
    LiString description;
    // How many loops over the commands are running.
    int loops = 0;

    Vector<RCShdPtr<CmCommand>>& getChangeable() {
        source.require(loops == 0, "!isRunning()");
        return commands;
    }
};

namespace {

/// Keeps the list of commands as it is while they run: commands are user code, which may try to change it.
class Loop {
public:
    explicit Loop(CmMacroCommandImp& imp) noexcept : _imp(imp) { ++_imp.loops; }
    ~Loop() { --_imp.loops; }
    Loop(Loop const&) = delete;
    Loop& operator=(Loop const&) = delete;

private:
    CmMacroCommandImp& _imp;
};

} // namespace

CmMacroCommand::CmMacroCommand() : _imp(std::make_unique<CmMacroCommandImp>()) {}
CmMacroCommand::~CmMacroCommand() = default;

RCShdPtr<CmMacroCommand> CmMacroCommand::create() {
    return RCShdPtr<CmMacroCommand>::create();
}

void CmMacroCommand::add(RCShdPtr<CmCommand> cmd) {
    _imp->getChangeable().push_back(std::move(cmd));
}

RCShdPtr<CmCommand> CmMacroCommand::removeLast() {
    auto& commands = _imp->getChangeable();
    source.require(!commands.empty(), "!isEmpty()");
    RCShdPtr<CmCommand> last = std::move(commands.back());
    commands.pop_back();
    return last;
}

bool CmMacroCommand::isEmpty() const noexcept {
    return _imp->commands.empty();
}

int CmMacroCommand::getSize() const noexcept {
    return static_cast<int>(_imp->commands.size());
}

RCShdPtr<CmCommand> const& CmMacroCommand::getCommand(int position) const noexcept {
    return _imp->commands[static_cast<std::size_t>(position)];
}

// The commands are destroyed when the macro is empty: a destructor may use the macro.
void CmMacroCommand::clear() {
    Vector<RCShdPtr<CmCommand>> removed;
    removed.swap(_imp->getChangeable());
}

void CmMacroCommand::makeRoom(std::size_t count) {
    auto& commands = _imp->getChangeable();
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
    Loop const loop(*_imp);
    LiString joined;
    for (RCShdPtr<CmCommand> const& command : _imp->commands)
        if (LiString const description = command->getDescription(); !description.empty())
            joined += (joined.empty() ? "" : "; ") + description;
    return "Macro: " + joined;
}

// Logging is suspended once for all commands: what they do through undo guards is a part of this macro already.
void CmMacroCommand::executeInternal() {
    OpenGuards::NoLogScope const guard;
    Loop const loop(*_imp);
    for (RCShdPtr<CmCommand> const& command : _imp->commands)
        command->execute();
}

void CmMacroCommand::unexecuteInternal() {
    OpenGuards::NoLogScope const guard;
    Loop const loop(*_imp);
    for (auto command = _imp->commands.rbegin(); command != _imp->commands.rend(); ++command)
        (*command)->unexecute();
}

void CmMacroCommand::dump(XmlWriter& writer) const {
    Loop const loop(*_imp);
    writer.openTag("MacroCommand");
    if (!_imp->description.empty()) writer.writeTag("Description", _imp->description);
    for (RCShdPtr<CmCommand> const& command : _imp->commands)
        command->dump(writer);
    writer.closeTag();
}

} // namespace Ko
