#pragma once

#include "internalAPI/snItemBasic.h"
#include "internalAPI/snItemConvert.h"
#include "text/statement.h"

/// A statement as the input of an action.
template <>
class Ko::SnItemValue<compositor::Statement> {
public:
    static bool isEqual(compositor::Statement const& a, compositor::Statement const& b) { return a == b; }
    static std::size_t getHash(compositor::Statement const& statement);
    static void dump(std::ostream& stream, compositor::Statement const& statement);
};

namespace compositor {

using StatementItem = Ko::SnItemBasic<Statement>;

} // namespace compositor

/// Menus offer actions with no input: that converts to a statement without words.
template <>
bool Ko::SnIsItem<compositor::Statement>::test(Ko::RCShdPtr<Ko::SnItem const> const& item) const;
template <>
compositor::Statement Ko::SnItemConvert<compositor::Statement>::get(Ko::RCShdPtr<Ko::SnItem const> const& item);

KO_DECLARE_ITEM_TYPE(, compositor::Statement)
