#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

namespace Ko {

/// Splits texts. Nothing is trimmed: the pieces keep their blanks.
class KO_RESMGT_API LiStringParser {
public:
    /// The pieces between separators; empty pieces are omitted.
    /// @param separator at least one character.
    static Vector<LiString> splitList(LiString const& text, LiString const& separator);
    /// Sets `head` to the text before the first separator and `tail` to the rest; without separator, `tail` is empty.
    /// @param separator at least one character.
    /// @returns whether the text has a separator.
    static bool splitString(LiString const& text, LiString const& separator, LiString& head, LiString& tail);
};

} // namespace Ko
