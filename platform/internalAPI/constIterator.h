#pragma once

#include "base/exBase.h"
#include "internalAPI/internalAPIApi.h"
#include "resmgt/liString.h"

#include <cstddef>
#include <memory>

namespace Ko {

/// Base of the exceptions that iterators raise.
class KO_INTERNALAPI_API IteratorEx : public ExBase {
public:
    class ExOutOfRange;

protected:
    IteratorEx(char const* file, int line, std::string reason);
};

/// An iterator was read or moved beyond an end of its sequence.
class KO_INTERNALAPI_API IteratorEx::ExOutOfRange : public IteratorEx {
public:
    ExOutOfRange(char const* file, int line);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A position in the result of a query: a sequence that never changes and lives as long as an iterator over it. Copies
/// share the sequence and have positions of their own.
///
/// Positions go from the first element to the end, which is past the last one. A step that would leave this range raises
/// `IteratorEx::ExOutOfRange` and does not move. A null iterator behaves as one over an empty sequence.
///
///     for (ActRegistry::Entry const& entry : query().elements())
///         show(entry.getDescription());
///
/// Instantiated once for a `T`, in a source that includes `constIterator.imp.h`.
template <class T>
class ConstIterator {
public:
    class Elements;

    /// A null iterator.
    ConstIterator() noexcept;
    /// Begins at the first element.
    explicit ConstIterator(Vector<T> elements);
    ConstIterator(ConstIterator const&) noexcept;
    ConstIterator& operator=(ConstIterator const&) noexcept;
    virtual ~ConstIterator();

    /// Access to the element at the position.
    /// @throws IteratorEx::ExOutOfRange at the end.
    virtual T const* operator->() const;
    /// The element at the position.
    /// @throws IteratorEx::ExOutOfRange at the end.
    [[nodiscard]] virtual T const& item() const;
    /// The same as `item()`.
    virtual T const& operator*() const;

    /// Moves to the first element; to the end if there is none.
    virtual void first();
    /// Moves to the last element; to the end if there is none.
    virtual void last();
    /// Moves past the last element.
    virtual void end();
    /// Whether the position is past the last element.
    [[nodiscard]] virtual bool atEnd() const noexcept;
    /// Whether the position is the first element, or the end of an empty sequence.
    [[nodiscard]] virtual bool atBegin() const noexcept;
    /// Moves to the next element, or past the last one.
    /// @throws IteratorEx::ExOutOfRange at the end; the position stays.
    virtual void next();
    /// Moves to the element before.
    /// @throws IteratorEx::ExOutOfRange at the first element; the position stays.
    virtual void previous();
    /// The number of elements, independent of the position.
    [[nodiscard]] virtual std::size_t getCardinality() const noexcept;

    /// Moves as `next()`; returns the position before.
    virtual ConstIterator operator++(int);
    /// Moves as `next()`.
    virtual ConstIterator& operator++();
    /// Moves as `previous()`; returns the position before.
    virtual ConstIterator operator--(int);
    /// Moves as `previous()`.
    virtual ConstIterator& operator--();

    /// Whether it was made without a sequence, even an empty one.
    [[nodiscard]] bool isNull() const noexcept { return !_elements; }
    /// All elements for a range-based `for`, independent of the position.
    [[nodiscard]] Elements elements() const noexcept { return Elements(_elements); }

private:
    std::shared_ptr<Vector<T> const> _elements;
    std::size_t _position = 0;
};

/// The elements of a sequence, which lives at least as long as this.
template <class T>
class ConstIterator<T>::Elements {
public:
    /// The first element.
    [[nodiscard]] T const* begin() const noexcept { return _elements ? _elements->data() : nullptr; }
    /// Past the last element.
    [[nodiscard]] T const* end() const noexcept { return _elements ? _elements->data() + _elements->size() : nullptr; }

private:
    friend class ConstIterator;

    explicit Elements(std::shared_ptr<Vector<T> const> const& elements) noexcept : _elements(elements) {}

    std::shared_ptr<Vector<T> const> _elements;
};

} // namespace Ko
