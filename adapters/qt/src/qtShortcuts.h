#pragma once

#include "framework/actions/actShortcut.h"

#include <QKeySequence>
#include <QList>
#include <optional>

namespace Ko {

/// A shortcut of the library for Qt.
QKeySequence qtKeySequence(ActShortcut const& shortcut);
/// A pressed key for the library; nothing for a modifier alone and for keys that the library has no name for.
std::optional<ActShortcut> qtShortcut(QKeyCombination pressed);

} // namespace Ko
