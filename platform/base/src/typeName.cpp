#include "base/typeName.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

namespace Ko {

std::string typeNameOf(char const* mangled) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> const name(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : mangled;
}

std::string currentExceptionTypeName() {
    std::type_info const* const type = abi::__cxa_current_exception_type();
    return type ? typeNameOf(type->name()) : "unknown";
}

} // namespace Ko
