#include "framework/actions/actOption.h"

#include "framework/actions/actBasicParam.h"
#include "framework/actions/src/actPerforming.h"

namespace Ko {

ActOptioned::ActOptioned() = default;
ActOptioned::~ActOptioned() = default;

Vector<ActOption> ActOptioned::of(
    ActAction const& action, RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) {
    ActPerforming const asked(&action);
    if (auto const* const optioned = dynamic_cast<ActOptioned const*>(&action)) return optioned->getOptions(target);
    Vector<LiString> texts;
    action.enumOptions(target, input, texts);
    Vector<ActOption> options;
    for (LiString const& text : texts)
        for (RCShdPtr<SnItem const> const& item : {RCShdPtr<SnItem const>(SnItemBasic<LiString>::create(text)),
                 RCShdPtr<SnItem const>(SnItemBasic<ActBasicParam>::create(ActBasicParam(text)))})
            if (action.inputValid(target, item)) {
                options.push_back({text, item});
                break;
            }
    return options;
}

} // namespace Ko
