#include "framework/plugInMgr/src/pimInterfaces.h"

#include "base/assertions.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\plugInMgr\\src\\pimInterfaces"};

Vector<PimInterface> offered{PimInterface::parse(KO_PLUGIN_INTERFACE).value_or(PimInterface())};

PimInterface* find(LiString const& name) {
    auto const found = std::find_if(
        offered.begin(), offered.end(), [&](PimInterface const& interface) { return interface.name == name; });
    return found == offered.end() ? nullptr : &*found;
}

} // namespace

void PimInterfaces::set(std::string_view text) {
    auto const interface = PimInterface::parse(text);
    if (!interface) source.fail("interface is name major.minor");
    PimInterface* const known = find(interface->name);
    known ? static_cast<void>(*known = *interface) : offered.push_back(*interface);
}

LiString PimInterfaces::getProblem(PimDeclaration const& declaration) {
    for (PimInterface const& needed : declaration.interfaces) {
        PimInterface const* const own = find(needed.name);
        if (!own) return "it was built for " + needed.getText() + ", which this application does not offer";
        if (!needed.fits(*own))
            return "it was built for " + needed.getText() + ", and this application offers " + own->getText();
    }
    return {};
}

} // namespace Ko
