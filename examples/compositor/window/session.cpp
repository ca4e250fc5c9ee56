#include "window/session.h"

#include "framework/command/cmUndoGuard.h"
#include "host/actions.h"

#include <algorithm>

namespace compositor::window {

Session::Session(Editor& editor, QObject* parent)
    : QObject(parent), _editor(editor), _gestures(editor), _shown(editor.document()) {
    auto const look = [this] { lookForChanges(); };
    // The steps of a drag are seen at the end of their guards, before the whole drag is logged.
    _subscriptions.push_back(Ko::CmUndoGuard::onEndOfOutermostGuard(look));
    _subscriptions.push_back(Ko::CmUndoGuard::onTransaction([look](bool) { look(); }));
    _subscriptions.push_back(editor.history()->onCommandProcessed(look));
    _subscriptions.push_back(editor.history()->onChange(look));
    _subscriptions.push_back(
        editor.selection()->onChange([this](Ko::SnSelectionChange const&) { Q_EMIT selectionChanged(); }));
}

bool Session::isSelected(LayerId id) const {
    return std::ranges::any_of(selected(), [id](Layer const& layer) { return layer.id == id; });
}

void Session::select(std::vector<LayerId> const& ids) {
    auto const wanted = Ko::SnSelection::create();
    for (LayerId const id : ids)
        wanted->add(LayerItem::create({&_editor, document().layer(id)}));
    _editor.selection()->replace(*wanted);
}

void Session::toggle(LayerId id) {
    _editor.selection()->toggle(LayerItem::create({&_editor, document().layer(id)}));
}

bool Session::attempt(std::function<void()> const& edit) {
    try {
        edit();
        return true;
    } catch (std::exception const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
        return false;
    }
}

bool Session::perform(std::string const& action, std::vector<std::string> const& arguments) {
    return attempt([&] {
        if (selected().empty()) throw InputError("Select a layer first");
        EditActions::perform(_editor, action, selected(), arguments);
    });
}

void Session::lookForChanges() {
    Document const& now = document();
    if (now.canvas() == _shown.canvas() && now.layers() == _shown.layers()) return;
    Document const before = std::exchange(_shown, now);
    Q_EMIT documentChanged(before);
}

} // namespace compositor::window
