#pragma once

#include "internalAPI/snItemConvert.h"

#include "base/assertions.h"

#include <memory>
#include <typeinfo>

namespace Ko {

namespace SnIsItemSource {
// The source and the line that are reported for a missing predicate of any type.
constexpr AssertionSource source{"internalAPI/snIsItem.imp"};
constexpr int predicateMissing = 76;
} // namespace SnIsItemSource

template <class T>
OPtr<PrdPredicate<RCShdPtr<SnItem const>>> SnItemConvert<T>::_pred;
template <class T>
int SnItemConvert<T>::_users = 0;

template <class T>
SnIsItem<T>::SnIsItem() = default;
template <class T>
SnIsItem<T>::~SnIsItem() = default;
template <class T>
bool SnIsItem<T>::test(RCShdPtr<SnItem const> const& item) const {
    return dynamic_cast<SnItemBasic<T> const*>(item.get()) != nullptr;
}

template <class T>
void SnItemConvert<T>::initialize() {
    using Predicate = PrdPredicate<RCShdPtr<SnItem const>>;
    if (_users == 0) _pred = std::make_unique<Predicate>(RCShdPtr<SnIsItem<T>>::create());
    ++_users;
}

template <class T>
void SnItemConvert<T>::finalize() {
    if (_users > 0 && --_users == 0) _pred.reset();
}

template <class T>
PrdPredicate<RCShdPtr<SnItem const>> const& SnItemConvert<T>::getPredicate() {
    SnIsItemSource::source.require(_pred != nullptr, "_pred != 0", SnIsItemSource::predicateMissing);
    return *_pred;
}

template <class T>
bool SnItemConvert<T>::test(RCShdPtr<SnItem const> const& item) {
    return getPredicate().test(item);
}

template <class T>
T SnItemConvert<T>::get(RCShdPtr<SnItem const> const& item) {
    if (item.isNull()) RCExUtil::throwExNullPtr(typeid(SnItemBasic<T>).name());
    return static_cast<SnItemBasic<T> const&>(*item).get();
}

} // namespace Ko
