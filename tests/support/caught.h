#pragma once

#include <stdexcept>

namespace KoTest {

/// What the call throws, which has to be an `Exception`.
template <class Exception, class Call>
Exception caught(Call call) {
    try {
        call();
    } catch (Exception const& error) {
        return error;
    }
    throw std::logic_error("nothing was thrown");
}

} // namespace KoTest
