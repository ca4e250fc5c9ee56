#pragma once

#include "adapters/qt/qtCloseGuard.h"
#include "adapters/qt/qtEventLoop.h"
#include "adapters/qt/qtHistoryModel.h"
#include "adapters/qt/qtJobDelegate.h"
#include "adapters/qt/qtJobModel.h"
#include "window/actionParts.h"
#include "window/appearance.h"
#include "window/canvas.h"
#include "window/files.h"
#include "window/jobStarter.h"
#include "window/layersPanel.h"
#include "window/messagesPanel.h"
#include "window/recovery.h"
#include "window/scriptPlayer.h"
#include "window/session.h"

#include <QLabel>
#include <QMainWindow>
#include <QSettings>

namespace compositor::window {

/// The window of the compositor: a canvas with panels for layers, history, jobs and messages.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// @param events delivers messages. @param settings remember the last files and the places of the panels.
    MainWindow(Editor& editor, Ko::QtEventLoop& events, QSettings& settings, QString const& recoveryFolder);
    ~MainWindow() override;

    [[nodiscard]] Session& session() { return _session; }
    [[nodiscard]] Canvas& canvas() { return *_canvas; }
    [[nodiscard]] LayersPanel& layers() { return *_layers; }
    [[nodiscard]] MessagesPanel& messages() { return *_messages; }
    [[nodiscard]] Files& files() { return _files; }
    [[nodiscard]] ActionParts& actions() { return *_actions; }
    [[nodiscard]] Recovery& recovery() { return _recovery; }
    [[nodiscard]] Ko::QtCloseGuard& closeGuard() { return *_closeGuard; }
    /// Adds a sub-menu for light and dark colours to the menu for the view; the choice is remembered.
    void offerColours(Appearance& appearance);
    /// Offers the unsaved changes of a process that was killed. @returns whether some are recovered.
    bool offerRecovery();
    /// Plays a script; returns at its end. @returns whether there was no error.
    bool play(QString const& script, std::chrono::milliseconds pause);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QDockWidget* addPanel(QString const& title, QWidget* content, Qt::DockWidgetArea area);
    void addPanels();
    void addTools();
    void addMenus();
    void addFileMenu();
    void addEditMenu();
    void addViewMenu();
    void addHelpMenu();
    void addStatusLine();
    void connectParts(Ko::QtEventLoop& events);
    void showRecent(QMenu& menu);
    void showTitle();
    void showZoom(double zoom);
    void showJobs();
    void report(QString const& text);
    void note(QString const& text);

    QSettings& _settings;
    Session _session;
    Ko::QtHistoryModel _history;
    Ko::QtJobModel _jobModel;
    JobStarter _jobs{_jobModel};
    Recovery _recovery;
    Files _files;
    // Owned by the window, as all widgets are.
    Ko::QtCloseGuard* _closeGuard;
    Canvas* _canvas;
    LayersPanel* _layers;
    MessagesPanel* _messages;
    ActionParts* _actions;
    // The one that plays; null while none does.
    ScriptPlayer* _player = nullptr;
    QLabel* _rendering;
    QLabel* _pointer;
    QLabel* _zoom;
    QLabel* _running;
    QMenu* _viewMenu = nullptr;
    QList<QDockWidget*> _panels;
};

} // namespace compositor::window
