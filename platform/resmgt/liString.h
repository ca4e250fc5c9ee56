#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

namespace Ko {

/// Text, in UTF-8.
using LiString = std::string;

/// The array of the interfaces.
template <class T>
using Vector = std::vector<T>;
/// The doubly linked list of the interfaces.
template <class T>
using List = std::list<T>;
/// The sorted set of the interfaces.
template <class T>
using Set = std::set<T>;

} // namespace Ko
