#pragma once

#include "base/inPackageInit.h"

#include <vector>

/// Tags that stand for packages, one for each library and module. Those of plug-ins and hosts may lie elsewhere.
namespace KoInit {}

/// All of the framework.
namespace Ko {

/// Base of the package that `Tag` stands for. `Tag` is an empty type in the namespace `KoInit`, named like the package:
///
///     namespace KoInit { struct scene {}; }
///
///     class SceneInit final : public Ko::InInit<KoInit::scene> {
///     public:
///         SceneInit() : InInit("scene", Ko::packagesOf<KoInit::command, KoInit::base>()) {}
///         void initialize() override { ... }
///         void finalize() override { ... }
///     };
///     SceneInit scene; // in the unnamed namespace of a source of the library
template <class Tag>
class InInit : public InPackageInit {
public:
    /// A library declares a specialisation of this for its package and exports it, so that whoever names the package is
    /// linked with the library and loads it.
    static Type getType() { return typeid(Tag); }

    void setInitialized(bool initialized) override { _initialized = initialized; }
    /// From the return of the initialise hook to the call of the finalise hook.
    bool isInitialized() const noexcept { return _initialized; }

protected:
    /// Registers the package.
    InInit(std::string name, std::vector<Type> const& dependencies) : InPackageInit(std::move(name), getType()) {
        registerPackage();
        for (Type const package : dependencies)
            addDependency(package);
    }
    ~InInit() override = default;

private:
    bool _initialized = false;
};

/// The type records of the packages that the tags stand for.
template <class... Tags>
std::vector<InPackageInit::Type> packagesOf() {
    return {InInit<Tags>::getType()...};
}

} // namespace Ko
