#pragma once

#include "framework/command/cmCommand.h"
#include "internalAPI/snSelection.h"

#include <cstdint>

namespace Ko {

// The commands that change the user's selection. Items that a command adds, removes or puts in place are those that were
// in the given selection when the command was made.

/// Adds several items to a selection, removes or toggles them. Unexecution gives the selection the content that it had
/// when the command was made.
class KO_FRAMEWORK_API CmSelectionChangeWithItemsCmd : public CmCommand {
public:
    /// What is done with the items that are given.
    enum Type : std::int32_t { Add = 0, Remove = 1, Toggle = 2 };

    /// Any other type raises `ExProgramAborted` when the command is described or executed.
    static RCShdPtr<CmSelectionChangeWithItemsCmd> create(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type);

    /// As `create`.
    CmSelectionChangeWithItemsCmd(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type);
    ~CmSelectionChangeWithItemsCmd() override;

    LiString getDescription() const override;
    /// Whether it was executed at least once.
    bool isExecuted() const noexcept { return _executed; }

protected:
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    RCShdPtr<SnSelection> _selection;
    RCShdPtr<SnSelection const> _before;
    RCShdPtr<SnSelection const> _items;
    Type _type;
    bool _executed = false;
};

/// Puts other items in place of all that are selected. Unexecution gives the selection the content that it had when the
/// command was made.
class KO_FRAMEWORK_API CmSelectionReplaceAllItemsCmd : public CmCommand {
public:
    /// @param items what is selected afterwards.
    static RCShdPtr<CmSelectionReplaceAllItemsCmd> create(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items);

    /// As `create`.
    CmSelectionReplaceAllItemsCmd(RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items);
    ~CmSelectionReplaceAllItemsCmd() override;

    LiString getDescription() const override;
    /// Whether it was executed at least once.
    bool isExecuted() const noexcept { return _executed; }

protected:
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    RCShdPtr<SnSelection> _selection;
    RCShdPtr<SnSelection const> _before;
    RCShdPtr<SnSelection const> _items;
    bool _executed = false;
};

/// Adds one item to a selection or removes it. Unexecution does the opposite, whatever else the selection holds by then.
class KO_FRAMEWORK_API CmSelectionChangeCmd : public CmCommand {
public:
    /// Every value other than `Add` removes.
    enum Type : std::int32_t { Add = 0, Remove = 1 };

    /// @param selection is changed, and shared with the caller.
    static RCShdPtr<CmSelectionChangeCmd> create(
        RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type);

    /// As `create`.
    CmSelectionChangeCmd(RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type);
    ~CmSelectionChangeCmd() override;

    LiString getDescription() const override;
    /// Whether it was executed at least once.
    bool isExecuted() const noexcept { return _executed; }

protected:
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    void change(bool add);

    RCShdPtr<SnSelection> _selection;
    RCShdPtr<SnItem const> _item;
    Type _type;
    bool _executed = false;
};

/// Empties a selection. Unexecution gives the selection the content that it had when the command was made.
class KO_FRAMEWORK_API CmSelectionClearCmd : public CmCommand {
public:
    /// @param selection is changed, and shared with the caller.
    static RCShdPtr<CmSelectionClearCmd> create(RCShdPtr<SnSelection> const& selection);

    /// As `create`.
    explicit CmSelectionClearCmd(RCShdPtr<SnSelection> const& selection);
    ~CmSelectionClearCmd() override;

    LiString getDescription() const override;
    /// Whether it was executed at least once.
    bool isExecuted() const noexcept { return _executed; }

protected:
    void executeInternal() override;
    void unexecuteInternal() override;

private:
    RCShdPtr<SnSelection> _selection;
    RCShdPtr<SnSelection const> _before;
    bool _executed = false;
};

} // namespace Ko
