#pragma once

#include "framework/actions/actAction.h"

#include <utility>
#include <vector>

#define KO_BENCH_API __attribute__((visibility("default")))

namespace KoBench {

using Item = Ko::RCShdPtr<Ko::SnItem const>;
using Targets = Ko::List<Item>;
using Actions = std::vector<Ko::ActAction const*>;

/// The minimum cost of the registry's answers, written by hand: one loop over the actions, and a sort by descriptions that
/// are fetched once.
namespace Least {

struct Entry {
    Ko::ActAction const* action;
    Item target;
    Item input;
};

KO_BENCH_API std::vector<Entry> unsorted(Actions const& actions, Targets const& targets, Item const& input);
/// For one target: descriptions and entries are sorted together.
KO_BENCH_API std::vector<std::pair<Ko::LiString, Entry>> sorted(
    Actions const& actions, Targets const& targets, Item const& input);
/// For many targets: the entries of one action are kept together, and moved in order at the end.
KO_BENCH_API std::vector<Entry> sortedByAction(Actions const& actions, Targets const& targets, Item const& input);
KO_BENCH_API Ko::ActAction const* find(
    Actions const& actions, Ko::LiString const& description, std::string const& compositeName);

} // namespace Least

} // namespace KoBench
