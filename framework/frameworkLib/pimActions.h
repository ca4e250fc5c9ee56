#pragma once

#include "base/inInit.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/actionsInit.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>

namespace Ko {

/// The package of a plug-in whose work is its actions: it registers them when it is initialised, and destroys them when it is
/// finalised. One line in the unnamed namespace of a source declares it, together with its tag:
///
///     Ko::PimActions<struct Vignette> package("vignette", {makeVignette, makeFrame});
///
/// The plug-in has to be loaded on the application thread.
template <class Tag>
class PimActions : public InInit<PimActions<Tag>> {
public:
    /// Makes an action. Called by the initialise hook: its exceptions are reported as those of a hook.
    using Make = std::function<OPtr<ActAction>()>;

    /// @param name of the package, unique in the process.
    /// @param makers are called in this order.
    PimActions(std::string name, std::initializer_list<Make> makers)
        : InInit<PimActions>(std::move(name), packagesOf<KoInit::actions>()), _makers(makers) {}

    void initialize() override {
        try {
            for (Make const& make : _makers)
                add(make());
        } catch (...) {
            finalize();
            throw;
        }
    }
    void finalize() override {
        for (; !_actions.empty(); _actions.pop_back())
            ActRegistry::getInstance().unregisterAction(_actions.back());
    }

private:
    void add(OPtr<ActAction> action) {
        _actions.reserve(_actions.size() + 1); // so that no action is registered that is not known here
        ActAction const* const known = action.get();
        ActRegistry::getInstance().registerAction(std::move(action), ActRegistry::Static);
        if (known) _actions.push_back(known);
    }

    Vector<Make> _makers;
    Vector<ActAction const*> _actions;
};

} // namespace Ko
