#include "base/inSingleton.h"

#include "base/typeName.h"

namespace Ko {

InSingletonEx::InSingletonEx(char const* file, int line, char const* type, char const* problem)
    : ExBase(file, line, "The singleton " + typeNameOf(type) + problem) {}

InSingletonEx::ExAlreadyInitialized::ExAlreadyInitialized(char const* file, int line, char const* type)
    : InSingletonEx(file, line, type, " is initialised already.") {}
ExBase* InSingletonEx::ExAlreadyInitialized::clone() const {
    return copyOf(*this);
}
void InSingletonEx::ExAlreadyInitialized::raise() const {
    throw *this;
}

InSingletonEx::ExNotInitialized::ExNotInitialized(char const* file, int line, char const* type)
    : InSingletonEx(file, line, type, " is not initialised.") {}
ExBase* InSingletonEx::ExNotInitialized::clone() const {
    return copyOf(*this);
}
void InSingletonEx::ExNotInitialized::raise() const {
    throw *this;
}

InSingletonEx::ExAlreadyDestroyed::ExAlreadyDestroyed(char const* file, int line, char const* type)
    : InSingletonEx(file, line, type, " was destroyed already.") {}
ExBase* InSingletonEx::ExAlreadyDestroyed::clone() const {
    return copyOf(*this);
}
void InSingletonEx::ExAlreadyDestroyed::raise() const {
    throw *this;
}

} // namespace Ko
