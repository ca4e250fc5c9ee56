#pragma once

#include "framework/actions/actPredicate.h"

namespace Ko {

/// Performs the one action that a predicate selects, for callers that name an action, such as scripts and keys.
///
/// The predicate is applied to the top-level actions that are valid for the target and the input, sorted by description. The
/// forms without an input use an empty `ActBasicParam` item. Of several targets, every valid pair of action and target
/// counts. A null predicate raises `ExNullPtr` when it is applied. Application thread only.
class KO_FRAMEWORK_API ActUtils {
public:
    /// The targets, in the order in which they are asked.
    using Items = List<RCShdPtr<SnItem const>>;

    /// Holds for an action whose description is this text, byte by byte.
    [[nodiscard]] static PrdPredicate<ActAction> descMatches(LiString const& text);
    /// Holds for an action whose description contains this text, byte by byte.
    [[nodiscard]] static PrdPredicate<ActAction> descHas(LiString const& text);

    /// Applies the predicate to one action after the other, and performs the one that it holds for. Actions that were
    /// unregistered meanwhile are left out.
    /// @returns whether an action was performed.
    /// @throws ExAssertionFailed if the predicate holds for a second action, after the first was performed.
    static bool executeSingleAction(RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate,
        RCShdPtr<SnSelection> const& selection);
    /// The same with an input.
    static bool executeSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection);
    /// The same for several targets.
    static bool executeSingleAction(
        Items const& targets, PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection);
    /// The same for several targets with an input.
    static bool executeSingleAction(Items const& targets, RCShdPtr<SnItem const> const& input,
        PrdPredicate<ActAction> const& predicate, RCShdPtr<SnSelection> const& selection);

    /// Whether the predicate holds for exactly one action.
    [[nodiscard]] static bool hasSingleAction(
        RCShdPtr<SnItem const> const& target, PrdPredicate<ActAction> const& predicate);
    /// The same with an input.
    [[nodiscard]] static bool hasSingleAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        PrdPredicate<ActAction> const& predicate);
    /// The same for several targets.
    [[nodiscard]] static bool hasSingleAction(Items const& targets, PrdPredicate<ActAction> const& predicate);
    /// The same for several targets with an input.
    [[nodiscard]] static bool hasSingleAction(
        Items const& targets, RCShdPtr<SnItem const> const& input, PrdPredicate<ActAction> const& predicate);
};

} // namespace Ko
