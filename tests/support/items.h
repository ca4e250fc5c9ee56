#pragma once

#include "internalAPI/snItemConvert.h"
#include "internalAPI/snSelection.h"

#include <functional>
#include <initializer_list>
#include <string>

namespace KoTest {

inline Ko::RCShdPtr<Ko::SnItem const> text(char const* value) {
    return Ko::SnItemBasic<Ko::LiString>::create(value);
}

/// Calls a function when it is destroyed.
class Fuse : public Ko::SnItemBasic<Ko::LiString> {
public:
    explicit Fuse(std::function<void()> onDestroy) : SnItemBasic("fuse", nullptr), _onDestroy(std::move(onDestroy)) {}
    ~Fuse() override { _onDestroy(); }

private:
    std::function<void()> const _onDestroy;
};

inline Ko::RCShdPtr<Ko::SnSelection> selectionOf(std::initializer_list<char const*> values) {
    auto const selection = Ko::SnSelection::create();
    for (char const* const value : values)
        selection->add(text(value));
    return selection;
}

/// The text that an item carries; "?" for another kind of item.
inline std::string valueOf(Ko::RCShdPtr<Ko::SnItem const> const& item) {
    auto const* const carrier = dynamic_cast<Ko::SnItemBasic<Ko::LiString> const*>(item.get());
    return carrier ? carrier->get() : "?";
}

/// The texts of a selection, with blanks between them.
inline std::string content(Ko::SnSelection const& selection) {
    std::string result;
    for (auto const& item : selection.getItems())
        result += (result.empty() ? "" : " ") + valueOf(item);
    return result;
}

} // namespace KoTest
