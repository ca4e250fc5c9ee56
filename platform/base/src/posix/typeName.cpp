#include "base/typeName.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace Ko {

std::string typeNameOf(char const* mangled) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> const name(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : mangled;
}

} // namespace Ko
