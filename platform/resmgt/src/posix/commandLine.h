#pragma once

#include "resmgt/liString.h"

namespace Ko {

/// Cuts a command line into words as a shell does: at blanks, outside quotes. Nothing is expanded.
/// @returns false when a quotation has no end, or a word cannot be passed to a program.
bool splitCommandLine(LiString const& commandLine, Vector<LiString>& words);

} // namespace Ko
