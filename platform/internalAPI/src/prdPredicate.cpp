#include "internalAPI/prdPredicate.h"

#include "internalAPI/prdPredicate.imp.h"

namespace Ko {

template class PrdPredicateImp<RCShdPtr<SnItem const>>;
template class PrdAllPredicateImp<RCShdPtr<SnItem const>>;
template class PrdCompositePredicateImp<RCShdPtr<SnItem const>>;
template class PrdOrPredicateImp<RCShdPtr<SnItem const>>;
template class PrdAndPredicateImp<RCShdPtr<SnItem const>>;
template class PrdNotPredicateImp<RCShdPtr<SnItem const>>;
template class PrdPredicate<RCShdPtr<SnItem const>>;

} // namespace Ko
