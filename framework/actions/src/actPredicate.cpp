#include "framework/actions/actPredicate.h"

#include "internalAPI/prdPredicate.imp.h"

namespace Ko {

template class PrdPredicateImp<ActAction>;
template class PrdAllPredicateImp<ActAction>;
template class PrdCompositePredicateImp<ActAction>;
template class PrdOrPredicateImp<ActAction>;
template class PrdAndPredicateImp<ActAction>;
template class PrdNotPredicateImp<ActAction>;
template class PrdPredicate<ActAction>;

} // namespace Ko
