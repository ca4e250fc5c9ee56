#pragma once

#include "base/exBase.h"
#include "internalAPI/internalAPIApi.h"
#include "resmgt/liString.h"

#include <cstddef>
#include <memory>

namespace Ko {

/// What iterators raise.
class KO_INTERNALAPI_API IteratorEx : public ExBase {
public:
    class ExOutOfRange;

protected:
    IteratorEx(char const* file, int line, std::string reason);
};

/// An iterator was read or moved beyond an end of what it iterates over.
class KO_INTERNALAPI_API IteratorEx::ExOutOfRange : public IteratorEx {
public:
    ExOutOfRange(char const* file, int line);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A position in the result of a query: a sequence that never changes and lives as long as an iterator over it. Copies
/// share the sequence and have positions of their own.
///
/// Positions go from the first element to the end behind the last one. A step that would leave this range raises
/// `IteratorEx::ExOutOfRange` and does not move. A null iterator is like one over nothing.
///
///     for (ConstIterator<ActRegistry::Entry> entry = query(); !entry.atEnd(); ++entry)
///         show(entry->getDescription());
///
/// Instantiated once for a `T`, in a source that includes `constIterator.imp.h`.
template <class T>
class ConstIterator {
public:
    /// A null iterator.
    ConstIterator() noexcept;
    /// Begins at the first element.
    explicit ConstIterator(Vector<T> elements);
    ConstIterator(ConstIterator const&) noexcept;
    ConstIterator& operator=(ConstIterator const&) noexcept;
    virtual ~ConstIterator();

    /// The element at the position. @throws IteratorEx::ExOutOfRange at the end:
    virtual T const* operator->() const;
    virtual T const& item() const;
    virtual T const& operator*() const;

    /// Moves to the first element; to the end if there is none.
    virtual void first();
    /// Moves to the last element; to the end if there is none.
    virtual void last();
    /// Moves behind the last element.
    virtual void end();
    /// Whether this is behind the last element.
    virtual bool atEnd() const noexcept;
    /// Whether this is the first element, or the end where there is none.
    virtual bool atBegin() const noexcept;
    /// @throws IteratorEx::ExOutOfRange at the end, as `operator++` does; nothing has moved then.
    virtual void next();
    /// @throws IteratorEx::ExOutOfRange at the first element, as `operator--` does.
    virtual void previous();
    /// The number of elements, wherever the iterator is.
    virtual std::size_t getCardinality() const noexcept;

    /// As `next()` and `previous()`:
    virtual ConstIterator operator++(int);
    virtual ConstIterator& operator++();
    virtual ConstIterator operator--(int);
    virtual ConstIterator& operator--();

    /// Whether it was made without a sequence, even an empty one.
    bool isNull() const noexcept { return !_elements; }

private:
    std::shared_ptr<Vector<T> const> _elements;
    std::size_t _position = 0;
};

} // namespace Ko
