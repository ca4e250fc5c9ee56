#include "base/exBase.h"

#include "base/typeName.h"

#include <typeinfo>

namespace Ko {

ExBase::ExBase(char const* file, int line, std::string reason) : _reason(std::move(reason)), _file(file), _line(line) {}
ExBase::ExBase(ExBase const&) = default;
ExBase& ExBase::operator=(ExBase const&) = default;
ExBase::~ExBase() = default;

char const* ExBase::what() const noexcept {
    return _reason.c_str();
}

std::string ExBase::getTypeName() const {
    return typeNameOf(typeid(*this).name());
}

void ExBase::addContext(std::string const& context) {
    _reason.insert(0, context + ": ");
}

ExAssertionFailed::ExAssertionFailed(char const* file, int line, std::string expression)
    : ExBase(file, line, std::move(expression)) {}
ExBase* ExAssertionFailed::clone() const {
    return copyOf(*this);
}
void ExAssertionFailed::raise() const {
    throw *this;
}

ExProgramAborted::ExProgramAborted(char const* file, int line, std::string reason)
    : ExBase(file, line, std::move(reason)) {}
ExBase* ExProgramAborted::clone() const {
    return copyOf(*this);
}
void ExProgramAborted::raise() const {
    throw *this;
}

ExInternalError::ExInternalError(char const* file, int line, std::string reason)
    : ExBase(file, line, std::move(reason)) {}
ExBase* ExInternalError::clone() const {
    return copyOf(*this);
}
void ExInternalError::raise() const {
    throw *this;
}

ExNullPtr::ExNullPtr(char const* file, int line, std::string reason) : ExBase(file, line, std::move(reason)) {}
ExBase* ExNullPtr::clone() const {
    return copyOf(*this);
}
void ExNullPtr::raise() const {
    throw *this;
}

} // namespace Ko
