#include "window/actionParts.h"

#include "adapters/qt/qtPlugInModel.h"
#include "adapters/qt/qtShortcutEditor.h"
#include "host/layerFormats.h"
#include "plugIns/operators.h"
#include "window/inputDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QMenuBar>
#include <QTableView>
#include <QVBoxLayout>

namespace compositor::window {

namespace {

using namespace Ko;

/// Takes layers that are dropped on the canvas, from other programs too.
class CanvasSink final : public DrSrcSink {
public:
    explicit CanvasSink(Session& session) : _session(session) {}

    bool willConsumeSelection(RCShdPtr<DrCarrier> const& carrier) override {
        return !carrier->getSelection()->isEmpty() && !_session.gestures().isDragging();
    }
    DrEffect accept(RCShdPtr<DrCarrier> const& carrier, DrEffect, DrPlace const&) override {
        return willConsumeSelection(carrier) ? DrEffect::Copy : DrEffect::None;
    }
    void consumeSelection(RCShdPtr<DrCarrier> const& carrier) override { _session.gestures().add(carrier, "Drop"); }

private:
    Session& _session;
};

QDialog* makeDialog(QWidget* parent, QString const& title, QWidget* content) {
    auto* const dialog = new QDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(title);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::close);
    auto* const box = new QVBoxLayout(dialog);
    box->addWidget(content);
    box->addWidget(buttons);
    dialog->resize(720, 420);
    return dialog;
}

std::unique_ptr<Preview> previewOf(Verb const& verb, Session& session, JobStarter& jobs) {
    if (session.selected().empty()) return nullptr;
    Operator const apply = findOperator(verb.description);
    return apply ? std::make_unique<Preview>(session, jobs, apply) : nullptr;
}

} // namespace

ActionParts::ActionParts(Session& session, JobStarter& jobs, QSettings& settings, QMainWindow& window)
    : QObject(&window), _session(session), _jobs(jobs), _settings(settings), _window(window),
      _context([this] { return targets(); }), _palette(new QtPalette(&_context, &window)) {
    _context.watch(_session.editor().selection());
    _context.watch(_session.editor().history());
    _context.setHistory([this] { return _session.editor().history(); });
    _context.setAskInput([this](ActAction const& action, ActPresentation const&) { return askForInput(action); });
    connect(&_context, &QtActionContext::failed, this,
        [this](QString const& action, QString const& reason) { Q_EMIT failed(action + ": " + reason); });
    ActShortcutMap shortcuts = _menus.getShortcuts();
    shortcuts.setText(_settings.value("shortcuts").toString().toStdString(), "settings");
    _menus.setShortcuts(shortcuts);
    _menus.setWindow(window);
    _palette->setShortcutText([this](LiString const& name) {
        QAction const* const action = _menus.getAction(name);
        return action ? action->shortcut().toString(QKeySequence::NativeText) : QString();
    });
    _clipboard.setImport(import());
}

QtImport ActionParts::import() {
    return [this](DrFormats const& formats, SnSelection& items) { importLayers(_session.editor(), formats, items); };
}

// Actions of the document are offered beside those of the selected layers.
List<RCShdPtr<SnItem const>> ActionParts::targets() {
    Targets targets = _session.gestures().targets();
    if (!_session.selected().empty()) targets.push_back(SnItemBasic<Editor*>::create(&_session.editor()));
    return targets;
}

void ActionParts::addMenus() {
    _menus.fill(*_window.menuBar()->addMenu(tr("&Layer")), {.groups = {"Compositor"}});
    _menus.fill(*_window.menuBar()->addMenu(tr("&Operators")), {.groups = {"Operators"}});
    _menus.fill(*_window.menuBar()->addMenu(tr("&Generators")), {.groups = {"Generators"}});
}

void ActionParts::connectParts(Canvas& canvas, LayersPanel& layers) {
    _layers = &layers;
    for (QWidget* const part : {static_cast<QWidget*>(&canvas), static_cast<QWidget*>(&layers.list())}) {
        part->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(part, &QWidget::customContextMenuRequested, this, [this, part](QPoint const& place) {
            _menus.openContextMenu(*part, part->mapToGlobal(place), {.groups = {"Compositor", "Operators"}});
        });
    }
    // Owned by the canvas.
    auto* const drops = new QtDragAndDrop(canvas, RCShdPtr<CanvasSink>::create(_session));
    drops->setStartsByMouse(false);
    drops->setImport(import());
    connect(drops, &QtDragAndDrop::failed, this, &ActionParts::failed);
}

QtActionContext::Item ActionParts::askForInput(ActAction const& action) {
    auto const* const edit = dynamic_cast<AnyEdit const*>(&action);
    if (!edit) return nullptr;
    Verb const verb = edit->verb();
    if (verb.description == "Rename" && _layers) {
        _layers->renameCurrent();
        return nullptr;
    }
    InputDialog dialog(verb, &_window);
    if (auto preview = previewOf(verb, _session, _jobs)) dialog.setPreview(std::move(preview));
    std::optional<Statement> const input = dialog.ask();
    return input ? QtActionContext::Item(StatementItem::create(*input)) : nullptr;
}

void ActionParts::editShortcuts() {
    auto* const editor = new QtShortcutEditor;
    editor->setShortcuts(_menus.getShortcuts());
    connect(editor, &QtShortcutEditor::shortcutsChanged, this, [this, editor] {
        _menus.setShortcuts(editor->getShortcuts());
        _settings.setValue("shortcuts", QString::fromStdString(editor->getShortcuts().getText()));
    });
    makeDialog(&_window, tr("Keyboard Shortcuts"), editor)->open();
}

void ActionParts::listPlugIns() {
    auto* const table = new QTableView;
    table->setModel(new QtPlugInModel(table));
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setShowGrid(false);
    table->setAccessibleName(tr("Plug-ins"));
    table->resizeColumnsToContents();
    makeDialog(&_window, tr("Plug-ins"), table)->open();
}

} // namespace compositor::window
