#pragma once

#include "base/exBase.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <compare>
#include <cstdint>

namespace Ko {

/// A text that is no shortcut; the reason quotes it and names the mistake.
class KO_FRAMEWORK_API ActShortcutEx : public ExBase {
public:
    ActShortcutEx(char const* file, int line, LiString const& text, LiString const& problem);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A key with its modifiers, such as Ctrl+Shift+S. A value; it knows no toolkit. Any thread.
class KO_FRAMEWORK_API ActShortcut {
public:
    /// Bits of `getModifiers`. `Meta` is the key that systems name Windows, Super or Command.
    enum Modifier : std::uint8_t { Ctrl = 1, Alt = 2, Shift = 4, Meta = 8 };
    /// How a user sees the keys named.
    enum class Keyboard : std::uint8_t {
        /// "Ctrl+Shift+S"
        Words,
        /// With the symbols of keyboards that have a Command key, which takes the place of Ctrl: U+21E7 U+2318 S.
        Symbols
    };

    /// No shortcut.
    ActShortcut() noexcept = default;
    /// Reads "Ctrl+Shift+S": modifiers and one key, in any case. A key is one character or a name: "F1" to "F35", "Escape", "Tab",
    /// "Backspace", "Return", "Enter", "Insert", "Delete", "Home", "End", "PageUp", "PageDown", "Left", "Right", "Up", "Down",
    /// "Space", "Plus", "Comma", "Print", "Pause", "Menu", "Help". Usual other names, such as "Control", "Cmd", "Esc" and "PgUp", are
    /// understood. The empty text is no shortcut.
    /// @throws ActShortcutEx for any other text.
    [[nodiscard]] static ActShortcut parse(LiString const& text);
    /// Reads shortcuts that are separated by commas: "Ctrl+R, F2".
    /// @throws ActShortcutEx as `parse`.
    [[nodiscard]] static Vector<ActShortcut> parseList(LiString const& text);

    /// The text that `parse` reads on every system, modifiers in the order Ctrl, Alt, Shift, Meta; empty for no shortcut.
    [[nodiscard]] LiString getText() const;
    /// The text for a menu.
    [[nodiscard]] LiString getDisplayText(Keyboard keyboard) const;
    /// The texts of several shortcuts, separated by commas, as `parseList` reads them.
    [[nodiscard]] static LiString getText(Vector<ActShortcut> const& shortcuts);

    /// Whether this is no shortcut.
    [[nodiscard]] bool isNone() const noexcept { return _key.empty(); }
    /// Which modifiers are held.
    [[nodiscard]] std::uint8_t getModifiers() const noexcept { return _modifiers; }
    /// The key: one character, an ASCII letter as a capital, or a name from the list at `parse`; empty for no shortcut.
    [[nodiscard]] LiString const& getKey() const noexcept { return _key; }

    /// Whether modifiers and key are the same.
    friend bool operator==(ActShortcut const&, ActShortcut const&) noexcept = default;
    /// By modifiers, then by key.
    friend auto operator<=>(ActShortcut const&, ActShortcut const&) noexcept = default;

private:
    std::uint8_t _modifiers = 0;
    LiString _key;
};

} // namespace Ko
