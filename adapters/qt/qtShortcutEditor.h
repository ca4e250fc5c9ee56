#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/actions/actShortcutMap.h"

#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace Ko {

/// Shows the shortcuts of all registered actions, and lets the user change them: search, press the keys, take changes back. Conflicts are
/// named as soon as they arise. A widget for a dialog of the host's. Application thread only.
///
///     auto* const editor = new QtShortcutEditor(dialog);
///     editor->setShortcuts(menus->getShortcuts());
///     connect(editor, &QtShortcutEditor::shortcutsChanged, menus, [=] { menus->setShortcuts(editor->getShortcuts()); });
class KO_QT_API QtShortcutEditor : public QWidget {
    Q_OBJECT

public:
    explicit QtShortcutEditor(QWidget* parent = nullptr);
    ~QtShortcutEditor() override;

    /// Shows these shortcuts, for the actions that are registered now.
    void setShortcuts(ActShortcutMap const& shortcuts);
    /// The shortcuts with the user's changes, which the host keeps (`ActShortcutMap::save`).
    [[nodiscard]] ActShortcutMap const& getShortcuts() const noexcept { return _shortcuts; }

Q_SIGNALS:
    /// The user has changed a shortcut.
    void shortcutsChanged();

private:
    class KeyEdit;

    QTreeWidgetItem* current() const;
    void show(QTreeWidgetItem& row, LiString const& name);
    void showAll();
    void showCurrent();
    void filter(QString const& text);
    void assign(ActShortcut const& shortcut);
    void change(Vector<ActShortcut> const& shortcuts);
    void reset();
    void finishChange();
    QString conflictOf(LiString const& name) const;

    ActShortcutMap _shortcuts;
    QLineEdit* _search;
    QTreeWidget* _tree;
    KeyEdit* _keys;
    QCheckBox* _keepsOthers;
    QPushButton* _clear;
    QPushButton* _reset;
    QLabel* _message;
};

} // namespace Ko
