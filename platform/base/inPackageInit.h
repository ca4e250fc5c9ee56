#pragma once

#include "base/baseApi.h"

#include <string>
#include <typeindex>
#include <vector>

namespace Ko {

class InVariableBase;

/// One package: a part of a library with work to do when the process starts and ends.
///
/// A package is one static object of a class derived from `InInit<Tag>`. It registers itself while its library is
/// loaded and is removed when the library is unloaded. The initialisation manager calls the hooks of a package after those
/// of the packages that it depends on, and its finalising hooks before theirs.
class KO_BASE_API InPackageInit {
public:
    /// The identity of a package: the type record of its tag.
    using Type = std::type_index;

    InPackageInit(InPackageInit const&) = delete;
    InPackageInit& operator=(InPackageInit const&) = delete;

    /// The name of the package in messages.
    [[nodiscard]] virtual std::string const& getName() const;
    /// Adds a package that has to be initialised before this one. Only before the start-up begins.
    virtual void addDependency(Type package);
    /// Removes a package that was added, however often. Only before the start-up begins.
    virtual void removeDependency(Type package);
    /// Called after all packages of the same start-up were initialised. An exception undoes the initialisation.
    virtual void postInitialize();
    /// Called before the finalise hook of any package.
    virtual void preFinalize();
    /// The package's work at the start of the process. An exception ends the start-up.
    virtual void initialize();
    /// The package's work at the end of the process. An exception is passed on after the hooks of the other packages.
    virtual void finalize();
    /// Called with true after the initialise hook has returned, and with false before the finalise hook is called.
    virtual void setInitialized(bool initialized) = 0;

    /// The identity of the package.
    [[nodiscard]] Type getPackageType() const { return _type; }
    /// The packages that have to be initialised before this one, in the order in which they were added.
    [[nodiscard]] std::vector<Type> const& getDependencies() const { return _dependencies; }
    /// The variables of the package, which are read right before its initialise hook.
    [[nodiscard]] std::vector<InVariableBase*> const& getVariables() const { return _variables; }

protected:
    /// Does not register the package.
    InPackageInit(std::string name, Type type);
    virtual ~InPackageInit();

    /// Adds the package to the next start-up.
    void registerPackage();

private:
    friend class InVariableBase;

    std::string _name;
    Type _type;
    std::vector<Type> _dependencies;
    std::vector<InVariableBase*> _variables;
};

} // namespace Ko
