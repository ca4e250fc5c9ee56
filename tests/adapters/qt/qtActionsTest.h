#pragma once

#include "adapters/qt/qtActionContext.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actLambda.h"
#include "framework/actions/actRegistry.h"
#include "framework/command/cmUndoGuard.h"
#include "internalAPI/snItemBasic.h"
#include "tests/adapters/qt/qtTest.h"
#include "tests/support/items.h"
#include "tests/support/recordingAction.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace KoTest {

/// Actions on texts, of which some are selected; each is a step of a history.
class QtActionsTest : public testing::Test {
protected:
    using TextAction = Ko::ActLambda<Ko::LiString>;

    QtActionsTest() {
        context.setHistory([this] { return history; });
        context.watch(selection);
    }
    ~QtActionsTest() override {
        for (Ko::ActAction const* const action : added)
            Ko::ActRegistry::getInstance().unregisterAction(action);
    }

    template <class Action = TextAction>
    Ko::ActAction& add(typename Action::Traits traits) {
        Ko::ActAction* const action = Action::add(std::move(traits));
        added.push_back(action);
        return *action;
    }
    /// An action that is logged as "description target".
    Ko::ActAction& addStep(Ko::LiString const& description, Ko::ActPresentation presentation = {},
        std::function<Ko::LiString(Ko::LiString const&)> whyNot = {}) {
        TextAction::Traits traits{.description = description, .presentation = std::move(presentation)};
        if (whyNot) traits.whyNot = whyNot;
        traits.perform = [this, description](Ko::LiString const& target) { log(description + " " + target); };
        return add(std::move(traits));
    }
    void log(std::string const& name) {
        Ko::CmUndoGuard step(history, name);
        step.execAndAddUndoCommand(RecordingCommand::create(name, journal));
    }

    Journal journal;
    std::vector<Ko::ActAction const*> added;
    Ko::RCShdPtr<Ko::SnSelection> selection = selectionOf({"sky"});
    Ko::RCShdPtr<Ko::CmCommandStack> history = Ko::RCShdPtr<Ko::CmCommandStack>::create();
    Ko::QtActionContext context{[this] {
        auto const items = selection->getItems();
        return Ko::List<Ko::RCShdPtr<Ko::SnItem const>>(items.begin(), items.end());
    }};
};

/// Joins layers; a composite action.
class NamedComposite : public NamedAction<Ko::ActCompositeAction> {
public:
    explicit NamedComposite(char const* name) : NamedAction(name, "", "") {}
};

} // namespace KoTest
