// Compiled by tests only, and refused in one of them.

#include "framework/actions/actBasicParam.h"
#include "framework/actions/actTypedAction.h"

#ifdef IS_Declared
template <>
inline constexpr bool Ko::isActTypedActionInstantiated<Ko::LiString, Ko::ActBasicParam> = true;
extern template class Ko::ActTypedAction<Ko::LiString, Ko::ActBasicParam>;
#endif

class Rename : public Ko::ActTypedAction<Ko::LiString, Ko::ActBasicParam> {};
