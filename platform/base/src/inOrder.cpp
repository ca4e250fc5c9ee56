#include "base/src/inOrder.h"

#include "base/inInitMgr.h"
#include "base/typeName.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr char const* source = "base\\src\\inOrder";

using Packages = std::vector<InPackageInit*>;

InPackageInit* find(Packages const& packages, InPackageInit::Type type) {
    auto const found = std::find_if(
        packages.begin(), packages.end(), [&](InPackageInit* package) { return package->getPackageType() == type; });
    return found == packages.end() ? nullptr : *found;
}

bool contains(Packages const& packages, InPackageInit const* package) {
    return std::find(packages.begin(), packages.end(), package) != packages.end();
}

std::string quoted(InPackageInit const& package) {
    return "\"" + package.getName() + "\"";
}

std::string quoted(Packages const& packages) {
    std::string result;
    for (InPackageInit const* const package : packages)
        result += (result.empty() ? "" : ", ") + quoted(*package);
    return result;
}

// A tag is the identity of a package: a dependency on a tag of two packages would be ambiguous.
void requireOwnTag(InPackageInit const& package, InPackageInit const* other) {
    if (!other || other == &package) return;
    throw InInitEx(source, __LINE__,
        "Packages " + quoted(*other) + " and " + quoted(package) + " have the same tag, " +
            typeNameOf(package.getPackageType().name()) + ".");
}

void requireDependency(InPackageInit const& package, InPackageInit::Type type, bool isKnown) {
    if (isKnown) return;
    throw InInitEx(source, __LINE__,
        "Package " + quoted(package) + " depends on " + typeNameOf(type.name()) + ", which is not registered.");
}

// The packages of one circle, in the order of `packages`. Each of `packages` depends on another one of them.
Packages circleIn(Packages const& packages) {
    auto const next = [&](InPackageInit const* package) {
        for (InPackageInit::Type const type : package->getDependencies())
            if (InPackageInit* const needed = find(packages, type)) return needed;
        return packages.front();
    };
    Packages path{packages.front()};
    while (!contains(path, next(path.back())))
        path.push_back(next(path.back()));
    path.erase(path.begin(), std::find(path.begin(), path.end(), next(path.back())));
    Packages circle;
    std::copy_if(packages.begin(), packages.end(), std::back_inserter(circle),
        [&](InPackageInit const* package) { return contains(path, package); });
    return circle;
}

} // namespace

void sortByDependencies(Packages& packages, InFindInitialized const& findInitialized, InPackageInit*& failed) {
    for (InPackageInit* const package : packages) {
        failed = package;
        requireOwnTag(*package, findInitialized(package->getPackageType()));
        requireOwnTag(*package, find(packages, package->getPackageType()));
        for (InPackageInit::Type const type : package->getDependencies())
            requireDependency(*package, type, find(packages, type) || findInitialized(type));
    }
    // The next one is always the first package without a dependency in the rest.
    Packages sorted, rest = packages;
    while (!rest.empty()) {
        auto const next = std::find_if(rest.begin(), rest.end(), [&](InPackageInit const* package) {
            auto const& types = package->getDependencies();
            return std::none_of(types.begin(), types.end(), [&](auto type) { return find(rest, type); });
        });
        if (next == rest.end()) {
            Packages const circle = circleIn(rest);
            failed = circle.front();
            throw InInitEx(source, __LINE__, "Packages depend on each other in a circle: " + quoted(circle) + ".");
        }
        sorted.push_back(*next);
        rest.erase(next);
    }
    packages = std::move(sorted);
    failed = nullptr;
}

} // namespace Ko
