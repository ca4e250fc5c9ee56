#include "base/inVariable.h"

#include "base/inInitMgr.h"
#include "base/src/inConfiguration.h"

#include <cstdlib>

namespace Ko {

InVariableBase::InVariableBase(InPackageInit& owner, std::string key, std::string description)
    : _key(std::move(key)), _description(std::move(description)) {
    owner._variables.push_back(this);
}

void InVariableBase::resolve() {
    InConfiguration const& configuration = InConfiguration::getInstance();
    if (_value = configuration.findArgument(_argumentAliases); _value) return;
    for (std::string const& alias : _environmentAliases)
        if (char const* const value = std::getenv(alias.c_str())) {
            _value = value;
            return;
        }
    _value = configuration.findKey(_key);
}

std::string const& InVariableBase::value() const {
    if (!_value) throw InInitEx("base\\src\\inVariable", __LINE__, "The variable \"" + _key + "\" has no value.");
    return *_value;
}

} // namespace Ko
