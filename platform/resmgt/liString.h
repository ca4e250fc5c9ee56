#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

namespace Ko {

/// Text, in UTF-8.
using LiString = std::string;

/// The containers that interfaces use.
/// @{
template <class T>
using Vector = std::vector<T>;
template <class T>
using List = std::list<T>;
template <class T>
using Set = std::set<T>;
/// @}

} // namespace Ko
