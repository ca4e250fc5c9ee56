#include "framework/actions/actFinder.h"

#include "framework/actions/actPresentation.h"
#include "framework/actions/actShortcutMap.h"
#include "framework/actions/src/actRecords.h"
#include "framework/actions/src/actText.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace Ko {

namespace {

// Longer texts are matched by their beginnings.
constexpr std::size_t mostLetters = 128;

// A letter in the middle of a word, apart from the one before, counts 1.
constexpr int plainLetter = 1;
constexpr int wordStart = 8;
constexpr int inARow = 5;
constexpr int textStart = 3;

std::uint64_t bitOf(char32_t letter) noexcept {
    return std::uint64_t{1} << (letter % 64);
}

bool isSeparator(char32_t character) noexcept {
    bool const isLetterOrDigit = character >= 0x80 || (character >= '0' && character <= '9') ||
                                 ActText::fold(character) != character || (character >= 'a' && character <= 'z');
    return !isLetterOrDigit;
}

LiString textOf(ActAction const& action) {
    LiString text = action.getDisplayString();
    return text.empty() ? action.getDescription() : text;
}

std::u32string foldedPattern(LiString const& pattern) {
    std::u32string letters;
    for (ActText reader(pattern); !reader.isAtEnd();)
        if (char32_t const character = reader.next(); character != ' ') letters += ActText::fold(character);
    return letters;
}

std::uint64_t setOf(std::u32string_view letters) noexcept {
    std::uint64_t set = 0;
    for (char32_t const letter : letters)
        set |= bitOf(letter);
    return set;
}

} // namespace

/// The best way in which a pattern is spread over a text.
class ActFinder::Scores {
public:
    static constexpr int noMatch = -1;

    Scores(std::u32string_view text, char const* isWordStart, std::u32string_view pattern)
        : _text(text), _isWordStart(isWordStart), _pattern(pattern) {}

    // The score of the best spread, `noMatch` where there is none.
    int compute() {
        if (_pattern.size() > _text.size() || !isSubsequence()) return noMatch;
        for (std::size_t letter = 0; letter < _pattern.size(); ++letter)
            addRow(letter, nullptr);
        return _pattern.empty() ? 0 : _upTo[_text.size() - 1];
    }

    // The places of the letters in the best spread, which exists.
    Vector<std::size_t> computePlaces() {
        Vector<Vector<int>> rows(_pattern.size(), Vector<int>(_text.size(), noMatch));
        for (std::size_t letter = 0; letter < _pattern.size(); ++letter)
            addRow(letter, rows[letter].data());
        Vector<std::size_t> places(_pattern.size());
        std::size_t end = _text.size();
        int before = noMatch; // of the letter after this one, if they are in a row
        for (std::size_t letter = _pattern.size(); letter-- > 0;) {
            Vector<int> const& row = rows[letter];
            auto const best = std::max_element(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(end));
            bool const isInARow = before != noMatch && row[end - 1] != noMatch && row[end - 1] + inARow >= *best;
            std::size_t const place = isInARow ? end - 1 : static_cast<std::size_t>(best - row.begin());
            places[letter] = place;
            before = row[place];
            end = place;
        }
        return places;
    }

private:
    bool isSubsequence() const noexcept {
        std::size_t place = 0;
        for (char32_t const letter : _pattern) {
            place = _text.find(letter, place);
            if (place == _text.npos) return false;
            ++place;
        }
        return true;
    }

    // Extends the spreads of the letters before by one letter. `_endingAt` are the scores of spreads whose last letter is there, `_upTo`
    // the best scores of spreads that end there or before.
    void addRow(std::size_t letter, int* row) {
        int endingBefore = noMatch; // of the letters before, one place to the left
        int upToBefore = letter == 0 ? 0 : noMatch;
        int best = noMatch;
        for (std::size_t place = 0; place < _text.size(); ++place) {
            int const endingHere = std::exchange(_endingAt[place], noMatch);
            int const upToHere = _upTo[place];
            bool const isReachable = upToBefore != noMatch;
            if (isReachable && _text[place] == _pattern[letter]) {
                int const apart = upToBefore;
                int const together = endingBefore == noMatch ? noMatch : endingBefore + inARow;
                _endingAt[place] = std::max(apart, together) + scoreOf(place);
            }
            if (row) row[place] = _endingAt[place];
            best = std::max(best, _endingAt[place]);
            _upTo[place] = best;
            endingBefore = letter == 0 ? noMatch : endingHere;
            upToBefore = letter == 0 ? 0 : upToHere;
        }
    }
    int scoreOf(std::size_t place) const noexcept {
        return (_isWordStart[place] ? wordStart : plainLetter) + (place == 0 ? textStart : 0);
    }

    std::u32string_view _text;
    char const* _isWordStart;
    std::u32string_view _pattern;
    std::array<int, mostLetters> _endingAt{};
    std::array<int, mostLetters> _upTo{};
};

void ActFinder::collect() {
    Vector<Candidate> candidates;
    std::u32string letters;
    Vector<char> isWordStart;
    ActRecords::Walk walk(ActRecords::get());
    while (ActAction const* const action = walk.next()) {
        LiString text = textOf(*action);
        auto const used = _used.find(ActShortcutMap::getName(*action));
        if (!walk.isCurrentRegistered()) continue;
        std::size_t const first = letters.size();
        char32_t before = ' ';
        for (ActText reader(text); !reader.isAtEnd() && letters.size() - first < mostLetters;) {
            char32_t const character = reader.next();
            char32_t const letter = ActText::fold(character);
            bool const isInnerCapital = letter != character && before == ActText::fold(before);
            letters += letter;
            isWordStart.push_back(!isSeparator(character) && (isSeparator(before) || isInnerCapital));
            before = character;
        }
        std::uint64_t const letterSet = setOf(std::u32string_view(letters).substr(first));
        candidates.push_back({action, std::move(text), first, letters.size() - first, letterSet,
            used == _used.end() ? 0 : used->second});
    }
    if (walk.hasLost()) std::erase_if(candidates, [&](auto const& one) { return !walk.isRegistered(one.action); });
    _candidates = std::move(candidates);
    _letters = std::move(letters);
    _isWordStart = std::move(isWordStart);
}

ActFinder::Scores ActFinder::scoresOf(Candidate const& candidate, std::u32string_view pattern) const {
    std::u32string_view const letters = _letters;
    return Scores(
        letters.substr(candidate.first, candidate.numLetters), _isWordStart.data() + candidate.first, pattern);
}

// The candidates that match, the best ones first.
Vector<std::size_t> ActFinder::rank(std::u32string_view pattern, std::size_t limit) const {
    struct Ranked {
        int score;
        std::uint64_t used;
        std::size_t index;
    };
    std::uint64_t const patternSet = setOf(pattern);
    Vector<Ranked> ranking;
    for (std::size_t index = 0; index < _candidates.size(); ++index) {
        Candidate const& candidate = _candidates[index];
        if ((patternSet & ~candidate.letterSet) != 0) continue;
        int const score = scoresOf(candidate, pattern).compute();
        if (score != Scores::noMatch) ranking.push_back({score, candidate.used, index});
    }
    auto const isBetter = [](Ranked const& one, Ranked const& other) {
        if (one.score != other.score) return one.score > other.score;
        return one.used != other.used ? one.used > other.used : one.index < other.index;
    };
    auto const end = ranking.begin() + static_cast<std::ptrdiff_t>(std::min(limit, ranking.size()));
    std::partial_sort(ranking.begin(), end, ranking.end(), isBetter);
    Vector<std::size_t> indices;
    std::transform(ranking.begin(), end, std::back_inserter(indices), [](Ranked const& one) { return one.index; });
    return indices;
}

ActFinder::Match ActFinder::toMatch(Candidate const& candidate, std::u32string_view pattern,
    RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const {
    ActPerforming const asked(candidate.action);
    Match match{candidate.action, candidate.text, {}, candidate.action->inputValid(target, input), {}};
    if (!match.isValid) match.whyNot = ActPresented::of(*candidate.action, target, input).whyNot;
    Vector<std::size_t> offsets;
    for (ActText reader(candidate.text); !reader.isAtEnd(); reader.next())
        offsets.push_back(reader.getPosition());
    for (std::size_t const place : scoresOf(candidate, pattern).computePlaces())
        match.letters.push_back(offsets[place]);
    return match;
}

Vector<ActFinder::Match> ActFinder::find(LiString const& pattern, RCShdPtr<SnItem const> const& target,
    RCShdPtr<SnItem const> const& input, std::size_t limit) const {
    std::u32string const letters = foldedPattern(pattern);
    Vector<Match> matches;
    ActRecords::Hold hold(ActRecords::get());
    for (std::size_t const index : rank(letters, limit))
        if (hold.isRegistered(_candidates[index].action))
            matches.push_back(toMatch(_candidates[index], letters, target, input));
    return matches;
}

void ActFinder::noteUse(ActAction const& action) {
    _used[ActShortcutMap::getName(action)] = ++_numUses;
    for (Candidate& candidate : _candidates)
        if (candidate.action == &action) candidate.used = _numUses;
}

Vector<LiString> ActFinder::getUsed() const {
    Vector<std::pair<std::uint64_t, LiString>> uses;
    for (auto const& [name, used] : _used)
        uses.emplace_back(used, name);
    std::sort(uses.rbegin(), uses.rend());
    Vector<LiString> names;
    for (auto& use : uses)
        names.push_back(std::move(use.second));
    return names;
}

void ActFinder::setUsed(Vector<LiString> const& names) {
    _used.clear();
    _numUses = names.size();
    std::uint64_t used = names.size();
    for (LiString const& name : names)
        _used.emplace(name, used--);
}

} // namespace Ko
