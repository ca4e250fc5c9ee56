#pragma once

#include "base/oPtr.h"
#include "internalAPI/prdPredicate.h"
#include "internalAPI/snItemBasic.h"

namespace Ko {

/// Holds for an item that carries a `T`.
template <class T>
class SnIsItem : public PrdPredicateImp<RCShdPtr<SnItem const>> {
public:
    SnIsItem();
    ~SnIsItem() override;
    [[nodiscard]] bool test(RCShdPtr<SnItem const> const& item) const override;
};

/// Converts items to the values that they carry: for a `T` that is carried by an `SnItemBasic<T>`. Items of another class
/// are made convertible by a specialisation with `test`, `get` and `getPredicate`.
///
/// `KO_ITEM_TYPE` instantiates it and begins the conversion. Without that macro it is instantiated like `SnItemBasic`, in a source that
/// includes `snItemConvert.imp.h`, and the package that introduces the type calls `initialize` and `finalize` from its hooks;
/// several packages may do so. The other operations may be called on any thread.
template <class T>
class SnItemConvert {
public:
    /// Begins the conversion. For the hooks of packages; may be called by several.
    static void initialize();
    /// Ends the conversion, when it was called as often as `initialize`. For the hooks of packages.
    static void finalize();

    /// Holds for the items that can be converted.
    /// @throws ExAssertionFailed unless initialised.
    [[nodiscard]] static PrdPredicate<RCShdPtr<SnItem const>> const& getPredicate();
    /// Whether the item can be converted; a null pointer cannot.
    /// @throws ExAssertionFailed unless initialised.
    [[nodiscard]] static bool test(RCShdPtr<SnItem const> const& item);
    /// The value that the item carries.
    /// @param item can be converted.
    /// @throws ExNullPtr for a null pointer.
    [[nodiscard]] static T get(RCShdPtr<SnItem const> const& item);

private:
    static OPtr<PrdPredicate<RCShdPtr<SnItem const>>> _pred;
    static int _users;
};

/// Complete for types that no `KO_ITEM_TYPE` and no `KO_DECLARE_ITEM_TYPE` has declared in this source.
template <class T>
struct SnItemTypeMissing {};

/// Whether items carry the type and convert to it, as far as this source knows. The macros of this name have to come first.
template <class T>
inline constexpr bool isSnItemType = !requires {
    sizeof(SnItemTypeMissing<T>);
};

template <>
struct SnItemTypeMissing<LiString>;
extern template class KO_INTERNALAPI_API SnIsItem<LiString>;
extern template class KO_INTERNALAPI_API SnItemConvert<LiString>;

} // namespace Ko

/// Declares in a header that some source makes a type an item type by `KO_ITEM_TYPE`. Outside all namespaces. The first argument is
/// the export mark of the type's library; empty where no plug-in uses the type:
///
///     KO_DECLARE_ITEM_TYPE(, compositor::LayerRef)
#define KO_DECLARE_ITEM_TYPE(EXPORT, ...)                                                                              \
    template <>                                                                                                        \
    struct Ko::SnItemTypeMissing<__VA_ARGS__>;                                                                         \
    extern template class EXPORT Ko::SnItemBasic<__VA_ARGS__>;                                                         \
    extern template class EXPORT Ko::SnIsItem<__VA_ARGS__>;                                                            \
    extern template class EXPORT Ko::SnItemConvert<__VA_ARGS__>;

KO_DECLARE_ITEM_TYPE(KO_INTERNALAPI_API, bool)
KO_DECLARE_ITEM_TYPE(KO_INTERNALAPI_API, double)
