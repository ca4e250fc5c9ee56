#pragma once

#include "base/rcShdPtr.h"

#include <deque>
#include <functional>
#include <vector>

/// The minimum of a history: reference counted commands in a deque, a virtual call, one callback.
namespace KoBench::Least {

class Command : public Ko::RCBase {
public:
    virtual void execute() = 0;
    virtual void unexecute() = 0;
};

class Stack {
public:
    void executeAndLog(Ko::RCShdPtr<Command> const& command) {
        command->execute();
        commands.push_back(command);
        ++current;
        changed();
    }
    void undo() {
        commands[--current]->unexecute();
        changed();
    }
    void redo() {
        commands[current++]->execute();
        changed();
    }

    std::deque<Ko::RCShdPtr<Command>> commands;
    std::size_t current = 0;
    std::vector<std::function<void()>> listeners{[this] { ++calls; }};
    long calls = 0;

private:
    void changed() {
        for (auto const& listener : listeners)
            listener();
    }
};

} // namespace KoBench::Least
