#include "resmgt/osEnv.h"

#include "base/assertions.h"

#include <cstdlib>
#include <filesystem>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\osEnv"};

} // namespace

bool OsEnv::getVariable(LiString const& name, LiString& value) {
    char const* const found = std::getenv(name.c_str());
    if (!found) return false;
    value = found;
    return true;
}

void OsEnv::putVariable(std::wstring const& assignment) {
    auto const separator = assignment.find(L'=');
    source.require(separator != std::wstring::npos && separator != 0, "separator > 0");
    std::string const name = std::filesystem::path(assignment.substr(0, separator)).string();
    std::string const value = std::filesystem::path(assignment.substr(separator + 1)).string();
    source.require(::setenv(name.c_str(), value.c_str(), 1) == 0, "setenv( name, value, 1 ) == 0");
}

} // namespace Ko
