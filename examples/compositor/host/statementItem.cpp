#include "host/statementItem.h"

#include "framework/actions/actBasicParam.h"
#include "internalAPI/snItemType.imp.h"

#include <functional>
#include <ostream>

using compositor::Statement;

std::size_t Ko::SnItemValue<Statement>::getHash(Statement const& statement) {
    std::size_t hash = 0;
    for (std::string const& word : statement.words)
        hash = hash * 31 + std::hash<std::string>()(word);
    return hash;
}

void Ko::SnItemValue<Statement>::dump(std::ostream& stream, Statement const& statement) {
    for (std::string const& word : statement.words)
        stream << word << ' ';
}

template <>
bool Ko::SnIsItem<Statement>::test(RCShdPtr<SnItem const> const& item) const {
    return dynamic_cast<compositor::StatementItem const*>(item.get()) || Ko::ActBasicParam::isNone(item);
}

template <>
Statement Ko::SnItemConvert<Statement>::get(RCShdPtr<SnItem const> const& item) {
    if (item.isNull()) RCExUtil::throwExNullPtr(typeid(compositor::StatementItem).name());
    auto const* const own = dynamic_cast<compositor::StatementItem const*>(item.get());
    return own ? own->get() : Statement();
}

KO_ITEM_TYPE(compositor::Statement)
