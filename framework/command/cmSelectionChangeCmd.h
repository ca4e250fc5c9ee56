#pragma once

#include "framework/command/cmCommand.h"
#include "internalAPI/snSelection.h"

#include <cstdint>

namespace Ko {

// The commands that change the user's selection. A command that is given several items keeps those that the given selection
// holds when the command is created.

/// What all selection commands have in common: the selection that they change, and whether they did.
class KO_FRAMEWORK_API CmSelectionCmd : public CmCommand {
public:
    ~CmSelectionCmd() override;

    /// Whether the command was executed at least once.
    [[nodiscard]] bool isExecuted() const noexcept { return _executed; }

protected:
    /// @param selection is shared and changed.
    explicit CmSelectionCmd(RCShdPtr<SnSelection> const& selection);
    void executeInternal() override;

    /// Makes the change that the command stands for.
    virtual void change(SnSelection& selection) = 0;
    /// The selection that the command changes.
    SnSelection& getSelection() const { return *_selection; }

private:
    RCShdPtr<SnSelection> _selection;
    bool _executed = false;
};

/// A selection command whose unexecution restores the content that the selection had when the command was created.
class KO_FRAMEWORK_API CmSelectionRestoringCmd : public CmSelectionCmd {
public:
    ~CmSelectionRestoringCmd() override;

protected:
    /// Copies the present content of the selection.
    explicit CmSelectionRestoringCmd(RCShdPtr<SnSelection> const& selection);
    void unexecuteInternal() override;

private:
    RCShdPtr<SnSelection const> _before;
};

/// Adds several items to a selection, removes or toggles them.
class KO_FRAMEWORK_API CmSelectionChangeWithItemsCmd : public CmSelectionRestoringCmd {
public:
    /// What happens to the items.
    enum Type : std::int32_t { Add = 0, Remove = 1, Toggle = 2 };

    /// @param type any other value raises `ExProgramAborted` when the command is described or executed.
    [[nodiscard]] static RCShdPtr<CmSelectionChangeWithItemsCmd> create(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type);

    /// For `create`.
    CmSelectionChangeWithItemsCmd(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type);
    ~CmSelectionChangeWithItemsCmd() override;

    [[nodiscard]] LiString getDescription() const override;

protected:
    void change(SnSelection& selection) override;

private:
    RCShdPtr<SnSelection const> _items;
    Type _type;
};

/// Replaces the whole content of a selection.
class KO_FRAMEWORK_API CmSelectionReplaceAllItemsCmd : public CmSelectionRestoringCmd {
public:
    /// @param items the new content.
    [[nodiscard]] static RCShdPtr<CmSelectionReplaceAllItemsCmd> create(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items);

    /// For `create`.
    CmSelectionReplaceAllItemsCmd(RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items);
    ~CmSelectionReplaceAllItemsCmd() override;

    [[nodiscard]] LiString getDescription() const override;

protected:
    void change(SnSelection& selection) override;

private:
    RCShdPtr<SnSelection const> _items;
};

/// Adds one item to a selection or removes it. Unexecution does the opposite, whatever else the selection holds by then.
class KO_FRAMEWORK_API CmSelectionChangeCmd : public CmSelectionCmd {
public:
    /// Every value other than `Add` removes.
    enum Type : std::int32_t { Add = 0, Remove = 1 };

    /// @param selection is shared and changed.
    [[nodiscard]] static RCShdPtr<CmSelectionChangeCmd> create(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type);

    /// For `create`.
    CmSelectionChangeCmd(RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type);
    ~CmSelectionChangeCmd() override;

    [[nodiscard]] LiString getDescription() const override;

protected:
    void unexecuteInternal() override;
    void change(SnSelection& selection) override;

private:
    RCShdPtr<SnItem const> _item;
    Type _type;
};

/// Empties a selection.
class KO_FRAMEWORK_API CmSelectionClearCmd : public CmSelectionRestoringCmd {
public:
    /// @param selection is shared and changed.
    [[nodiscard]] static RCShdPtr<CmSelectionClearCmd> create(RCShdPtr<SnSelection> const& selection);

    /// For `create`.
    explicit CmSelectionClearCmd(RCShdPtr<SnSelection> const& selection);
    ~CmSelectionClearCmd() override;

    [[nodiscard]] LiString getDescription() const override;

protected:
    void change(SnSelection& selection) override;
};

} // namespace Ko
