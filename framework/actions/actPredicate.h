#pragma once

#include "framework/actions/actAction.h"
#include "internalAPI/prdPredicate.h"

namespace Ko {

// Predicates over actions; `ActUtils` makes those over descriptions.
extern template class KO_FRAMEWORK_API PrdPredicateImp<ActAction>;
extern template class KO_FRAMEWORK_API PrdAllPredicateImp<ActAction>;
extern template class KO_FRAMEWORK_API PrdCompositePredicateImp<ActAction>;
extern template class KO_FRAMEWORK_API PrdOrPredicateImp<ActAction>;
extern template class KO_FRAMEWORK_API PrdAndPredicateImp<ActAction>;
extern template class KO_FRAMEWORK_API PrdNotPredicateImp<ActAction>;
extern template class KO_FRAMEWORK_API PrdPredicate<ActAction>;

} // namespace Ko
