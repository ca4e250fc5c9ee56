#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/command/cmCommandStack.h"

#include <QAbstractListModel>
#include <QString>
#include <vector>

class QAbstractItemView;
class QAction;
class QComboBox;

namespace Ko {

struct CmHistorySplice;

/// The history of a document as a list for any view, with the actions that undo and redo, and whether the document is modified.
///
/// A row for each element, the oldest first: row 0 is "Initial State". Rows that can be redone are dimmed, the current one is bold; icons mark
/// the saved state and steps of several commands. Rows come and go as the history delivers its changes, so selections and scroll
/// positions stay. Application thread only.
///
///     auto* const model = new QtHistoryModel(document.history(), window);
///     model->show(*listView);
///     editMenu->addActions({model->getUndoAction(), model->getRedoAction()});
///     connect(model, &QtHistoryModel::modifiedChanged, window, &QWidget::setWindowModified);
class KO_QT_API QtHistoryModel : public QAbstractListModel {
    Q_OBJECT

public:
    /// What the model has beside texts, icons, fonts and colours; all are `bool`.
    enum Role {
        IsCurrentRole = Qt::UserRole, ///< The document is in this state.
        IsCleanRole,                  ///< This state is the saved one.
        IsGroupRole,                  ///< A step of several commands.
        IsUndoneRole                  ///< The step can be redone.
    };

    /// @param stack null for none yet.
    explicit QtHistoryModel(RCShdPtr<CmCommandStack> stack, QObject* parent = nullptr);
    ~QtHistoryModel() override;

    /// Shows another history; null for none.
    void setStack(RCShdPtr<CmCommandStack> stack);
    /// The shown history; null for none.
    [[nodiscard]] RCShdPtr<CmCommandStack> const& getStack() const noexcept { return _stack; }

    /// The row of the state that the document is in; -1 without a history.
    [[nodiscard]] int getCurrentRow() const noexcept { return _current; }
    /// Whether the document differs from its saved state.
    [[nodiscard]] bool isModified() const;

    /// Undoes: "Undo Move Layer", with the standard shortcut and icon. Owned by the model.
    [[nodiscard]] QAction* getUndoAction() const noexcept { return _undo; }
    /// Redoes: "Redo Move Layer", with the standard shortcut and icon. Owned by the model.
    [[nodiscard]] QAction* getRedoAction() const noexcept { return _redo; }

    /// Shows the history in a view, whose current item follows it: a click or Return goes there. The view does not own the model.
    void show(QAbstractItemView& view);
    /// Shows the history in a combo box, which chooses the state.
    void show(QComboBox& box);

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;

public Q_SLOTS:
    /// Undoes or redoes up to this row. Without effect during a step that is still open, such as a drag.
    void goTo(int row);
    /// Undoes one step.
    void undo();
    /// Redoes one step.
    void redo();

Q_SIGNALS:
    /// The document is in another state, or the state has another row.
    void currentChanged(int row);
    /// The document has begun or ceased to differ from its saved state.
    void modifiedChanged(bool isModified);
    /// A command failed while it was undone or redone; the history was cut there.
    void failed(QString const& reason);

private:
    struct Row {
        QString text;
        bool isGroup;
    };

    static Row toRow(CmCommand const& command);
    void apply(CmHistoryChange const& change);
    void applySplice(CmHistorySplice const& splice, CmCommand const* logged);
    void replace(int row, CmCommand const& command);
    void setCurrent(int row);
    void updateActions();
    void updateModified();
    template <class Replay>
    void replay(Replay run);

    RCShdPtr<CmCommandStack> _stack;
    std::vector<Row> _rows;
    int _current = -1;
    bool _wasModified = false;
    // Whether a guard or a long transaction is open.
    bool _isInTransaction = false;
    QAction* _undo;
    QAction* _redo;
    CbSubscription _changes;
    CbSubscription _cleanChanges;
    CbSubscription _transactions;
};

} // namespace Ko
