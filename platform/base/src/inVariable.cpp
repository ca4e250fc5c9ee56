#include "base/inVariable.h"

#include "base/inInitMgr.h"
#include "base/src/environment.h"
#include "base/src/inConfiguration.h"

namespace Ko {

InVariableBase::InVariableBase(InPackageInit& owner, std::string key, std::string description)
    : _key(std::move(key)), _description(std::move(description)) {
    owner._variables.push_back(this);
}

void InVariableBase::resolve() {
    InConfiguration const& configuration = InConfiguration::getInstance();
    if (_value = configuration.findArgument(_argumentAliases); _value) return;
    for (std::string const& alias : _environmentAliases)
        if (_value = readEnvironment(alias); _value) return;
    _value = configuration.findKey(_key);
}

std::string const& InVariableBase::value() const {
    if (!_value) throw InInitEx("base\\src\\inVariable", __LINE__, "The variable \"" + _key + "\" has no value.");
    return *_value;
}

} // namespace Ko
