#pragma once

#include "adapters/qt/qtApi.h"
#include "framework/actions/actAction.h"
#include "framework/actions/actOption.h"
#include "framework/actions/actPresentation.h"
#include "internalAPI/cbSubscription.h"
#include "internalAPI/snSelection.h"

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

namespace Ko {

class CmCommandStack;

/// What the actions of the registry are performed on: the targets, the history that logs them, and the input that the user gives. Menus
/// and palettes of one window share it. Application thread only.
///
///     auto* const context = new QtActionContext([&] { return editor.targets(); }, window);
///     context->watch(editor.selection());
///     connect(context, &QtActionContext::failed, ...);
class KO_QT_API QtActionContext : public QObject {
    Q_OBJECT

public:
    /// A target or an input.
    using Item = RCShdPtr<SnItem const>;
    /// The present targets, such as the selected items; without any, an action gets an empty `ActBasicParam`.
    using Targets = std::function<List<Item>()>;
    /// The history of the present document.
    using History = std::function<RCShdPtr<CmCommandStack>()>;
    /// Asks the user for the input of an action, for instance by a dialog. Null where the user gives none.
    using AskInput = std::function<Item(ActAction const& action, ActPresentation const& shown)>;

    /// What can be done with an action at present.
    struct Offer {
        /// The text to show.
        LiString text = {};
        /// How to show it; `whyNot` names the reason where it is not possible.
        ActPresentation presentation = {};
        /// The choices that it offers.
        Vector<ActOption> options = {};
        /// Whether it is possible, for some of the targets.
        bool isPossible = false;
        /// Whether the user has to give an input, unless an option is chosen.
        bool asksForInput = false;

        /// Whether menus and palettes show it: actions that are not possible for an unknown reason, such as those that take a drop, are left out.
        [[nodiscard]] bool isShown() const noexcept { return isPossible || !presentation.whyNot.empty(); }
    };

    /// The history is that of `CmCommandStackManager` unless another one is set.
    explicit QtActionContext(Targets targets, QObject* parent = nullptr);
    ~QtActionContext() override;

    /// Logs actions in another history than the active one.
    void setHistory(History history);
    /// Asks for inputs in another way than by a dialog for one text.
    void setAskInput(AskInput askInput);
    /// Follows the changes of a selection that the targets depend on, instead of an earlier one.
    void watch(RCShdPtr<SnSelection> const& selection);
    /// Follows the changes of a history, instead of an earlier one.
    void watch(RCShdPtr<CmCommandStack> const& history);

    /// The present targets; never empty.
    [[nodiscard]] List<Item> getTargets() const;
    /// What can be done with an action. Never throws: an action that fails to answer is not possible, with the reason.
    [[nodiscard]] Offer getOffer(ActAction const& action) const;
    /// An input made of a text that the user has typed, as a text or as a number, whichever the action is valid for; null where it is for none.
    [[nodiscard]] Item toInput(ActAction const& action, QString const& text) const;

    /// Performs an action on all targets that it is valid for, as one step. Asks for an input where the action needs one.
    void perform(ActAction const& action);
    /// Performs an action with a given input, such as that of an option.
    void perform(ActAction const& action, Item const& input);

public Q_SLOTS:
    /// To be called after a change of the targets that is not watched.
    void invalidate();

Q_SIGNALS:
    /// What is offered may have changed; by an event of its own, once for many changes.
    void changed();
    /// An action was performed. `touched` holds the items that it has named, which a host may select.
    void performed(Ko::RCShdPtr<Ko::SnSelection> const& touched);
    /// An action has failed, or is not possible any more.
    void failed(QString const& action, QString const& reason);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    Offer ask(ActAction const& action) const;
    Vector<Item> validTargets(ActAction const& action, Item const& input) const;
    Item askForInput(ActAction const& action, ActPresentation const& shown);
    void run(ActAction const& action, Item const& input, bool isGiven);

    Targets _targets;
    History _history;
    AskInput _askInput;
    CbSubscription _registryChanges;
    CbSubscription _selectionChanges;
    CbSubscription _historyChanges;
    int _timer = 0;
};

} // namespace Ko
