#pragma once

#include "framework/command/cmCommand.h"
#include "framework/command/cmCommandStack.h"
#include "framework/command/cmUndoGuardExtension.h"
#include "internalAPI/cbDispatcher.h"

#include <functional>
#include <string>
#include <vector>

namespace KoTest {

/// The recorded events, in order.
using Journal = std::vector<std::string>;

/// Records "+name" when it is executed and "-name" when it is unexecuted, then calls a function of the test.
class RecordingCommand : public Ko::CmCommand {
public:
    static Ko::RCShdPtr<RecordingCommand> create(std::string name, Journal& journal) {
        return Ko::RCShdPtr<RecordingCommand>::create(std::move(name), journal);
    }
    RecordingCommand(std::string name, Journal& journal) : _name(std::move(name)), _journal(journal) {}
    ~RecordingCommand() override {
        if (onDestroy) onDestroy();
    }

    Ko::LiString getDescription() const override { return _name; }

    std::function<void()> onExecute;
    std::function<void()> onUnexecute;
    std::function<void()> onDestroy;

protected:
    void executeInternal() override { record("+", onExecute); }
    void unexecuteInternal() override { record("-", onUnexecute); }

private:
    void record(char const* sign, std::function<void()> const& then) {
        _journal.push_back(sign + _name);
        if (then) then();
    }

    std::string _name;
    Journal& _journal;
};

/// A handler that calls a function.
class FunctionHandler : public Ko::CbHandler<Ko::CbEmptyType> {
public:
    explicit FunctionHandler(std::function<void()> function) : _function(std::move(function)) {}
    void call(Ko::CbEmptyType const&) override { _function(); }

private:
    std::function<void()> _function;
};

/// Records "begin" or "end", its name, and "!" for a long transition; then calls a function of the test.
class RecordingExtension : public Ko::CmUndoGuardExtension {
public:
    RecordingExtension(std::string name, Journal& journal) : _name(std::move(name)), _journal(journal) {}
    void beginOutermostGuard(bool isLong) override { record("begin ", isLong, onBegin); }
    void endOutermostGuard(bool isLong) override { record("end ", isLong, onEnd); }

    std::function<void()> onBegin;
    std::function<void()> onEnd;

private:
    void record(char const* hook, bool isLong, std::function<void()> const& then) {
        _journal.push_back(hook + _name + (isLong ? "!" : ""));
        if (then) then();
    }

    std::string _name;
    Journal& _journal;
};

/// The stack's elements from bottom to top, with "*" before the current one; "0" stands for "Initial State".
inline std::string history(Ko::CmCommandStack const& stack) {
    std::string result;
    for (auto command = stack.getBegin(); command != stack.getEnd(); ++command)
        result += (command == stack.getCurrent() ? "*" : "") +
                  (command == stack.getBegin() ? "0" : (*command)->getDescription()) + " ";
    result.pop_back();
    return result;
}

} // namespace KoTest
