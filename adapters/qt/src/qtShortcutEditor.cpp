#include "adapters/qt/qtShortcutEditor.h"

#include "adapters/qt/src/qtActionText.h"
#include "adapters/qt/src/qtOwned.h"
#include "adapters/qt/src/qtShapes.h"
#include "adapters/qt/src/qtShortcuts.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actRegistry.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

namespace Ko {
namespace {

enum Column { NameColumn, KeysColumn, ContextColumn };

LiString nameOf(QTreeWidgetItem const& row) {
    return row.data(NameColumn, Qt::UserRole).toString().toStdString();
}

QString keysText(Vector<ActShortcut> const& shortcuts) {
    QStringList texts;
    for (ActShortcut const& shortcut : shortcuts)
        texts.append(qtKeySequence(shortcut).toString(QKeySequence::NativeText));
    return texts.join(QStringLiteral(", "));
}

// The texts of the actions that can be performed, by their names.
std::map<LiString, QString> readActions() {
    std::map<LiString, QString> texts;
    auto const actions = ActRegistry::getInstance().getAllActions(ActRegistry::AllSorted);
    for (ActAction const* const action : actions.elements()) {
        if (dynamic_cast<ActCompositeAction const*>(action)) continue;
        texts.emplace(ActShortcutMap::getName(*action),
            qtCompositePrefix(*action) + QString::fromStdString(qtDisplayText(*action)));
    }
    return texts;
}

} // namespace

/// Takes the next keys, instead of a text.
class QtShortcutEditor::KeyEdit : public QLineEdit {
public:
    explicit KeyEdit(QtShortcutEditor* editor) : QLineEdit(editor), _editor(editor) {
        setPlaceholderText(tr("Press the new keys here"));
        setAccessibleName(tr("New keys"));
        setContextMenuPolicy(Qt::NoContextMenu);
    }

protected:
    bool event(QEvent* event) override {
        bool const isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
        if (!isKey) return QLineEdit::event(event);
        auto const& key = static_cast<QKeyEvent const&>(*event);
        // The keys that lead to other parts of the dialog.
        if (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab || key.key() == Qt::Key_Escape)
            return QLineEdit::event(event);
        event->accept();
        if (event->type() == QEvent::KeyPress)
            if (auto const shortcut = qtShortcut(key.keyCombination())) _editor->assign(*shortcut);
        return true;
    }

private:
    QtShortcutEditor* _editor;
};

QtShortcutEditor::QtShortcutEditor(QWidget* parent)
    : QWidget(parent), _search(qtOwned<QLineEdit>(this)), _tree(qtOwned<QTreeWidget>(this)),
      _keys(qtOwned<KeyEdit>(this)), _keepsOthers(qtOwned<QCheckBox>(tr("&Add to the present ones"), this)),
      _clear(qtOwned<QPushButton>(tr("&Remove"), this)), _reset(qtOwned<QPushButton>(tr("&Default"), this)),
      _message(qtOwned<QLabel>(this)) {
    _search->setPlaceholderText(tr("Search"));
    _search->setAccessibleName(tr("Search"));
    _search->setClearButtonEnabled(true);
    _tree->setHeaderLabels({tr("Command"), tr("Keys"), tr("Where")});
    _tree->setAccessibleName(tr("Shortcuts"));
    _tree->setRootIsDecorated(false);
    _tree->setUniformRowHeights(true);
    _tree->header()->setStretchLastSection(true);
    _message->setWordWrap(true);
    auto* const keys = qtOwned<QHBoxLayout>();
    for (QWidget* const part : std::initializer_list<QWidget*>{_keys, _keepsOthers, _clear, _reset})
        keys->addWidget(part);
    auto* const layout = qtOwned<QVBoxLayout>(this);
    layout->addWidget(_search);
    layout->addWidget(_tree);
    layout->addLayout(keys);
    layout->addWidget(_message);
    connect(_search, &QLineEdit::textChanged, this, &QtShortcutEditor::filter);
    connect(_tree, &QTreeWidget::currentItemChanged, this, &QtShortcutEditor::showCurrent);
    connect(_tree, &QTreeWidget::itemActivated, this, [this] { _keys->setFocus(); });
    connect(_clear, &QPushButton::clicked, this, [this] { change({}); });
    connect(_reset, &QPushButton::clicked, this, &QtShortcutEditor::reset);
    setShortcuts({});
}

QtShortcutEditor::~QtShortcutEditor() = default;

void QtShortcutEditor::setShortcuts(ActShortcutMap const& shortcuts) {
    _shortcuts = shortcuts;
    _tree->clear();
    for (auto const& [name, text] : readActions()) {
        auto* const row = qtOwned<QTreeWidgetItem>(_tree);
        row->setText(NameColumn, text);
        row->setData(NameColumn, Qt::UserRole, QString::fromStdString(name));
    }
    showAll();
    for (int column : {NameColumn, KeysColumn})
        _tree->resizeColumnToContents(column);
    filter(_search->text());
    showCurrent();
}

QTreeWidgetItem* QtShortcutEditor::current() const {
    QTreeWidgetItem* const row = _tree->currentItem();
    return row && !row->isHidden() ? row : nullptr;
}

void QtShortcutEditor::showAll() {
    for (int number = 0; number < _tree->topLevelItemCount(); ++number)
        show(*_tree->topLevelItem(number), nameOf(*_tree->topLevelItem(number)));
}

void QtShortcutEditor::show(QTreeWidgetItem& row, LiString const& name) {
    QString const conflict = conflictOf(name);
    row.setText(KeysColumn, keysText(_shortcuts.getShortcuts(name)));
    row.setText(ContextColumn, QString::fromStdString(_shortcuts.getContext(name)));
    row.setToolTip(KeysColumn, conflict);
    row.setForeground(KeysColumn, conflict.isEmpty() ? palette().text() : QBrush(qtFailureColour()));
    QFont font;
    font.setBold(_shortcuts.isChanged(name));
    row.setFont(KeysColumn, font);
}

void QtShortcutEditor::showCurrent() {
    QTreeWidgetItem const* const row = current();
    LiString const name = row ? nameOf(*row) : LiString();
    _keys->setEnabled(row);
    _keepsOthers->setEnabled(row);
    _clear->setEnabled(row && !_shortcuts.getShortcuts(name).empty());
    _reset->setEnabled(row && _shortcuts.isChanged(name));
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, qtFailureColour());
    _message->setPalette(colours);
    _message->setText(row ? conflictOf(name) : QString());
}

void QtShortcutEditor::filter(QString const& text) {
    for (int number = 0; number < _tree->topLevelItemCount(); ++number) {
        QTreeWidgetItem* const row = _tree->topLevelItem(number);
        bool const isWanted = row->text(NameColumn).contains(text, Qt::CaseInsensitive) ||
                              row->text(KeysColumn).contains(text, Qt::CaseInsensitive);
        row->setHidden(!isWanted);
    }
    showCurrent();
}

void QtShortcutEditor::assign(ActShortcut const& shortcut) {
    QTreeWidgetItem const* const row = current();
    if (!row) return;
    Vector<ActShortcut> shortcuts;
    if (_keepsOthers->isChecked()) shortcuts = _shortcuts.getShortcuts(nameOf(*row));
    if (std::ranges::count(shortcuts, shortcut) == 0) shortcuts.push_back(shortcut);
    _keys->setText(keysText({shortcut}));
    change(shortcuts);
}

void QtShortcutEditor::change(Vector<ActShortcut> const& shortcuts) {
    if (QTreeWidgetItem const* const row = current()) _shortcuts.change(nameOf(*row), shortcuts);
    finishChange();
}
void QtShortcutEditor::reset() {
    if (QTreeWidgetItem const* const row = current()) _shortcuts.reset(nameOf(*row));
    finishChange();
}
void QtShortcutEditor::finishChange() {
    // Conflicts of other rows come and go as well.
    showAll();
    showCurrent();
    Q_EMIT shortcutsChanged();
}

QString QtShortcutEditor::conflictOf(LiString const& name) const {
    for (ActShortcutMap::Conflict const& conflict : _shortcuts.getConflicts()) {
        if (std::ranges::count(conflict.actions, name) == 0) continue;
        QStringList others;
        for (LiString const& other : conflict.actions)
            if (other != name) others.append(QString::fromStdString(other));
        return tr("%1 does not work: it is also that of %2.")
            .arg(keysText({conflict.shortcut}), others.join(QStringLiteral(", ")));
    }
    return {};
}

} // namespace Ko
