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
/// The package that introduces the type calls `initialize` and `finalize` from its hooks; several packages may do so. The
/// other operations may be called on any thread. Instantiated like `SnItemBasic`, in a source that includes
/// `snItemConvert.imp.h`.
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

extern template class KO_INTERNALAPI_API SnIsItem<LiString>;
extern template class KO_INTERNALAPI_API SnItemConvert<LiString>;

} // namespace Ko
