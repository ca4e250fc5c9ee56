#include "framework/actions/actFinder.h"
#include "framework/actions/actPresentation.h"
#include "tests/support/recordingAction.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>

namespace {

using namespace Ko;
using namespace KoTest;

class ActFinderTest : public testing::Test, public WithActions {
protected:
    // The texts that are found, with the matched letters in brackets.
    std::string found(char const* pattern, std::size_t limit = 100) {
        std::string result;
        for (auto const& match : finder.find(pattern, none, none, limit)) {
            LiString text = match.text;
            for (auto letter = match.letters.rbegin(); letter != match.letters.rend(); ++letter)
                text.insert(*letter, "^");
            result += text + (match.isValid ? ";" : "!;");
        }
        return result;
    }
    RCShdPtr<SnItem const> const none;
    ActFinder finder;
};

TEST_F(ActFinderTest, PrefersBeginningsOfWordsAndLettersInARow) {
    for (char const* const text : {"Urban Lane", "Blur", "Gaussian Blur", "Rename Layer", "Bevel", "\u00C9clat", "bl"})
        add({text, "", "", {}});
    finder.collect();
    EXPECT_EQ("^B^lur;^b^l;Gaussian ^B^lur;^Beve^l;Ur^ban ^Lane;", found("BL"));
    EXPECT_EQ("^Re^name ^Layer;U^rba^n ^Lane;", found("r n L"));
    EXPECT_EQ("^\u00C9^clat;", found("\u00E9C"));
    EXPECT_EQ("", found("blurs"));
    EXPECT_EQ("Urban Lane;Blur;", found("", 2));
}

TEST_F(ActFinderTest, BreaksTiesByTheLastUseAndThenByTheOrderOfRegistration) {
    for (char const* const text : {"Copy A", "Copy B", "Copy C"})
        add({text, "", "", {}});
    finder.setUsed({"Copy C"});
    finder.collect();
    EXPECT_EQ("^Copy C;^Copy A;^Copy B;", found("c"));
    finder.noteUse(*registry.getAction("Copy B", ""));
    EXPECT_EQ("^Copy B;^Copy C;^Copy A;", found("c"));
    EXPECT_EQ((Vector<LiString>{"Copy B", "Copy C"}), finder.getUsed());
}

class ReasonedAction : public NamedAction<ActAction>, public ActPresented {
public:
    using NamedAction::NamedAction;
    bool inputValid(RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&) const override { return false; }
    void performAction(
        RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&, RCShdPtr<SnSelection> const&) const override {}
    ActPresentation getPresentation(RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&) const override {
        ActPresentation presentation;
        presentation.whyNot = "Select a layer first.";
        presentation.section = getGroup();
        presentation.order = static_cast<int>(getDescription().size());
        return presentation;
    }
};

TEST_F(ActFinderTest, SaysWhyAnActionIsNotValid) {
    auto action = std::make_unique<ReasonedAction>("Blend", "", "");
    ActAction const* const blend = action.get();
    registry.registerAction(std::move(action), ActRegistry::Static);
    add({"Blur", "", "", [](auto const&, auto const&) { return false; }});
    finder.collect();
    EXPECT_EQ("^B^lend!;^B^lur!;", found("bl"));
    EXPECT_EQ("Select a layer first.", finder.find("bl", none, none, 1).at(0).whyNot);
    static_cast<void>(registry.unregisterAction(blend));
}

TEST_F(ActFinderTest, LeavesOutActionsThatGoWhileOthersAreAsked) {
    RecordingAction* second = nullptr;
    add({"a1", "", "", [&](auto const&, auto const&) {
             if (second) static_cast<void>(registry.unregisterAction(std::exchange(second, nullptr)));
             return true;
         }});
    second = add({"a2", "", "", {}});
    finder.collect();
    EXPECT_EQ("^a1;", found("a"));
}

// The best score over all ways in which the pattern is spread over the text, tried one by one.
int bestScore(std::string const& text, std::string const& pattern, std::size_t from = 0, bool isFirst = true) {
    if (pattern.empty()) return 0;
    auto const lower = [](char letter) { return static_cast<char>(letter | 0x20); };
    int best = -1;
    for (std::size_t place = from; place < text.size(); ++place) {
        if (lower(text[place]) != lower(pattern[0])) continue;
        int const rest = bestScore(text, pattern.substr(1), place + 1, false);
        if (rest < 0) continue;
        bool const startsWord = text[place] != ' ' && (place == 0 || text[place - 1] == ' ' ||
                                                          (text[place] == 'B' && text[place - 1] != 'B'));
        int const score = (startsWord ? 8 : 1) + (place == 0 ? 3 : 0) + (!isFirst && place == from ? 5 : 0);
        best = std::max(best, rest + score);
    }
    return best;
}

TEST_F(ActFinderTest, RanksByTheBestSpread) {
    std::vector<std::string> texts{""};
    for (std::size_t next = 0; texts[next].size() < 5; ++next)
        for (char const letter : {'a', 'B', ' '})
            texts.push_back(texts[next] + letter);
    for (std::string const& text : texts)
        add({text, "", "", {}});
    finder.collect();
    for (char const* const pattern : {"a", "ab", "bab", "abab", "bb"}) {
        std::multimap<int, std::string, std::greater<>> scored; // texts of the same score stay in order
        for (std::string const& text : texts)
            if (int const score = bestScore(text, pattern); score >= 0) scored.emplace(score, text);
        std::vector<std::string> expected, ranked;
        for (auto const& [score, text] : scored)
            expected.push_back(text);
        for (auto const& match : finder.find(pattern, none, none, texts.size()))
            ranked.push_back(match.text);
        EXPECT_EQ(expected, ranked) << pattern;
    }
}

TEST_F(ActFinderTest, SectionsAreArrangedByNameAndOrder) {
    ReasonedAction const longest("Longest", "", "b"), shorter("Short", "", "b"), any("Any", "", "a");
    ValidAction const plain("Plain", "", "");
    Vector<ActRegistry::Entry> entries;
    for (ActAction const* const action : std::initializer_list<ActAction const*>{&longest, &plain, &shorter, &any})
        entries.emplace_back(action, none, none);
    std::string arranged;
    for (auto const& [name, items] : ActSection::arrange(ConstIterator<ActRegistry::Entry>(std::move(entries)))) {
        arranged += name + ":";
        for (auto const& item : items)
            arranged += " " + item.entry.getDescription();
        arranged += ";";
    }
    EXPECT_EQ(": Plain;a: Any;b: Short Longest;", arranged);
}

} // namespace
