#include "internalAPI/snParts.h"

#include <functional>
#include <ostream>

namespace Ko {

namespace {

std::size_t hashOf(Set<LiString> const& names) noexcept {
    std::size_t hash = 0;
    for (LiString const& name : names)
        hash = hash * 31 + std::hash<LiString>()(name);
    return hash;
}

} // namespace

SnParts::SnParts(Set<LiString> names) : _names(std::move(names)), _hash(hashOf(_names)) {}
SnParts::~SnParts() = default;

RCShdPtr<SnParts> SnParts::create(Set<LiString> names) {
    return RCShdPtr<SnParts>::create(std::move(names));
}

void SnParts::dump(std::ostream& stream) const {
    char const* separator = "";
    for (LiString const& name : _names) {
        stream << separator << name;
        separator = ", ";
    }
}

void dumpObject(std::ostream& stream, SnParts const& parts) {
    parts.dump(stream);
}

} // namespace Ko
