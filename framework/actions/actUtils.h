#pragma once

#include "framework/actions/actPredicate.h"

namespace Ko {

/// Runs the one action that is meant by a predicate, for callers that name an action: scripts and keys.
///
/// Only actions on the top level are looked at, sorted by description, that are valid for the target and input; without an
/// input, for an empty `ActBasicParam` item. Of several targets, every valid pair of action and target counts. A null
/// predicate raises `ExNullPtr` as soon as it is applied. Application thread only.
class KO_FRAMEWORK_API ActUtils {
public:
    /// The targets, in the order in which they are asked.
    using Items = List<RCShdPtr<SnItem const>>;

    /// Whether the description is this text, or contains it, byte by byte:
    static PrdPredicate<ActAction> descMatches(LiString const& text);
    static PrdPredicate<ActAction> descHas(LiString const& text);

    /// Performs the first action that the predicate holds for.
    /// @returns whether there was one.
    /// @throws ExAssertionFailed if the predicate holds for more than one, after the first was performed.
    static bool executeSingleAction(RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate,
        RCShdPtr<SnSelection> const& selection);
    static bool executeSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection);
    static bool executeSingleAction(
        Items const& targets, PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection);
    static bool executeSingleAction(Items const& targets, RCShdPtr<SnItem const> const& input,
        PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection);

    /// Whether the predicate holds for exactly one action.
    static bool hasSingleAction(RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate);
    static bool hasSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        PrdPredicate<ActAction> const& predicate);
    static bool hasSingleAction(Items const& targets, PrdPredicate<ActAction> const& predicate);
    static bool hasSingleAction(
        Items const& targets, RCShdPtr<SnItem const> const& input, PrdPredicate<ActAction> const& predicate);
};

} // namespace Ko
