#include "window/mainWindow.h"

#include "window/canvasView.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <cmath>

namespace compositor::window {

MainWindow::MainWindow(Editor& editor, Ko::QtEventLoop& events, QSettings& settings, QString const& recoveryFolder)
    : _settings(settings), _session(editor), _history(editor.history()), _recovery(_session, _jobs, recoveryFolder),
      _files(_session, _jobs, settings, *this), _closeGuard(new Ko::QtCloseGuard(*this)),
      _canvas(new Canvas(_session, this)), _layers(new LayersPanel(_session, this)), _messages(new MessagesPanel(this)),
      _actions(new ActionParts(_session, _jobs, settings, *this)), _rendering(new QLabel(this)),
      _pointer(new QLabel(this)), _zoom(new QLabel(this)), _running(new QLabel(this)) {
    setCentralWidget(new CanvasView(*_canvas, this));
    addTools();
    addPanels();
    addMenus();
    addStatusLine();
    connectParts(events);
    showTitle();
    resize(1280, 800);
    restoreGeometry(_settings.value("geometry").toByteArray());
    restoreState(_settings.value("panels").toByteArray());
    _canvas->setFocus();
}

MainWindow::~MainWindow() = default;

QDockWidget* MainWindow::addPanel(QString const& title, QWidget* content, Qt::DockWidgetArea area) {
    auto* const panel = new QDockWidget(title, this);
    panel->setObjectName(title);
    panel->setWidget(content);
    panel->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    addDockWidget(area, panel);
    _panels << panel;
    return panel;
}

void MainWindow::addPanels() {
    auto* const history = new QListView(this);
    history->setAccessibleName(tr("History"));
    history->setFrameShape(QFrame::NoFrame);
    _history.show(*history);
    auto* const jobs = new QListView(this);
    jobs->setAccessibleName(tr("Jobs"));
    jobs->setFrameShape(QFrame::NoFrame);
    (new Ko::QtJobDelegate(jobs))->show(*jobs, _jobModel);

    addPanel(tr("Layers"), _layers, Qt::RightDockWidgetArea);
    addPanel(tr("History"), history, Qt::RightDockWidgetArea);
    auto* const jobsPanel = addPanel(tr("Jobs"), jobs, Qt::RightDockWidgetArea);
    tabifyDockWidget(jobsPanel, addPanel(tr("Messages"), _messages, Qt::RightDockWidgetArea));
    jobsPanel->raise();
    resizeDocks(_panels.mid(0, 3), {300, 220, 180}, Qt::Vertical);
    resizeDocks(_panels.mid(0, 1), {280}, Qt::Horizontal);
}

// Undo and redo keep the bar in its place where no layer is selected.
void MainWindow::addTools() {
    auto* const bar = addToolBar(tr("Tools"));
    bar->setObjectName("Tools");
    bar->setAccessibleName(tr("Tools"));
    bar->setMovable(false);
    QAction* const undo = _history.getUndoAction();
    QAction* const redo = _history.getRedoAction();
    // Their texts change with each step, and would move the other buttons.
    undo->setIcon(QIcon::fromTheme("edit-undo", style()->standardIcon(QStyle::SP_ArrowBack)));
    redo->setIcon(QIcon::fromTheme("edit-redo", style()->standardIcon(QStyle::SP_ArrowForward)));
    for (QAction* const action : {undo, redo}) {
        bar->addAction(action);
        bar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    }
    bar->addSeparator();
    _actions->addTools(*bar);
}

void MainWindow::addStatusLine() {
    statusBar()->setSizeGripEnabled(false);
    for (QLabel* const label : {_running, _rendering, _pointer, _zoom}) {
        label->setContentsMargins(8, 0, 8, 0);
        statusBar()->addPermanentWidget(label);
    }
    _running->setAccessibleName(tr("Running jobs"));
    _zoom->setAccessibleName(tr("Zoom"));
    _pointer->setAccessibleName(tr("Pointer"));
    int const digits = fontMetrics().horizontalAdvance(QStringLiteral("-00000, -00000"));
    _pointer->setMinimumWidth(digits + 16);
    _zoom->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("6400.0 %")) + 16);
}

void MainWindow::connectParts(Ko::QtEventLoop& events) {
    connect(&_session, &Session::failed, this, &MainWindow::report);
    connect(&_history, &Ko::QtHistoryModel::failed, this, &MainWindow::report);
    connect(&_history, &Ko::QtHistoryModel::modifiedChanged, this, &QWidget::setWindowModified);
    connect(&events, &Ko::QtEventLoop::message, this, [this](Ko::Msg::Severity severity, QString const& text) {
        _messages->add(severity, text);
        statusBar()->showMessage(text, 8000);
    });
    _actions->connectParts(*_canvas, *_layers);
    connect(_actions, &ActionParts::failed, this, &MainWindow::report);
    connect(&events, &Ko::QtEventLoop::eventFailed, this, &MainWindow::report);
    connect(&_jobModel, &Ko::QtJobModel::summaryChanged, this, &MainWindow::showJobs);
    connect(&_files, &Files::pathChanged, this, &MainWindow::showTitle);
    connect(&_files, &Files::done, this, &MainWindow::note);
    connect(_canvas, &Canvas::zoomChanged, this, &MainWindow::showZoom);
    connect(_canvas, &Canvas::pointerMoved, this,
        [this](QPoint const& point) { _pointer->setText(tr("%1, %2").arg(point.x()).arg(point.y())); });
    connect(_canvas, &Canvas::currentChanged, this,
        [this](bool isCurrent) { _rendering->setText(isCurrent ? QString() : tr("Rendering")); });
    _closeGuard->addQuestion([this] {
        if (_player) _player->stop();
        return _player == nullptr;
    });
    _closeGuard->addQuestion([this] { return _files.settleChanges(); });
}

void MainWindow::showTitle() {
    setWindowTitle(tr("%1[*] - Compositor").arg(_files.name()));
    setWindowFilePath(_files.path());
    setWindowModified(_history.isModified());
    _recovery.setPath(_files.path());
}

void MainWindow::showZoom(double zoom) {
    double const percent = zoom * 100;
    _zoom->setText(tr("%1 %").arg(percent, 0, 'f', percent < 10 ? 1 : 0));
}

void MainWindow::showJobs() {
    _running->setText(_jobModel.getSummary().text);
}

void MainWindow::report(QString const& text) {
    _messages->add(Ko::Msg::Severity::Warning, text);
    statusBar()->showMessage(text, 8000);
}

void MainWindow::note(QString const& text) {
    _messages->note(text);
    statusBar()->showMessage(text, 4000);
}

bool MainWindow::offerRecovery() {
    while (auto const found = _recovery.takeOver()) {
        QString const name = found->path.isEmpty() ? tr("a document without a name") : found->path;
        QMessageBox question(QMessageBox::Question, tr("Recover Changes"),
            tr("The compositor ended while %1 had unsaved changes.").arg(name), QMessageBox::NoButton, this);
        auto* const recover = question.addButton(tr("&Recover"), QMessageBox::AcceptRole);
        question.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
        question.setDefaultButton(recover);
        question.exec();
        bool const isWanted = question.clickedButton() == recover;
        if (isWanted && !_files.openRecovered(*found)) return false;
        Recovery::remove(*found);
        if (isWanted) return true;
    }
    return false;
}

bool MainWindow::play(QString const& script, std::chrono::milliseconds pause) {
    ScriptPlayer player(_session, pause);
    connect(&player, &ScriptPlayer::line, this, &MainWindow::note);
    connect(&player, &ScriptPlayer::fault, this, &MainWindow::report);
    _player = &player;
    bool const isWell = player.play(script);
    _player = nullptr;
    return isWell;
}

// The guard of the window has asked by then.
void MainWindow::closeEvent(QCloseEvent* event) {
    _canvas->cancelDrag();
    _settings.setValue("geometry", saveGeometry());
    _settings.setValue("panels", saveState());
    event->accept();
}

} // namespace compositor::window
