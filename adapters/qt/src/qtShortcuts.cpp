#include "adapters/qt/src/qtShortcuts.h"

#include <utility>

namespace Ko {
namespace {

// The keys that Qt names otherwise.
constexpr std::pair<char const*, Qt::Key> otherNames[] = {{"Escape", Qt::Key_Escape}, {"Insert", Qt::Key_Insert},
    {"Delete", Qt::Key_Delete}, {"PageUp", Qt::Key_PageUp}, {"PageDown", Qt::Key_PageDown}, {"Plus", Qt::Key_Plus},
    {"Comma", Qt::Key_Comma}, {"Print", Qt::Key_Print}};

Qt::Key keyOf(LiString const& name) {
    for (auto const& [other, key] : otherNames)
        if (name == other) return key;
    QKeySequence const sequence(QString::fromStdString(name), QKeySequence::PortableText);
    return sequence.isEmpty() ? Qt::Key_unknown : sequence[0].key();
}

LiString nameOf(Qt::Key key) {
    for (auto const& [name, other] : otherNames)
        if (key == other) return name;
    return QKeySequence(key).toString(QKeySequence::PortableText).toStdString();
}

constexpr std::pair<ActShortcut::Modifier, Qt::KeyboardModifier> modifiers[] = {
    {ActShortcut::Ctrl, Qt::ControlModifier}, {ActShortcut::Alt, Qt::AltModifier},
    {ActShortcut::Shift, Qt::ShiftModifier}, {ActShortcut::Meta, Qt::MetaModifier}};
constexpr char const* modifierNames[] = {"Ctrl+", "Alt+", "Shift+", "Meta+"};

} // namespace

QKeySequence qtKeySequence(ActShortcut const& shortcut) {
    Qt::Key const key = shortcut.isNone() ? Qt::Key_unknown : keyOf(shortcut.getKey());
    if (key == Qt::Key_unknown) return {};
    Qt::KeyboardModifiers held;
    for (auto const& [modifier, its] : modifiers)
        if (shortcut.getModifiers() & modifier) held |= its;
    return QKeySequence(QKeyCombination(held, key));
}

std::optional<ActShortcut> qtShortcut(QKeyCombination pressed) {
    // With Shift, the key arrives as another one.
    Qt::Key const key = pressed.key() == Qt::Key_Backtab ? Qt::Key_Tab : pressed.key();
    LiString text;
    for (std::size_t index = 0; index < std::size(modifiers); ++index)
        if (pressed.keyboardModifiers() & modifiers[index].second) text += modifierNames[index];
    try {
        return ActShortcut::parse(text + nameOf(key));
    } catch (ActShortcutEx const&) {
        return std::nullopt;
    }
}

} // namespace Ko
