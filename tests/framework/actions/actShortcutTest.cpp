#include "framework/actions/actShortcutMap.h"
#include "resmgt/osFile.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace {

using namespace Ko;
using KoTest::caught;
using KoTest::TemporaryFolder;

TEST(ActShortcut, ReadsAndWritesTheUsualNotation) {
    struct {
        char const* text;
        char const* written;
        char const* symbols;
    } const rows[] = {{"", "", ""}, {"ctrl + SHIFT+s", "Ctrl+Shift+S", "\u21E7\u2318S"},
        {"Shift+Control+Alt+Cmd+x", "Ctrl+Alt+Shift+Meta+X", "\u2303\u2325\u21E7\u2318X"}, {"f35", "F35", "F35"},
        {"F", "F", "F"}, {"pgup", "PageUp", "\u21DE"}, {"Esc", "Escape", "\u238B"}, {"+", "Plus", "+"},
        {"Ctrl++", "Ctrl+Plus", "\u2318+"}, {"Ctrl+ +", "Ctrl+Plus", "\u2318+"}, {"Alt+,", "Alt+Comma", "\u2325,"},
        {"Win+\u00F6", "Meta+\u00F6", "\u2303\u00F6"}, {"Del", "Delete", "\u2326"}, {"0", "0", "0"}};
    for (auto const& [text, written, symbols] : rows) {
        ActShortcut const shortcut = ActShortcut::parse(text);
        EXPECT_EQ(written, shortcut.getText()) << text;
        EXPECT_EQ(written, shortcut.getDisplayText(ActShortcut::Keyboard::Words));
        EXPECT_EQ(symbols, shortcut.getDisplayText(ActShortcut::Keyboard::Symbols)) << text;
        EXPECT_EQ(shortcut, ActShortcut::parse(written)) << text;
    }
}

TEST(ActShortcut, RefusesOtherTextsInWords) {
    for (auto const& [text, problem] :
        std::vector<std::pair<char const*, char const*>>{{"Ctrl+", "the key is missing"},
            {"Ctrl", "the key is missing"}, {"Shift+Alt", "the key is missing"},
            {"Hyper+S", "there is no modifier \"Hyper\""}, {"Ctrl+Control+S", "it has \"Control\" twice"},
            {"Ctrl+SS", "there is no key \"SS\""}, {"F36", "there is no key \"F36\""}, {"F0", "there is no key \"F0\""},
            {"F99999999999", "there is no key \"F99999999999\""}, {"\x01", "there is no key \"\x01\""},
            {"Ctrl+\xFF", "there is no key \"\xFF\""}, {"\u00A0", "there is no key \"\u00A0\""}})
        EXPECT_EQ(LiString("\"") + text + "\" is no shortcut: " + problem + ".",
            caught<ActShortcutEx>([parsed = text] { static_cast<void>(ActShortcut::parse(parsed)); }).getReason());
}

TEST(ActShortcut, ReadsLists) {
    for (auto const& [text, written] : std::vector<std::pair<char const*, char const*>>{{"", ""}, {" , ", ""},
             {"ctrl+r,F2", "Ctrl+R, F2"}, {"Ctrl+,, F2", "Ctrl+Comma, F2"}, {"A, Ctrl++", "A, Ctrl+Plus"}})
        EXPECT_EQ(written, ActShortcut::getText(ActShortcut::parseList(text))) << text;
}

class ActShortcutMapTest : public testing::Test {
protected:
    ActShortcutMapTest() {
        map.setDefaults("Save", ActShortcut::parseList("Ctrl+S"));
        map.setDefaults("Layers/Rename", ActShortcut::parseList("F2, Ctrl+R"), "layers");
        map.setDefaults("Layers/Reset", ActShortcut::parseList("R"), "layers");
        map.setDefaults("Rotate", ActShortcut::parseList("R"));
    }
    std::string found(char const* shortcut, char const* context = "") const {
        std::string names;
        for (LiString const& name : map.find(ActShortcut::parse(shortcut), context))
            names += name + ";";
        return names;
    }
    std::string conflicts() const {
        std::string text;
        for (auto const& conflict : map.getConflicts()) {
            text += conflict.context + ":" + conflict.shortcut.getText();
            for (LiString const& name : conflict.actions)
                text += " " + name;
            text += ";";
        }
        return text;
    }
    std::string shortcutsOf(char const* name) const { return ActShortcut::getText(map.getShortcuts(name)); }

    ActShortcutMap map;
    TemporaryFolder folder;
};

TEST_F(ActShortcutMapTest, PrefersTheContextAndTheChangesOfTheUser) {
    EXPECT_EQ("Rotate;", found("R"));
    EXPECT_EQ("Layers/Reset;", found("R", "layers"));
    EXPECT_EQ("Save;", found("Ctrl+S", "layers"));
    EXPECT_EQ("", found("F2"));
    EXPECT_EQ("", conflicts());

    map.change("Save", {});
    map.change("Rotate", ActShortcut::parseList("F2, F3"));
    map.change("Layers/Reset", ActShortcut::parseList("F2"));
    EXPECT_EQ("", found("Ctrl+S"));
    EXPECT_EQ("Rotate;", found("F3", "canvas"));
    EXPECT_EQ("Layers/Rename;Layers/Reset;", found("F2", "layers"));
    EXPECT_EQ("layers:F2 Layers/Rename Layers/Reset;", conflicts());

    map.reset("Save");
    map.remove("Layers/Rename");
    EXPECT_EQ("Ctrl+S", shortcutsOf("Save"));
    EXPECT_EQ("", conflicts());
}

TEST_F(ActShortcutMapTest, KeepsChangesInATextWhateverTheNamesAre) {
    for (LiString const name : {"a = b", "#1", " blank ", "back\\slash\\", "two\nlines", "=", "\xC3\xBC\t"}) {
        map.change(name, ActShortcut::parseList("Ctrl+Plus, A"));
        ActShortcutMap other;
        EXPECT_TRUE(other.setText(map.getText(), "x").empty()) << name;
        EXPECT_EQ("Ctrl+Plus, A", ActShortcut::getText(other.getShortcuts(name))) << name;
        EXPECT_EQ(map.getText(), other.getText());
    }
}

TEST_F(ActShortcutMapTest, NamesLinesThatItCannotReadAndKeepsThem) {
    auto const problems = map.setText(
        "\xEF\xBB\xBF# mine\r\n\r\nSave = Hyper+S\r\n  Rotate=F5  \r\nno sign\nLater \t=\nRotate=F6", "keys");
    ASSERT_EQ(2u, problems.size());
    EXPECT_EQ("keys:3: \"Hyper+S\" is no shortcut: there is no modifier \"Hyper\".", problems[0]);
    EXPECT_EQ("keys:5: \"no sign\" is no shortcut: an equals sign is missing after the name.", problems[1]);
    EXPECT_EQ("F6", shortcutsOf("Rotate"));
    EXPECT_EQ("Ctrl+S", shortcutsOf("Save"));
    map.setDefaults("Later", ActShortcut::parseList("L")); // its plug-in is loaded now
    EXPECT_EQ("", shortcutsOf("Later"));
    EXPECT_EQ("Later = \nRotate = F6\nSave = Hyper+S\r\nno sign\n", map.getText());
}

TEST_F(ActShortcutMapTest, IsLoadedFromAFileAndSavedToIt) {
    OsFilePath const path = (folder / "keys").string();
    EXPECT_TRUE(map.load(path).empty());
    map.change("Save", ActShortcut::parseList("F12"));
    map.save(path);
    ActShortcutMap other;
    EXPECT_TRUE(other.load(path).empty());
    EXPECT_TRUE(other.isChanged("Save"));
    EXPECT_THROW(static_cast<void>(other.load((folder / "").string())), OsFileEx::ExInvalidPath);
    EXPECT_TRUE(other.isChanged("Save"));
    EXPECT_THROW(other.save((folder / "missing" / "keys").string()), OsFileEx::ExInvalidPath);
}

} // namespace
