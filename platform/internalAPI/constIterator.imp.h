#pragma once

#include "internalAPI/constIterator.h"

#include <utility>

namespace Ko {

template <class T>
ConstIterator<T>::ConstIterator() noexcept = default;
template <class T>
ConstIterator<T>::ConstIterator(Vector<T> elements)
    : _elements(std::make_shared<Vector<T> const>(std::move(elements))) {}
template <class T>
ConstIterator<T>::ConstIterator(ConstIterator const&) noexcept = default;
template <class T>
ConstIterator<T>& ConstIterator<T>::operator=(ConstIterator const&) noexcept = default;
template <class T>
ConstIterator<T>::~ConstIterator() = default;

template <class T>
T const* ConstIterator<T>::operator->() const {
    return &item();
}
template <class T>
T const& ConstIterator<T>::item() const {
    if (atEnd()) throw IteratorEx::ExOutOfRange("internalAPI\\constIterator.imp", __LINE__);
    return (*_elements)[_position];
}
template <class T>
T const& ConstIterator<T>::operator*() const {
    return item();
}

template <class T>
void ConstIterator<T>::first() {
    _position = 0;
}
template <class T>
void ConstIterator<T>::last() {
    end();
    if (!atBegin()) --_position;
}
template <class T>
void ConstIterator<T>::end() {
    _position = getCardinality();
}
template <class T>
bool ConstIterator<T>::atEnd() const noexcept {
    return _position == getCardinality();
}
template <class T>
bool ConstIterator<T>::atBegin() const noexcept {
    return _position == 0;
}
template <class T>
void ConstIterator<T>::next() {
    if (atEnd()) throw IteratorEx::ExOutOfRange("internalAPI\\constIterator.imp", __LINE__);
    ++_position;
}
template <class T>
void ConstIterator<T>::previous() {
    if (atBegin()) throw IteratorEx::ExOutOfRange("internalAPI\\constIterator.imp", __LINE__);
    --_position;
}
template <class T>
std::size_t ConstIterator<T>::getCardinality() const noexcept {
    return _elements ? _elements->size() : 0;
}

template <class T>
ConstIterator<T> ConstIterator<T>::operator++(int) {
    ConstIterator before(*this);
    next();
    return before;
}
template <class T>
ConstIterator<T>& ConstIterator<T>::operator++() {
    next();
    return *this;
}
template <class T>
ConstIterator<T> ConstIterator<T>::operator--(int) {
    ConstIterator before(*this);
    previous();
    return before;
}
template <class T>
ConstIterator<T>& ConstIterator<T>::operator--() {
    previous();
    return *this;
}

} // namespace Ko
