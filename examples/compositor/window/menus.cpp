#include "window/mainWindow.h"

#include "host/actions.h"

#include <QActionGroup>
#include <QDockWidget>
#include <QMenuBar>

namespace compositor::window {

namespace {

/// Adds entries to a menu.
struct Entries {
    template <class Run>
    QAction* add(QString const& text, QKeySequence const& keys, Run const& run) const {
        QAction* const action = menu.addAction(text);
        action->setShortcut(keys);
        QObject::connect(action, &QAction::triggered, &menu, [run](bool) { run(); });
        return action;
    }

    QMenu& menu;
};

} // namespace

void MainWindow::addMenus() {
    addFileMenu();
    addEditMenu();
    _actions->addMenus();
    addViewMenu();
    addHelpMenu();
}

void MainWindow::addFileMenu() {
    Entries const file{*menuBar()->addMenu(tr("&File"))};
    file.add(tr("&New"), QKeySequence::New, [this] { _files.startNew(); });
    file.add(tr("&Open..."), QKeySequence::Open, [this] { _files.askToOpen(); });
    QMenu* const recent = file.menu.addMenu(tr("Open &Recent"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { showRecent(*recent); });
    file.add(tr("&Add Pictures..."), tr("Ctrl+Shift+O"), [this] { _files.askToAdd(); });
    file.menu.addSeparator();
    file.add(tr("&Save"), QKeySequence::Save, [this] { _files.save(); });
    file.add(tr("Save &As..."), tr("Ctrl+Shift+S"), [this] { _files.askToSaveAs(); });
    file.add(tr("&Export..."), tr("Ctrl+E"), [this] { _files.askToExport(); });
    file.menu.addSeparator();
    file.add(tr("&Quit"), QKeySequence::Quit, [this] { close(); });
}

void MainWindow::showRecent(QMenu& menu) {
    menu.clear();
    QStringList const paths = _files.recent();
    for (QString const& path : paths)
        Entries{menu}.add(QString(path).replace("&", "&&"), {}, [this, path] { _files.open(path); });
    if (paths.isEmpty()) menu.addAction(tr("No Files"))->setEnabled(false);
}

void MainWindow::addEditMenu() {
    Entries const edit{*menuBar()->addMenu(tr("&Edit"))};
    edit.menu.addActions({_history.getUndoAction(), _history.getRedoAction()});
    edit.menu.addSeparator();
    edit.add(tr("Cu&t"), QKeySequence::Cut, [this] { _session.attempt([this] { _session.gestures().cut(); }); });
    edit.add(tr("&Copy"), QKeySequence::Copy, [this] { _session.attempt([this] { _session.gestures().copy(); }); });
    edit.add(tr("&Paste"), QKeySequence::Paste, [this] { _session.attempt([this] { _session.gestures().paste(); }); });
    edit.menu.addSeparator();
    edit.add(tr("Select &All"), QKeySequence::SelectAll, [this] {
        std::vector<LayerId> ids;
        for (Layer const& layer : _session.document().layers())
            ids.push_back(layer.id);
        _session.select(ids);
    });
    edit.menu.addSeparator();
    edit.add(tr("&Find Action..."), tr("Ctrl+Shift+P"), [this] { _actions->openPalette(); });
    edit.add(tr("&Keyboard Shortcuts..."), {}, [this] { _actions->editShortcuts(); });
}

void MainWindow::addViewMenu() {
    _viewMenu = menuBar()->addMenu(tr("&View"));
    Entries const view{*_viewMenu};
    view.add(tr("Zoom &In"), QKeySequence::ZoomIn, [this] { _canvas->zoomBy(Viewport::zoomStep); });
    view.add(tr("Zoom &Out"), QKeySequence::ZoomOut, [this] { _canvas->zoomBy(1 / Viewport::zoomStep); });
    view.add(tr("&Actual Size"), tr("Ctrl+1"), [this] { _canvas->zoomTo(1.0); });
    view.add(tr("&Fit"), tr("Ctrl+0"), [this] { _canvas->fit(); });
    view.menu.addSeparator();
    for (QDockWidget* const panel : _panels)
        view.menu.addAction(panel->toggleViewAction());
}

void MainWindow::offerColours(Appearance& appearance) {
    Entries const colours{*_viewMenu->addMenu(tr("&Colours"))};
    auto* const choice = new QActionGroup(this);
    for (auto const& [name, scheme] : {std::pair(tr("Of the &System"), Scheme::System),
             std::pair(tr("&Light"), Scheme::Light), std::pair(tr("&Dark"), Scheme::Dark)}) {
        QAction* const entry = colours.add(name, {}, [this, &appearance, wanted = scheme] {
            appearance.setScheme(wanted);
            _settings.setValue("colours", static_cast<int>(wanted));
        });
        entry->setCheckable(true);
        entry->setChecked(appearance.scheme() == scheme);
        choice->addAction(entry);
    }
}

void MainWindow::addHelpMenu() {
    Entries const help{*menuBar()->addMenu(tr("&Help"))};
    help.add(tr("&Plug-ins..."), {}, [this] { _actions->listPlugIns(); });
}

} // namespace compositor::window
