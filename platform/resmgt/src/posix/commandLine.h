#pragma once

#include "resmgt/liString.h"

namespace Ko {

/// Splits a command line into words at blanks outside quotes, like a shell. Nothing is expanded.
/// @returns false when a quotation has no end, or the line contains a zero byte.
[[nodiscard]] bool splitCommandLine(LiString const& commandLine, Vector<LiString>& words);

} // namespace Ko
