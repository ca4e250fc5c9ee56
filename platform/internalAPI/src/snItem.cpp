#include "internalAPI/snItem.h"

#include "base/typeName.h"

#include <ostream>
#include <typeinfo>

namespace Ko {

namespace {

bool isWhole(RCShdPtr<SnParts> const& parts) {
    return parts.isNull() || parts->getNames().empty();
}

bool areEqual(RCShdPtr<SnParts> const& a, RCShdPtr<SnParts> const& b) {
    if (a == b) return true;
    return isWhole(a) || isWhole(b) ? isWhole(a) && isWhole(b) : a->isEqual(*b);
}

} // namespace

SnItem::~SnItem() = default;

void SnItem::dump(std::ostream& stream) const {
    stream << "Type:      " << typeNameOf(typeid(*this).name()) << "\nParts:     ";
    if (!isWhole(_parts)) _parts->dump(stream);
    stream << '\n';
}

bool SnItem::isEqual(SnItem const& other) const {
    return this == &other || (areEqual(_parts, other._parts) && isEqualIgnoreParts(other));
}

std::size_t SnItem::getHash() const {
    return isWhole(_parts) ? getHashIgnoreParts() : getHashIgnoreParts() ^ (_parts->getHash() * 3);
}

void dumpObject(std::ostream& stream, SnItem const& item) {
    item.dump(stream);
}

} // namespace Ko
