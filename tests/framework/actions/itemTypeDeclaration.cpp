// Compiled by tests only, and refused in most of them.

#include "framework/actions/actLambda.h"

#include <ostream>

struct Frame {
    int number;
    bool operator==(Frame const&) const = default;
};
inline std::ostream& operator<<(std::ostream& stream, Frame const& frame) {
    return stream << frame.number;
}
template <>
struct std::hash<Frame> {
    std::size_t operator()(Frame const& frame) const noexcept { return static_cast<std::size_t>(frame.number); }
};

#ifdef IS_Defined
#include "internalAPI/snItemType.imp.h"
KO_ITEM_TYPE(Frame)
#endif
#ifdef IS_Declared
KO_DECLARE_ITEM_TYPE(, Frame)
#endif

void registerActions() {
#ifdef IS_MissingInput
    using Lambda = Ko::ActLambda<bool, Frame>;
#else
    using Lambda = Ko::ActLambda<Frame>;
#endif
    Lambda::add({.description = "Show", .perform = [] {}});
}
