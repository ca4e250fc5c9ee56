#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/internalAPIApi.h"
#include "internalAPI/snItem.h"
#include "resmgt/liString.h"

namespace Ko {

/// Names the types of a function of one argument.
template <class Argument, class Result>
class UnaryFunctor {
public:
    /// As function adaptors ask for them:
    using argument_type = Argument;
    using result_type = Result;

protected:
    UnaryFunctor() = default;
    ~UnaryFunctor() = default;
};

/// A yes or no question about a `T`. Predicates of one's own derive from it; by itself it answers no to everything.
///
/// Objects are shared between predicates and perhaps threads, so a test changes nothing.
template <class T>
class PrdPredicateImp : public RCBase, public UnaryFunctor<T, bool> {
public:
    PrdPredicateImp();
    ~PrdPredicateImp() override;
    /// The answer. May throw.
    virtual bool test(T const& object) const;
};

/// Yes to everything.
template <class T>
class PrdAllPredicateImp : public PrdPredicateImp<T> {
public:
    PrdAllPredicateImp();
    ~PrdAllPredicateImp() override;
    bool test(T const& object) const override;
};

/// Base of what asks several predicates, in order and no more of them than it has to. A null one among those that it
/// asks raises `ExNullPtr`.
template <class T>
class PrdCompositePredicateImp : public PrdPredicateImp<T> {
public:
    /// In the order in which they are asked.
    using Children = List<RCShdPtr<PrdPredicateImp<T>>>;

    ~PrdCompositePredicateImp() override;
    bool test(T const& object) const override = 0;
    /// As they were given.
    Children const& getChildren() const noexcept { return _children; }

protected:
    /// @param children in the order in which to ask them; so in derived classes.
    explicit PrdCompositePredicateImp(Children children);

private:
    Children _children;
};

/// Whether one child says yes; no without any child.
template <class T>
class PrdOrPredicateImp : public PrdCompositePredicateImp<T> {
public:
    using typename PrdCompositePredicateImp<T>::Children;

    /// @param children in the order in which to ask them.
    explicit PrdOrPredicateImp(Children children);
    ~PrdOrPredicateImp() override;
    bool test(T const& object) const override;
};

/// Whether all children say yes. Without any child it says no: what combines nothing selects nothing.
template <class T>
class PrdAndPredicateImp : public PrdCompositePredicateImp<T> {
public:
    using typename PrdCompositePredicateImp<T>::Children;

    /// @param children in the order in which to ask them.
    explicit PrdAndPredicateImp(Children children);
    ~PrdAndPredicateImp() override;
    bool test(T const& object) const override;
};

/// The opposite of what its child says. A null child raises `ExNullPtr`.
template <class T>
class PrdNotPredicateImp : public PrdPredicateImp<T> {
public:
    /// @param child is asked for the opposite.
    explicit PrdNotPredicateImp(RCShdPtr<PrdPredicateImp<T>> const& child);
    ~PrdNotPredicateImp() override;
    bool test(T const& object) const override;

private:
    RCShdPtr<PrdPredicateImp<T>> _child;
};

/// A handle on a predicate, passed by value. Copies share the predicate.
///
/// Like other templates it is instantiated once for a `T`, in a source that includes `prdPredicate.imp.h`.
template <class T>
class PrdPredicate {
public:
    /// A null handle, which cannot be applied.
    PrdPredicate() noexcept;
    PrdPredicate(RCShdPtr<PrdPredicateImp<T>> const& implementation) noexcept;
    PrdPredicate(PrdPredicate const&);
    PrdPredicate& operator=(PrdPredicate const&);
    virtual ~PrdPredicate();

    /// Whether there is no predicate to apply.
    bool isNull() const noexcept { return _implementation.isNull(); }

    /// @throws ExNullPtr when this or a part of it is null, and what the predicate throws:
    bool test(T const& object) const { return _implementation->test(object); }
    bool operator()(T const& object) const { return test(object); }

    /// Yes to everything.
    static PrdPredicate all();
    /// Asks this one first.
    PrdPredicate operator||(PrdPredicate const& other) const;
    /// Whether both say yes; asks this one first.
    PrdPredicate operator&(PrdPredicate const& other) const;
    /// Whether this one says no.
    PrdPredicate operator!() const;

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
