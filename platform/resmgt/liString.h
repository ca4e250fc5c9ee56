#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

namespace Ko {

using LiString = std::string;

template <class T>
using Vector = std::vector<T>;
template <class T>
using List = std::list<T>;
template <class T>
using Set = std::set<T>;

} // namespace Ko
