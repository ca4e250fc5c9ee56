#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

namespace Ko {

/// Takes texts apart. Nothing is trimmed: blanks belong to the pieces.
class KO_RESMGT_API LiStringParser {
public:
    /// The pieces between separators, without the empty ones.
    /// @param separator at least one character.
    static Vector<LiString> splitList(LiString const& text, LiString const& separator);
    /// What stands before and after the first separator; `tail` is empty where there is none.
    /// @param separator at least one character.
    /// @returns whether there is a separator.
    static bool splitString(LiString const& text, LiString const& separator, LiString& head, LiString& tail);
};

} // namespace Ko
