#pragma once

#include "base/inPackageInit.h"

#include <vector>

/// Tags of packages, one for each library and module. Tags of plug-ins and hosts may lie in other namespaces.
namespace KoInit {}

/// The framework and the libraries below it.
namespace Ko {

/// Base of the package whose identity is `Tag`, an empty type that is named like the package:
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
    /// The identity of the package, for dependencies. A library exports a specialisation of this function for its package,
    /// so that a library that names the package is linked with it and loads it.
    [[nodiscard]] static Type getType() { return typeid(Tag); }

    void setInitialized(bool initialized) override { _initialized = initialized; } ///< Called by the start-up.
    /// Whether the package may be used: from the return of the initialise hook to the call of the finalise hook.
    [[nodiscard]] bool isInitialized() const noexcept { return _initialized; }

protected:
    /// Registers the package. The object must not be const, as the start-up changes it.
    InInit(std::string name, std::vector<Type> const& dependencies) : InPackageInit(std::move(name), getType()) {
        registerPackage();
        for (Type const package : dependencies)
            addDependency(package);
    }
    ~InInit() override = default;

private:
    bool _initialized = false;
};

/// The identities of packages, by their tags.
template <class... Tags>
[[nodiscard]] std::vector<InPackageInit::Type> packagesOf() {
    return {InInit<Tags>::getType()...};
}

} // namespace Ko
