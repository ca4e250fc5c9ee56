#pragma once

#include "framework/command/cmCommand.h"

#include <span>

namespace Ko {

class ExBase;

/// One replacement of neighbouring elements of a history: at position `first`, `numRemoved` elements are replaced by `numInserted`
/// others. Position 0 is "Initial State", which is never part of one.
struct CmHistorySplice {
    /// The position of the first element that is replaced.
    int first = 0;
    /// How many elements are removed there.
    int numRemoved = 0;
    /// How many elements are inserted there.
    int numInserted = 0;
};

/// What one public operation of a `CmCommandStack` did to the history. Valid during the call that delivers it.
///
/// A list that applies the splices of every change and takes over `current` shows the history as it is. Changes come in the order
/// in which they were made; one that a listener makes comes after the call in which it was made.
struct CmHistoryChange {
    /// What happened to the history.
    enum class Kind {
        Logged,       ///< A command was logged; what could be redone is gone, perhaps also the oldest commands.
        Merged,       ///< The logged command was joined with the last one, which is replaced.
        Moved,        ///< Undo, redo or a move over several steps; the elements stay.
        Trimmed,      ///< Commands were dropped: the oldest, or the last.
        Cleared,      ///< All commands were dropped.
        CutByFailure, ///< A command failed while it was undone, redone or taken back; what became unreliable is gone.
        Unlogged      ///< The document changed without a logged command; the elements stay.
    };

    /// What happened; decides which of the members below are set.
    Kind kind = Kind::Logged;
    /// One after the other: each counts in the list that the previous one left.
    std::span<CmHistorySplice const> splices = {};
    /// The position of the current element after the change.
    int current = 0;
    /// `Logged`, `Merged`: the element that was inserted; null for other kinds.
    CmCommand const* logged = nullptr;
    /// `CutByFailure`: the command that failed; null for other kinds.
    CmCommand const* failed = nullptr;
    /// `CutByFailure`: what the command threw; null for other kinds.
    ExBase const* error = nullptr;
};

} // namespace Ko
