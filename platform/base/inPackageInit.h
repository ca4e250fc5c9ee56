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
/// loaded and is forgotten when that is unloaded. The initialisation manager calls the hooks, each package's after those
/// of the packages that it depends on, and its finalising hooks before theirs.
class KO_BASE_API InPackageInit {
public:
    /// Tells packages apart: the type record of a package's tag type.
    using Type = std::type_index;

    InPackageInit(InPackageInit const&) = delete;
    InPackageInit& operator=(InPackageInit const&) = delete;

    /// By which messages call the package.
    virtual std::string const& getName() const;
    /// Names a package that has to be initialised before this one, or takes that back; until the start-up begins:
    virtual void addDependency(Type package);
    virtual void removeDependency(Type package);
    /// Called after all packages of the same start-up were initialised.
    virtual void postInitialize();
    /// Called before the finalise hook of any package that is initialised now.
    virtual void preFinalize();
    /// The package's work at the start of the process and at its end; what they throw ends the start-up, or is passed on:
    virtual void initialize();
    virtual void finalize();
    /// Told true after the initialise hook has returned, and false before the finalise hook is called.
    virtual void setInitialized(bool initialized) = 0;

    /// What the start-up goes by:
    Type getPackageType() const { return _type; }
    std::vector<Type> const& getDependencies() const { return _dependencies; }
    std::vector<InVariableBase*> const& getVariables() const { return _variables; }

protected:
    /// Does not register the package.
    InPackageInit(std::string name, Type type);
    virtual ~InPackageInit();

    /// Makes the package known to the next start-up.
    void registerPackage();

private:
    friend class InVariableBase;

    std::string _name;
    Type _type;
    std::vector<Type> _dependencies;
    std::vector<InVariableBase*> _variables;
};

} // namespace Ko
