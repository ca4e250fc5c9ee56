#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/internalAPIApi.h"
#include "internalAPI/snItem.h"
#include "resmgt/liString.h"

namespace Ko {

/// Declares the types of a function of one argument.
template <class Argument, class Result>
class UnaryFunctor {
public:
    /// The type of the argument, for function adaptors.
    using argument_type = Argument;
    /// The type of the result, for function adaptors.
    using result_type = Result;

protected:
    UnaryFunctor() = default;
    ~UnaryFunctor() = default;
};

/// Base of the implementations of predicates about a `T`. The base itself holds for no object.
///
/// Implementations are shared between predicates, possibly on several threads, so a test must not change anything.
template <class T>
class PrdPredicateImp : public RCBase, public UnaryFunctor<T, bool> {
public:
    PrdPredicateImp();
    ~PrdPredicateImp() override;
    /// Whether the predicate holds for the object. May throw.
    [[nodiscard]] virtual bool test(T const& object) const;
};

/// Holds for every object.
template <class T>
class PrdAllPredicateImp : public PrdPredicateImp<T> {
public:
    PrdAllPredicateImp();
    ~PrdAllPredicateImp() override;
    [[nodiscard]] bool test(T const& object) const override;
};

/// Base of the predicates that combine several others, its children. It tests them in order and stops as soon as the result
/// is known. A null child raises `ExNullPtr` when it is tested.
template <class T>
class PrdCompositePredicateImp : public PrdPredicateImp<T> {
public:
    /// The combined predicates, in the order of testing.
    using Children = List<RCShdPtr<PrdPredicateImp<T>>>;

    ~PrdCompositePredicateImp() override;
    [[nodiscard]] bool test(T const& object) const override = 0;
    /// The children, in the order of testing.
    [[nodiscard]] Children const& getChildren() const noexcept { return _children; }

protected:
    /// @param children in the order of testing; so in derived classes.
    explicit PrdCompositePredicateImp(Children children);

private:
    Children _children;
};

/// Holds if one child holds; never without children.
template <class T>
class PrdOrPredicateImp : public PrdCompositePredicateImp<T> {
public:
    using typename PrdCompositePredicateImp<T>::Children;

    /// @param children in the order of testing.
    explicit PrdOrPredicateImp(Children children);
    ~PrdOrPredicateImp() override;
    [[nodiscard]] bool test(T const& object) const override;
};

/// Holds if all children hold. Without children it never holds: an empty combination selects nothing.
template <class T>
class PrdAndPredicateImp : public PrdCompositePredicateImp<T> {
public:
    using typename PrdCompositePredicateImp<T>::Children;

    /// @param children in the order of testing.
    explicit PrdAndPredicateImp(Children children);
    ~PrdAndPredicateImp() override;
    [[nodiscard]] bool test(T const& object) const override;
};

/// Holds if its child does not. A null child raises `ExNullPtr` when it is tested.
template <class T>
class PrdNotPredicateImp : public PrdPredicateImp<T> {
public:
    /// @param child the negated predicate.
    explicit PrdNotPredicateImp(RCShdPtr<PrdPredicateImp<T>> const& child);
    ~PrdNotPredicateImp() override;
    [[nodiscard]] bool test(T const& object) const override;

private:
    RCShdPtr<PrdPredicateImp<T>> _child;
};

/// A handle on a predicate, passed by value. Copies share the predicate.
///
/// Like other templates it is instantiated once for a `T`, in a source that includes `prdPredicate.imp.h`.
template <class T>
class PrdPredicate {
public:
    /// A null handle, which cannot be tested.
    PrdPredicate() noexcept;
    PrdPredicate(RCShdPtr<PrdPredicateImp<T>> const& implementation) noexcept;
    PrdPredicate(PrdPredicate const&);
    PrdPredicate& operator=(PrdPredicate const&);
    virtual ~PrdPredicate();

    /// Whether the handle has no implementation.
    [[nodiscard]] bool isNull() const noexcept { return _implementation.isNull(); }

    /// Whether the predicate holds for the object. Passes on the exceptions of the implementation.
    /// @throws ExNullPtr when the handle or a tested child is null.
    [[nodiscard]] bool test(T const& object) const { return _implementation->test(object); }
    /// The same as `test`.
    [[nodiscard]] bool operator()(T const& object) const { return test(object); }

    /// A predicate that holds for every object.
    [[nodiscard]] static PrdPredicate all();
    /// Holds if one of the two holds; tests this one first.
    [[nodiscard]] PrdPredicate operator||(PrdPredicate const& other) const;
    /// Holds if both hold; tests this one first.
    [[nodiscard]] PrdPredicate operator&(PrdPredicate const& other) const;
    /// Holds if this one does not.
    [[nodiscard]] PrdPredicate operator!() const;

private:
    RCShdPtr<PrdPredicateImp<T>> _implementation;
};

extern template class KO_INTERNALAPI_API PrdPredicateImp<RCShdPtr<SnItem const>>;
extern template class KO_INTERNALAPI_API PrdAllPredicateImp<RCShdPtr<SnItem const>>;
extern template class KO_INTERNALAPI_API PrdCompositePredicateImp<RCShdPtr<SnItem const>>;
extern template class KO_INTERNALAPI_API PrdOrPredicateImp<RCShdPtr<SnItem const>>;
extern template class KO_INTERNALAPI_API PrdAndPredicateImp<RCShdPtr<SnItem const>>;
extern template class KO_INTERNALAPI_API PrdNotPredicateImp<RCShdPtr<SnItem const>>;
extern template class KO_INTERNALAPI_API PrdPredicate<RCShdPtr<SnItem const>>;

} // namespace Ko
