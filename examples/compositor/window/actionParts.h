#pragma once

#include "adapters/qt/qtActionContext.h"
#include "adapters/qt/qtActionMenus.h"
#include "adapters/qt/qtClipboardBridge.h"
#include "adapters/qt/qtDragAndDrop.h"
#include "adapters/qt/qtPalette.h"
#include "window/canvas.h"
#include "window/jobStarter.h"
#include "window/layersPanel.h"

#include <QMainWindow>
#include <QSettings>

namespace compositor::window {

/// What a window offers of the registered actions: menus, context menus, shortcuts, a palette, drops of files and the clipboard.
class ActionParts : public QObject {
    Q_OBJECT

public:
    ActionParts(Session& session, JobStarter& jobs, QSettings& settings, QMainWindow& window);

    /// Adds menus for layers, operators and generators to the menu bar.
    void addMenus();
    /// Adds the actions for layers to a tool bar.
    void addTools(QToolBar& bar) {
        _menus.fill(bar, {.groups = {"Compositor"}, .sections = {"Arrange", "Edit", "Look"}});
    }
    /// Lets files and pictures of other programs be dropped on the canvas, and opens menus for layers.
    void connectParts(Canvas& canvas, LayersPanel& layers);
    void openPalette() { _palette->popUp(); }
    void editShortcuts();
    void listPlugIns();

Q_SIGNALS:
    void failed(QString const& reason);

private:
    Ko::List<Ko::RCShdPtr<Ko::SnItem const>> targets();
    Ko::QtImport import();
    Ko::QtActionContext::Item askForInput(Ko::ActAction const& action);

    Session& _session;
    JobStarter& _jobs;
    QSettings& _settings;
    QMainWindow& _window;
    LayersPanel* _layers = nullptr;
    Ko::QtActionContext _context;
    Ko::QtActionMenus _menus{&_context};
    // Owned by the window.
    Ko::QtPalette* _palette;
    Ko::QtClipboardBridge _clipboard;
};

} // namespace compositor::window
