#pragma once

#include "internalAPI/prdPredicate.h"

#include <algorithm>
#include <utility>

namespace Ko {

template <class T>
PrdPredicateImp<T>::PrdPredicateImp() = default;
template <class T>
PrdPredicateImp<T>::~PrdPredicateImp() = default;
template <class T>
bool PrdPredicateImp<T>::test(T const&) const {
    return false;
}

template <class T>
PrdAllPredicateImp<T>::PrdAllPredicateImp() = default;
template <class T>
PrdAllPredicateImp<T>::~PrdAllPredicateImp() = default;
template <class T>
bool PrdAllPredicateImp<T>::test(T const&) const {
    return true;
}

template <class T>
PrdCompositePredicateImp<T>::PrdCompositePredicateImp(Children children) : _children(std::move(children)) {}
template <class T>
PrdCompositePredicateImp<T>::~PrdCompositePredicateImp() = default;

template <class T>
PrdOrPredicateImp<T>::PrdOrPredicateImp(Children children) : PrdCompositePredicateImp<T>(std::move(children)) {}
template <class T>
PrdOrPredicateImp<T>::~PrdOrPredicateImp() = default;
template <class T>
bool PrdOrPredicateImp<T>::test(T const& object) const {
    Children const& children = this->getChildren();
    return std::any_of(children.begin(), children.end(), [&](auto const& child) { return child->test(object); });
}

template <class T>
PrdAndPredicateImp<T>::PrdAndPredicateImp(Children children) : PrdCompositePredicateImp<T>(std::move(children)) {}
template <class T>
PrdAndPredicateImp<T>::~PrdAndPredicateImp() = default;
template <class T>
bool PrdAndPredicateImp<T>::test(T const& object) const {
    Children const& children = this->getChildren();
    return !children.empty() &&
           std::all_of(children.begin(), children.end(), [&](auto const& child) { return child->test(object); });
}

template <class T>
PrdNotPredicateImp<T>::PrdNotPredicateImp(RCShdPtr<PrdPredicateImp<T>> const& child) : _child(child) {}
template <class T>
PrdNotPredicateImp<T>::~PrdNotPredicateImp() = default;
template <class T>
bool PrdNotPredicateImp<T>::test(T const& object) const {
    return !_child->test(object);
}

template <class T>
PrdPredicate<T>::PrdPredicate() noexcept = default;
template <class T>
PrdPredicate<T>::PrdPredicate(RCShdPtr<PrdPredicateImp<T>> const& implementation) noexcept
    : _implementation(implementation) {}
template <class T>
PrdPredicate<T>::PrdPredicate(PrdPredicate const&) = default;
template <class T>
PrdPredicate<T>& PrdPredicate<T>::operator=(PrdPredicate const&) = default;
template <class T>
PrdPredicate<T>::~PrdPredicate() = default;

template <class T>
PrdPredicate<T> PrdPredicate<T>::all() {
    return PrdPredicate(RCShdPtr<PrdAllPredicateImp<T>>::create());
}
template <class T>
PrdPredicate<T> PrdPredicate<T>::operator||(PrdPredicate const& other) const {
    return PrdPredicate(RCShdPtr<PrdOrPredicateImp<T>>::create(
        typename PrdOrPredicateImp<T>::Children{_implementation, other._implementation}));
}
template <class T>
PrdPredicate<T> PrdPredicate<T>::operator&(PrdPredicate const& other) const {
    return PrdPredicate(RCShdPtr<PrdAndPredicateImp<T>>::create(
        typename PrdAndPredicateImp<T>::Children{_implementation, other._implementation}));
}
template <class T>
PrdPredicate<T> PrdPredicate<T>::operator!() const {
    return PrdPredicate(RCShdPtr<PrdNotPredicateImp<T>>::create(_implementation));
}

} // namespace Ko
