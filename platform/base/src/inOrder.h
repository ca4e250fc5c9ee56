#pragma once

#include "base/inPackageInit.h"

#include <functional>
#include <vector>

namespace Ko {

/// Finds the initialised package of a type; null where there is none.
using InFindInitialized = std::function<InPackageInit const*(InPackageInit::Type)>;

/// Sorts packages so that each comes after those that it depends on; other packages keep their order.
/// @param failed is set to the package that has no place, before the exception is thrown.
/// @throws InInitEx where a dependency is missing, packages depend on each other in a circle, or two have the same tag.
void sortByDependencies(
    std::vector<InPackageInit*>& packages, InFindInitialized const& findInitialized, InPackageInit*& failed);

} // namespace Ko
