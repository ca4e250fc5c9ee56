#pragma once

#include "framework/actions/actRegistry.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace Ko {

/// Finds actions by a few letters of their texts, for a palette.
///
/// A text matches where it contains the letters of the pattern in their order, without regard to case. Better matches come first: letters
/// at the beginnings of words and letters in a row count more. Among equal matches, recently used actions come first, then the order
/// of registration decides. A value that a palette owns; application thread only.
///
///     ActFinder finder;
///     finder.collect(); // again after ActRegistry::onChange
///     for (auto const& match : finder.find("rnl", target, input, 20)) list.add(match.text, match.whyNot);
class KO_FRAMEWORK_API ActFinder {
public:
    /// An action whose text matches.
    struct Match {
        /// Not owned; must not be used after the action was destroyed.
        ActAction const* action;
        /// What is shown: the display string of the action, or its description where that is empty.
        LiString text;
        /// Where the letters of the pattern are in the text, as offsets in bytes.
        Vector<std::size_t> letters;
        /// Whether the action is valid for the target and the input.
        bool isValid;
        /// Why it is not valid, if it is an `ActPresented` that says so.
        LiString whyNot;
    };

    /// Reads the texts of all registered actions. Actions that are destroyed later must not be found: collect again before.
    void collect();
    /// The best matches, those that are not valid included.
    /// @param pattern blanks are ignored; an empty one matches every action.
    /// @param limit the largest number of matches; only so many actions are asked whether they are valid.
    [[nodiscard]] Vector<Match> find(LiString const& pattern, RCShdPtr<SnItem const> const& target,
        RCShdPtr<SnItem const> const& input, std::size_t limit) const;

    /// Makes this action the one that was used last.
    void noteUse(ActAction const& action);
    /// The names of the used actions, as `ActShortcutMap::getName`, the last one first; for a host that keeps them.
    [[nodiscard]] Vector<LiString> getUsed() const;
    /// Replaces the used actions by kept ones. To be called before `collect`.
    void setUsed(Vector<LiString> const& names);

private:
    struct Candidate {
        ActAction const* action;
        LiString text;
        // The letters, from here on in `_letters`.
        std::size_t first;
        std::size_t numLetters;
        // A bit for each letter, several letters to a bit.
        std::uint64_t letterSet;
        // When it was used; 0 for never.
        std::uint64_t used;
    };
    class Scores;

    Vector<std::size_t> rank(std::u32string_view pattern, std::size_t limit) const;
    Match toMatch(Candidate const& candidate, std::u32string_view pattern, RCShdPtr<SnItem const> const& target,
        RCShdPtr<SnItem const> const& input) const;
    Scores scoresOf(Candidate const& candidate, std::u32string_view pattern) const;

    Vector<Candidate> _candidates;
    std::u32string _letters;
    // Parallel to `_letters`: whether a word begins there.
    Vector<char> _isWordStart;
    std::map<LiString, std::uint64_t> _used;
    std::uint64_t _numUses = 0;
};

} // namespace Ko
