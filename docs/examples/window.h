#pragma once

#include "adapters/qt/qtActionMenus.h"
#include "adapters/qt/qtCloseGuard.h"
#include "adapters/qt/qtEventLoop.h"
#include "adapters/qt/qtHistoryModel.h"
#include "adapters/qt/qtJobDelegate.h"
#include "adapters/qt/qtJobModel.h"
#include "adapters/qt/qtPalette.h"
#include "framework/actions/actLambda.h"
#include "framework/command/cmUndoGuard.h"
#include "internalAPI/snItemBasic.h"

#include <QtWidgets>

using namespace Ko;

/// Colours by their names.
using Colours = std::map<LiString, QColor>;

/// Replaces the document; the other state is kept for undo.
struct ChangeCmd : CmCommand {
    ChangeCmd(LiString what, Colours& changed, Colours next) : text(what), colours(changed), other(std::move(next)) {}
    LiString getDescription() const override { return text; }
    void executeInternal() override { colours.swap(other); }
    void unexecuteInternal() override { colours.swap(other); }

    LiString const text;
    Colours& colours;
    Colours other;
};

/// The colours, their history, and which of them are selected, by their names.
struct Document {
    Colours colours{{"Sky", "#5b9bd5"}, {"Sand", "#e0c080"}, {"Tree", "#3c7a4b"}};
    RCShdPtr<CmCommandStack> history = RCShdPtr<CmCommandStack>::create();
    RCShdPtr<SnSelection> selection = SnSelection::create();

    void set(LiString const& text, LiString const& name, QColor const& colour) {
        Colours changed = colours;
        changed[name] = colour;
        CmUndoGuard step(history, text);
        step.execAndAddUndoCommand(RCShdPtr<ChangeCmd>::create(text, colours, changed));
    }
};

/// Paints all colours into a file.
struct RenderProtocol : BgJobProtocol {
    explicit RenderProtocol(Colours all) : BgJobProtocol("Render colours.png", "render"), colours(std::move(all)) {}

    void execute() override {
        QImage picture(2400, 1200, QImage::Format_RGB32);
        for (int y = 0; y < picture.height() && continueExecution(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixelColor(
                    x, y, std::next(colours.begin(), x % std::ssize(colours))->second.lighter(100 + y / 12));
            reportUnits(y + 1, picture.height(), "rows");
        }
        if (!picture.save("colours.png")) throw std::runtime_error("The file cannot be written.");
    }

    Colours const colours;
};

inline void addActions(Document& document) {
    auto const addShade = [&](LiString const& name, int percent, char const* keys) {
        ActLambda<LiString>::add({.description = name,
            .presentation = {.shortcuts = ActShortcut::parseList(keys), .whyNot = "Select a colour first."},
            .perform = [&document, name, percent](LiString const& colour) {
                document.set(name, colour, document.colours[colour].lighter(percent));
            }});
    };
    addShade("Lighter", 120, "Ctrl+Up");
    addShade("Darker", 83, "Ctrl+Down");
    ActLambda<ActBasicParam, LiString>::add({.description = "Add Colour",
        .presentation = {.section = "File", .inputKind = ActInputKind::Text},
        .perform = [&document](ActBasicParam const&, LiString const& name) {
            document.set("Add " + name, name, QColor::fromHsv(name.front() * 7 % 360, 130, 200));
        }});
    ActLambda<ActBasicParam>::add({.description = "Render",
        .presentation = {.section = "File", .order = 1, .shortcuts = ActShortcut::parseList("Ctrl+R")},
        .perform = [&document](ActBasicParam const&) {
            BgManager::getInstance().addJob(std::make_unique<RenderProtocol>(document.colours));
        }});
}

/// Shows a document; everything around the list is made by the library.
struct Window : QMainWindow {
    // Qt deletes the objects with their parent, the window.
    Window(Document& document, QtEventLoop& events) : _document(document), _list(new QListWidget(this)) {
        setWindowTitle("Colours[*]");
        setCentralWidget(_list);
        _list->setSelectionMode(QAbstractItemView::ExtendedSelection);
        connect(_list, &QListWidget::itemSelectionChanged, this, [this] { select(); });

        auto* const history = new QtHistoryModel(document.history, this);
        history->show(*addPanel("History"));
        connect(history, &QtHistoryModel::currentChanged, this, [this] { fill(); });
        connect(history, &QtHistoryModel::modifiedChanged, this, &QWidget::setWindowModified);

        (new QtJobDelegate(this))->show(*addPanel("Jobs"), *new QtJobModel(this));

        auto* const context = new QtActionContext([this] { return targets(); }, this);
        context->setHistory([this] { return _document.history; });
        context->watch(document.selection);
        context->watch(document.history);
        connect(
            context, &QtActionContext::failed, this, [this](QString const&, QString const& reason) { say(reason); });
        connect(&events, &QtEventLoop::message, this, [this](Msg::Severity, QString const& text) { say(text); });

        auto* const menus = new QtActionMenus(context, this);
        menus->setWindow(*this);
        menuBar()->addMenu("&Edit")->addActions({history->getUndoAction(), history->getRedoAction()});
        menus->fill(*menuBar()->addMenu("&Colours"));
        menus->fill(*addToolBar("Colours"));

        auto* const palette = new QtPalette(context, this);
        menuBar()->addMenu("&Help")->addAction("&Commands", QKeySequence("Ctrl+Shift+P"), palette, &QtPalette::popUp);

        (new QtCloseGuard(*this))->addQuestion([=, this] {
            return !history->isModified() ||
                   QMessageBox::question(this, "Colours", "Forget the changes?") == QMessageBox::Yes;
        });
        fill();
        resize(760, 480);
    }

private:
    QListView* addPanel(QString const& title) {
        auto* const panel = new QDockWidget(title, this);
        auto* const view = new QListView(panel);
        panel->setWidget(view);
        addDockWidget(Qt::RightDockWidgetArea, panel);
        return view;
    }
    void say(QString const& text) { statusBar()->showMessage(text, 10'000); }

    // The selected colours, for their actions, and nothing, for those that need none.
    List<RCShdPtr<SnItem const>> targets() const {
        auto const items = _document.selection->getItems();
        List<RCShdPtr<SnItem const>> targets(items.begin(), items.end());
        targets.push_back(SnItemBasic<ActBasicParam>::create(ActBasicParam()));
        return targets;
    }
    void select() {
        auto const selected = SnSelection::create();
        for (QListWidgetItem const* const row : _list->selectedItems())
            selected->add(SnItemBasic<LiString>::create(row->text().toStdString()));
        _document.selection->replace(*selected);
    }
    void fill() {
        QSignalBlocker const quiet(_list);
        _list->clear();
        for (auto const& [name, colour] : _document.colours) {
            QPixmap picture(32, 32);
            picture.fill(colour);
            auto* const row = new QListWidgetItem(picture, QString::fromStdString(name), _list);
            row->setSelected(_document.selection->contains(*SnItemBasic<LiString>::create(name)));
        }
        select();
    }

    Document& _document;
    QListWidget* _list;
};
