// Several classes, so that the compiler cannot specialise a loop for one class.

#include "bench/framework/actions/manyActions.h"

#include <memory>

namespace KoBench {

namespace {

using namespace Ko;

using Item = RCShdPtr<SnItem const>;

template <int kind>
class Action final : public ActAction {
public:
    explicit Action(int number) : _number(number) {}

    bool inputValid(Item const& target, Item const& input) const override {
        return kind != 0 && target.get() && input.get();
    }
    void performAction(Item const&, Item const&, RCShdPtr<SnSelection> const&) const override {}
    LiString getDescription() const override {
        return "Rename Layer " + std::to_string((_number * 7919L) % actionCount);
    }
    std::string getCompositeName() const override { return _number % 10 == 9 ? "Tools" : ""; }

private:
    int _number;
};

} // namespace

OPtr<ActAction> makeAction(int number) {
    switch (number % 3) {
    case 0:
        return std::make_unique<Action<0>>(number);
    case 1:
        return std::make_unique<Action<1>>(number);
    default:
        return std::make_unique<Action<2>>(number);
    }
}

} // namespace KoBench
