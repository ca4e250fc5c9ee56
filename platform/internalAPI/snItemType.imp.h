#pragma once

#include "internalAPI/snItemBasic.imp.h"
#include "internalAPI/snItemConvert.imp.h"

#include <tuple>

namespace Ko {

/// Begins the conversion of items with a `T`. For `KO_ITEM_TYPE`, which defines it once in a process.
template <class T>
struct SnItemTypeStart {
    /// Whether the conversion has begun.
    static bool const isDone;
    /// Begins it. Names the other operations too: unused ones of a type in an unnamed namespace would raise warnings.
    static bool begin() {
        using Item = RCShdPtr<SnItemBasic<T>> (*)(T const&);
        static_cast<void>(static_cast<Item>(&SnItemBasic<T>::create));
        static_cast<void>(std::tuple(&SnItemConvert<T>::finalize, &SnItemConvert<T>::test, &SnItemConvert<T>::get));
        SnItemConvert<T>::initialize();
        return true;
    }
};

} // namespace Ko

/// Makes a type an item type: items carry it, and they convert to it from the start of the program or the loading of the plug-in
/// on, without hooks. Outside all namespaces, in one source of the process, before the first use of the type in an item:
///
///     KO_ITEM_TYPE(compositor::LayerRef)
///
/// Where other sources use the type too, `KO_DECLARE_ITEM_TYPE` declares that in a header. The type has `==`, `std::hash` and `<<`, or a
/// specialisation of `SnItemValue`. A second source with the same line is refused by the linker.
#define KO_ITEM_TYPE(...)                                                                                              \
    template <>                                                                                                        \
    struct Ko::SnItemTypeMissing<__VA_ARGS__>;                                                                         \
    template class Ko::SnItemBasic<__VA_ARGS__>;                                                                       \
    template class Ko::SnIsItem<__VA_ARGS__>;                                                                          \
    template class Ko::SnItemConvert<__VA_ARGS__>;                                                                     \
    template <>                                                                                                        \
    bool const Ko::SnItemTypeStart<__VA_ARGS__>::isDone = Ko::SnItemTypeStart<__VA_ARGS__>::begin();
