#pragma once

#include "framework/actions/actAction.h"

#include <QString>

namespace Ko {

/// A text for a menu or a button, where an ampersand would mark the next letter as a key.
inline QString qtEntryText(QString text) {
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

/// What an action is called for users.
inline LiString qtDisplayText(ActAction const& action) {
    LiString const shown = action.getDisplayString();
    return shown.empty() ? action.getDescription() : shown;
}

/// The composite that an action belongs to, to be shown before its text: "Blend \u203A "; empty where it belongs to none.
inline QString qtCompositePrefix(ActAction const& action) {
    QString const composite = QString::fromStdString(action.getCompositeName());
    return composite.isEmpty() ? composite : composite + QStringLiteral(" \u203A ");
}

} // namespace Ko
