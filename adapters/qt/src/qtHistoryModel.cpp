#include "adapters/qt/qtHistoryModel.h"

#include "adapters/qt/src/qtActionText.h"
#include "adapters/qt/src/qtGuarded.h"
#include "adapters/qt/src/qtOwned.h"
#include "adapters/qt/src/qtShapes.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuard.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>

namespace Ko {
namespace {

QAction* makeAction(QObject* parent, char const* iconName, QKeySequence::StandardKey shortcut) {
    auto* const action = qtOwned<QAction>(QIcon::fromTheme(QString::fromLatin1(iconName)), QString(), parent);
    action->setShortcuts(shortcut);
    return action;
}

/// @param step the text of the step that the action would undo or redo.
void label(QAction& action, QString const& verb, std::optional<QString> const& step) {
    QString const text = qtEntryText(step.value_or(QString()));
    action.setText(text.isEmpty() ? verb : verb + QLatin1Char(' ') + text);
    action.setEnabled(step.has_value());
}

} // namespace

QtHistoryModel::QtHistoryModel(RCShdPtr<CmCommandStack> stack, QObject* parent)
    : QAbstractListModel(parent), _undo(makeAction(this, "edit-undo", QKeySequence::Undo)),
      _redo(makeAction(this, "edit-redo", QKeySequence::Redo)) {
    connect(_undo, &QAction::triggered, this, &QtHistoryModel::undo);
    connect(_redo, &QAction::triggered, this, &QtHistoryModel::redo);
    _isInTransaction = CmUndoGuard::isGuardActive();
    _transactions = CmUndoGuard::onTransaction([this](bool hasBegun) { _isInTransaction = hasBegun; });
    setStack(std::move(stack));
}

QtHistoryModel::~QtHistoryModel() = default;

void QtHistoryModel::setStack(RCShdPtr<CmCommandStack> stack) {
    std::vector<Row> rows;
    if (stack)
        for (auto element = stack->getBegin(); element != stack->getEnd(); ++element)
            rows.push_back(toRow(**element));
    beginResetModel();
    _changes.end();
    _cleanChanges.end();
    _rows.swap(rows);
    _stack.swap(stack); // the one before is released at the end: its commands may run code of the host
    _current = _stack ? _stack->getNbUndoableCommands() : -1;
    if (_stack) {
        _changes = _stack->onHistoryChange([this](CmHistoryChange const& change) { apply(change); });
        _cleanChanges = _stack->onCleanChange([this] { updateModified(); });
    }
    endResetModel();
    updateActions();
    updateModified();
    Q_EMIT currentChanged(_current);
}

bool QtHistoryModel::isModified() const {
    return _stack && !_stack->isClean();
}

void QtHistoryModel::show(QAbstractItemView& view) {
    view.setModel(this);
    view.setIconSize(QSize(16, 16));
    auto const choose = [this](QModelIndex const& index) { goTo(index.row()); };
    auto const follow = [this, &view](int row) { view.setCurrentIndex(index(row)); };
    connect(&view, &QAbstractItemView::clicked, this, choose);
    connect(&view, &QAbstractItemView::activated, this, choose);
    connect(this, &QtHistoryModel::currentChanged, &view, follow);
    follow(_current);
}

void QtHistoryModel::show(QComboBox& box) {
    box.setModel(this);
    connect(&box, &QComboBox::activated, this, &QtHistoryModel::goTo);
    connect(this, &QtHistoryModel::currentChanged, &box, &QComboBox::setCurrentIndex);
    box.setCurrentIndex(_current);
}

int QtHistoryModel::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant QtHistoryModel::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    Row const& row = _rows[static_cast<std::size_t>(index.row())];
    bool const isClean = _stack->getCleanPosition() == index.row();
    bool const isCurrent = index.row() == _current;
    bool const isUndone = index.row() > _current;
    switch (role) {
    case Qt::DisplayRole:
        return row.text;
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
        return isClean ? tr("%1 (saved)").arg(row.text) : row.text;
    case Qt::DecorationRole:
        return qtIcon(isClean ? QtShape::Saved : row.isGroup ? QtShape::Group : QtShape::Step, isUndone);
    case Qt::FontRole: {
        QFont font; // of which a view takes what is set
        font.setBold(isCurrent);
        return font;
    }
    case Qt::ForegroundRole:
        if (!isUndone) return {};
        return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
    case IsCurrentRole:
        return isCurrent;
    case IsCleanRole:
        return isClean;
    case IsGroupRole:
        return row.isGroup;
    case IsUndoneRole:
        return isUndone;
    default:
        return {};
    }
}

void QtHistoryModel::goTo(int row) {
    if (!_stack || row < 0 || row >= _stack->getStackHeight()) return;
    replay([row](CmCommandStack& stack) { return stack.tryMoveTo(stack.getBegin() + row); });
    // A view has moved its current item already, also where the history did not follow.
    Q_EMIT currentChanged(_current);
}
void QtHistoryModel::undo() {
    replay([](CmCommandStack& stack) { return stack.tryUndo(); });
}
void QtHistoryModel::redo() {
    replay([](CmCommandStack& stack) { return stack.tryRedo(); });
}

template <class Replay>
void QtHistoryModel::replay(Replay run) {
    if (!_stack || _isInTransaction) return;
    QPointer<QtHistoryModel> const self = this; // commands and listeners may destroy this object
    RCShdPtr<CmCommandStack> const stack = _stack;
    std::optional<QString> failure = qtFailureOf([&] {
        CmReplay const answer = run(*stack);
        if (answer.error) throw ExInternalError(__FILE__, __LINE__, answer.error->getReason());
    });
    if (failure && self) Q_EMIT failed(*failure);
}

QtHistoryModel::Row QtHistoryModel::toRow(CmCommand const& command) {
    auto const* const macro = dynamic_cast<CmMacroCommand const*>(&command);
    QString text;
    auto const failure = qtFailureOf([&] { text = QString::fromStdString(command.getDescription()); });
    return {failure.value_or(text), macro && macro->getSize() > 1};
}

void QtHistoryModel::apply(CmHistoryChange const& change) {
    if (change.kind == CmHistoryChange::Kind::Merged && change.splices.size() == 1 && change.logged &&
        change.splices.front().numRemoved == 1)
        replace(change.splices.front().first, *change.logged);
    else
        for (CmHistorySplice const& splice : change.splices)
            applySplice(splice, change.logged);
    setCurrent(change.current);
    updateActions();
    updateModified();
}

void QtHistoryModel::applySplice(CmHistorySplice const& splice, CmCommand const* logged) {
    auto const first = _rows.begin() + splice.first;
    if (splice.numRemoved > 0) {
        beginRemoveRows({}, splice.first, splice.first + splice.numRemoved - 1);
        _rows.erase(first, first + splice.numRemoved);
        endRemoveRows();
    }
    if (splice.numInserted > 0) {
        Row const row = logged ? toRow(*logged) : Row{};
        beginInsertRows({}, splice.first, splice.first + splice.numInserted - 1);
        _rows.insert(_rows.begin() + splice.first, static_cast<std::size_t>(splice.numInserted), row);
        endInsertRows();
    }
}

void QtHistoryModel::replace(int row, CmCommand const& command) {
    _rows[static_cast<std::size_t>(row)] = toRow(command);
    Q_EMIT dataChanged(index(row), index(row));
}

void QtHistoryModel::setCurrent(int row) {
    int const first = std::max(std::min(row, _current), 0);
    int const last = std::min(std::max(row, _current), rowCount() - 1);
    bool const isOther = row != _current;
    _current = row;
    if (isOther) Q_EMIT dataChanged(index(first), index(last));
    Q_EMIT currentChanged(row);
}

void QtHistoryModel::updateActions() {
    // The rows may be behind the stack while its changes are delivered.
    auto const textOf = [this](bool isPossible, int row) {
        return isPossible && row < rowCount() ? std::optional(_rows[static_cast<std::size_t>(row)].text) : std::nullopt;
    };
    label(*_undo, tr("&Undo"), textOf(_stack && _stack->canUndo(), _current));
    label(*_redo, tr("&Redo"), textOf(_stack && _stack->canRedo(), _current + 1));
}

void QtHistoryModel::updateModified() {
    bool const isNow = isModified();
    if (!_rows.empty())
        Q_EMIT dataChanged(index(0), index(rowCount() - 1), {Qt::DecorationRole, Qt::ToolTipRole, IsCleanRole});
    if (isNow == std::exchange(_wasModified, isNow)) return;
    Q_EMIT modifiedChanged(isNow);
}

} // namespace Ko
