#pragma once

#include "host/gestures.h"
#include "internalAPI/cbSubscription.h"

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

namespace compositor::window {

/// The open document with its gestures, and its changes as signals: what the parts of a window share. Application thread only.
class Session : public QObject {
    Q_OBJECT

public:
    explicit Session(Editor& editor, QObject* parent = nullptr);

    [[nodiscard]] Editor& editor() const { return _editor; }
    [[nodiscard]] Document const& document() const { return _editor.document(); }
    [[nodiscard]] Gestures& gestures() { return _gestures; }
    /// The selected layers that the document contains, in their current state.
    [[nodiscard]] std::vector<Layer> selected() const { return _gestures.selected(); }
    [[nodiscard]] bool isSelected(LayerId id) const;
    /// Selects these layers only. Not a step of the history, since it changes nothing of the document.
    void select(std::vector<LayerId> const& ids);
    void toggle(LayerId id);

    /// Runs an edit that may fail. @returns whether it has not; the reason is a signal otherwise.
    bool attempt(std::function<void()> const& edit);
    /// Performs an action on the selected layers as one step, as `attempt`.
    bool perform(std::string const& action, std::vector<std::string> const& arguments = {});

Q_SIGNALS:
    /// The document differs from `before`, by an edit, an undone or redone step, or because another one was opened.
    void documentChanged(compositor::Document const& before);
    /// Other layers are selected.
    void selectionChanged();
    /// An edit was not possible.
    void failed(QString const& reason);

private:
    void lookForChanges();

    Editor& _editor;
    Gestures _gestures;
    Document _shown;
    std::vector<Ko::CbSubscription> _subscriptions;
};

} // namespace compositor::window
