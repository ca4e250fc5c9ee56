#include "internalAPI/constIterator.h"

#include <utility>

namespace Ko {

IteratorEx::IteratorEx(char const* file, int line, std::string reason) : ExBase(file, line, std::move(reason)) {}

IteratorEx::ExOutOfRange::ExOutOfRange(char const* file, int line)
    : IteratorEx(file, line, "An iterator went beyond the end.") {}
ExBase* IteratorEx::ExOutOfRange::clone() const {
    return copyOf(*this);
}
void IteratorEx::ExOutOfRange::raise() const {
    throw *this;
}

} // namespace Ko
