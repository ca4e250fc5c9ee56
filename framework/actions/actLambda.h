#pragma once

#include "base/assertions.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actOption.h"
#include "framework/actions/actPresentation.h"
#include "internalAPI/snItemConvert.h"

#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Ko {

/// Calls a callable that may leave out the last ones of these arguments: `[](LayerRef const& layer) { ... }` serves where a target, an
/// input and a selection are given. Empty by default.
template <class Result, class... Arguments>
class ActCallable {
public:
    /// Nothing to call.
    ActCallable() = default;
    /// The callable takes the first ones of the arguments, as many as it can.
    template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, ActCallable>) ActCallable(Callable&& callable) {
        using Kept = std::decay_t<Callable>;
        constexpr int count = countTaken<Kept>();
        static_assert(
            count >= 0, "This callable takes neither the arguments that it is called with nor the first ones of them.");
        if constexpr (count >= 0)
            _call = [kept = Kept(std::forward<Callable>(callable))](Arguments... arguments) -> Result {
                return callFirst(kept, std::tie(arguments...), std::make_index_sequence<count>());
            };
    }

    /// Whether there is something to call.
    explicit operator bool() const noexcept { return _call != nullptr; }
    /// Calls it. @throws std::bad_function_call when there is nothing to call.
    Result operator()(Arguments... arguments) const { return _call(arguments...); }

private:
    using All = std::tuple<Arguments...>;

    template <class Callable, std::size_t... index>
    static constexpr bool takes(std::index_sequence<index...>) {
        return std::is_invocable_r_v<Result, Callable const&, std::tuple_element_t<index, All>...>;
    }
    template <class Callable, int count = sizeof...(Arguments)>
    static constexpr int countTaken() {
        if constexpr (takes<Callable>(std::make_index_sequence<static_cast<std::size_t>(count)>()))
            return count;
        else if constexpr (count > 0)
            return countTaken<Callable, count - 1>();
        else
            return -1;
    }
    template <class Callable, class Tuple, std::size_t... index>
    static Result callFirst(Callable const& callable, Tuple const& arguments, std::index_sequence<index...>) {
        return static_cast<Result>(callable(std::get<index>(arguments)...));
    }

    std::function<Result(Arguments...)> _call;
};

/// An action that is made of callables, in terms of values. Both types are item types: `LiString`, `bool`,
/// `double`, `ActBasicParam` (which stands for no input), a carrier, or a type of your own with `KO_ITEM_TYPE`.
///
///     ActLambda<LayerRef, double>::add({
///         .description = "Opacity",
///         .group = "Layers",
///         .isValid = [](LayerRef const& layer, double opacity) { return opacity >= 0 && opacity <= 1; },
///         .perform = [](LayerRef const& layer, double opacity) { setOpacity(layer, opacity); },
///     });
///
/// Callables live as long as the action and may be called at any time on the application thread. They may leave out their last
/// parameters.
template <class Target, class Input = ActBasicParam>
class ActLambda final : public ActAction, public ActPresented, public ActOptioned {
    static_assert(isSnItemType<Target>, "The target of this ActLambda is no item type: say KO_ITEM_TYPE(Target) "
                                        "before, in one source (internalAPI/snItemType.imp.h), "
                                        "and KO_DECLARE_ITEM_TYPE(, Target) in a header where several sources use it.");
    static_assert(isSnItemType<Input>, "The input of this ActLambda is no item type: say KO_ITEM_TYPE(Input) before, "
                                       "in one source (internalAPI/snItemType.imp.h), "
                                       "and KO_DECLARE_ITEM_TYPE(, Input) in a header where several sources use it.");

public:
    using ActAction::inputValid;
    using ActAction::performAction;

    /// A choice that the action offers.
    struct Option {
        /// What a menu shows.
        LiString text = {};
        /// The input that stands for it.
        Input input = {};
        /// Whether it is what the target has now.
        bool isCurrent = false;
    };

    /// What the action is and does. Only a description and `perform` are needed.
    struct Traits {
        /// As `ActAction::getDescription`.
        LiString description = {};
        /// As `ActAction::getGroup`.
        std::string group = {};
        /// As `ActAction::getCompositeName`.
        std::string compositeName = {};
        /// How the action is shown, except for what the callables below say.
        ActPresentation presentation = {};
        /// Whether the action can be performed; must not throw. By default, it can where `whyNot` gives no reason.
        ActCallable<bool, Target const&, Input const&> isValid = {};
        /// Why the action cannot be performed on a target; an empty text where it can. Instead of `presentation.whyNot`.
        ActCallable<LiString, Target const&> whyNot = {};
        /// For an action that switches something: whether it is on. It is shown with a check mark.
        ActCallable<bool, Target const&> isChecked = {};
        /// The input to use where none is given, that is where it is an empty `ActBasicParam`, so that menus list the action. An
        /// action with `isChecked` whose input is a `bool` switches to the other state without it.
        ActCallable<Input, Target const&> defaultInput = {};
        /// The choices for a target, in the order of a menu.
        ActCallable<Vector<Option>, Target const&> options = {};
        /// Does the work. The selection is as in `ActAction::performAction`.
        ActCallable<void, Target const&, Input const&, RCShdPtr<SnSelection> const&> perform = {};
    };

    /// @throws ExNullPtr without `perform`.
    explicit ActLambda(Traits traits) : _traits(std::move(traits)) {
        if (!_traits.perform) RCExUtil::throwExNullPtr(typeid(_traits.perform).name());
        if constexpr (std::is_same_v<Input, bool>)
            if (_traits.isChecked && !_traits.defaultInput)
                _traits.defaultInput = [isChecked = _traits.isChecked](
                                           Target const& target) { return !isChecked(target); };
    }
    /// Registers a new action.
    /// @returns the action, which the registry owns.
    static ActAction* add(Traits traits, ActRegistry::DynamicState state = ActRegistry::Static) {
        auto action = std::make_unique<ActLambda>(std::move(traits));
        ActAction* const added = action.get();
        ActRegistry::getInstance().registerAction(std::move(action), state);
        return added;
    }

    LiString getDescription() const override { return _traits.description; }
    std::string getGroup() const override { return _traits.group; }
    std::string getCompositeName() const override { return _traits.compositeName; }

    /// Whether the items convert, and nothing speaks against their values. Without an input, the default one is asked for.
    [[nodiscard]] bool inputValid(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const override {
        if (!SnItemConvert<Target>::test(target)) return false;
        Target const value = SnItemConvert<Target>::get(target);
        if (SnItemConvert<Input>::test(input)) return isValid(value, SnItemConvert<Input>::get(input));
        return takesDefault(input) && isValid(value, _traits.defaultInput(value));
    }
    /// Performs the action on the values of the items.
    /// @throws ExAssertionFailed when an item does not convert.
    void performAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        RCShdPtr<SnSelection> const& selection) const override {
        constexpr AssertionSource source{"framework/actions/actLambda"};
        bool const isGiven = SnItemConvert<Input>::test(input);
        source.require(SnItemConvert<Target>::test(target), "SnItemConvert< Target >::test( target )", __LINE__);
        source.require(isGiven || takesDefault(input), "SnItemConvert< Input >::test( input )", __LINE__);
        Target const value = SnItemConvert<Target>::get(target);
        _traits.perform(value, isGiven ? SnItemConvert<Input>::get(input) : _traits.defaultInput(value), selection);
    }

    /// As the traits say, with the check mark and the reason for the value of the target.
    ActPresentation getPresentation(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const&) const override {
        ActPresentation shown = _traits.presentation;
        if (_traits.isChecked) shown.isCheckable = true;
        if ((!_traits.isChecked && !_traits.whyNot) || !SnItemConvert<Target>::test(target)) return shown;
        Target const value = SnItemConvert<Target>::get(target);
        if (_traits.isChecked) shown.isChecked = _traits.isChecked(value);
        if (_traits.whyNot) shown.whyNot = _traits.whyNot(value);
        return shown;
    }

    /// The choices that the traits name for the value of the target.
    Vector<ActOption> getOptions(RCShdPtr<SnItem const> const& target) const override {
        Vector<ActOption> options;
        if (!_traits.options || !SnItemConvert<Target>::test(target)) return options;
        for (Option const& option : _traits.options(SnItemConvert<Target>::get(target)))
            options.push_back({option.text, SnItemBasic<Input>::create(option.input), option.isCurrent});
        return options;
    }

private:
    bool isValid(Target const& target, Input const& input) const {
        if (_traits.isValid) return _traits.isValid(target, input);
        return !_traits.whyNot || _traits.whyNot(target).empty();
    }
    bool takesDefault(RCShdPtr<SnItem const> const& input) const {
        return _traits.defaultInput && ActBasicParam::isNone(input);
    }

    Traits _traits;
};

} // namespace Ko
