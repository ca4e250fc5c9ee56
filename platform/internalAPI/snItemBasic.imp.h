#pragma once

#include "internalAPI/snItemBasic.h"

#include <memory>
#include <typeinfo>

namespace Ko {

template <class T>
RCShdPtr<SnItemBasic<T>> SnItemBasic<T>::create(T const& value) {
    return create(value, nullptr);
}
template <class T>
RCShdPtr<SnItemBasic<T>> SnItemBasic<T>::create(T const& value, RCShdPtr<SnParts> const& parts) {
    return RCShdPtr<SnItemBasic>::create(value, parts);
}

template <class T>
SnItemBasic<T>::SnItemBasic(T const& value, RCShdPtr<SnParts> const& parts) : SnItem(parts), _value(value) {}
template <class T>
SnItemBasic<T>::SnItemBasic(SnItemBasic const& other) = default;
template <class T>
SnItemBasic<T>::~SnItemBasic() = default;

template <class T>
SnItem* SnItemBasic<T>::clone() const {
    return std::make_unique<SnItemBasic>(*this).release();
}

template <class T>
bool SnItemBasic<T>::isEqualIgnoreParts(SnItem const& other) const {
    return typeid(*this) == typeid(other) &&
           SnItemValue<T>::isEqual(_value, static_cast<SnItemBasic const&>(other)._value);
}

template <class T>
void SnItemBasic<T>::dump(std::ostream& stream) const {
    SnItem::dump(stream);
    stream << "Data:      ";
    SnItemValue<T>::dump(stream, _value);
    stream << '\n';
}

template <class T>
std::size_t SnItemBasic<T>::getHashIgnoreParts() const {
    return SnItemValue<T>::getHash(_value);
}

} // namespace Ko
