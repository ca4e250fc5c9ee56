#include "framework/dragAndDrop/drFormats.h"

#include "base/rcShdPtr.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Ko {

namespace {

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}
bool isSame(LiString const& a, LiString const& b) {
    return std::ranges::equal(a, b, {}, lower, lower);
}

} // namespace

void DrFormats::add(LiString const& mediaType, Make make) {
    if (!make) RCExUtil::throwExNullPtr(typeid(Make).name());
    Form form{mediaType, std::move(make)};
    if (Form const* const found = find(mediaType))
        std::swap(_forms[static_cast<std::size_t>(found - _forms.data())], form);
    else
        _forms.push_back(std::move(form));
}

Vector<LiString> DrFormats::getTypes() const {
    Vector<LiString> types;
    for (Form const& form : _forms)
        types.push_back(form.mediaType);
    return types;
}

// The function may replace forms of this object: a copy is called.
std::optional<std::string> DrFormats::make(LiString const& mediaType) const {
    Form const* const found = find(mediaType);
    if (!found) return std::nullopt;
    Make const make = found->make;
    return make();
}

DrFormats::Form const* DrFormats::find(LiString const& mediaType) const {
    auto const found =
        std::ranges::find_if(_forms, [&](Form const& form) { return isSame(form.mediaType, mediaType); });
    return found == _forms.end() ? nullptr : &*found;
}

} // namespace Ko
