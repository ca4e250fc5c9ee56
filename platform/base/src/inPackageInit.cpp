#include "base/inPackageInit.h"

#include "base/src/inRegistry.h"

namespace Ko {

InPackageInit::InPackageInit(std::string name, Type type) : _name(std::move(name)), _type(type) {}
InPackageInit::~InPackageInit() {
    InRegistry::getInstance().remove(this);
}

std::string const& InPackageInit::getName() const {
    return _name;
}
void InPackageInit::addDependency(Type package) {
    _dependencies.push_back(package);
}
void InPackageInit::removeDependency(Type package) {
    std::erase(_dependencies, package);
}
void InPackageInit::postInitialize() {}
void InPackageInit::preFinalize() {}
void InPackageInit::initialize() {}
void InPackageInit::finalize() {}

void InPackageInit::registerPackage() {
    InRegistry::getInstance().add(this);
}

} // namespace Ko
