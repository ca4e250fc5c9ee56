#pragma once

#include "adapters/qt/qtActionContext.h"
#include "framework/actions/actShortcutMap.h"
#include "resmgt/liString.h"

#include <QIcon>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <functional>
#include <list>
#include <map>
#include <memory>

class QAction;
class QMenu;
class QToolBar;
class QWidget;

namespace Ko {

/// Which actions a menu or a bar shows.
struct QtActionFilter {
    /// The composite action whose members are shown; empty for the top level.
    LiString composite = {};
    /// The groups; empty for all.
    Set<std::string> groups = {};
    /// The sections; empty for all. The section without a name is the empty text.
    Set<std::string> sections = {};
};

/// Menus, tool bars, context menus and shortcuts made of the actions of the registry, and kept right when actions or targets change.
///
/// There is one `QAction` for each action, in whatever menus and bars it is shown: with text, icon, tool tip, shortcuts, check mark, and the
/// reason where it is not possible. Entries are arranged by sections and order; composite actions, and actions with options, are sub-menus.
/// Application thread only.
///
///     auto* const menus = new QtActionMenus(context, window);
///     menus->fill(*window->menuBar()->addMenu("&Layer"));
///     menus->fill(*window->addToolBar("Blend"), {.composite = "Blend"});
///     menus->setWindow(*window); // for the shortcuts
class KO_QT_API QtActionMenus : public QObject {
    Q_OBJECT

public:
    /// Which actions a menu or a bar shows.
    using Filter = QtActionFilter;
    /// Finds the icon of a name.
    using Icons = std::function<QIcon(QString const& name)>;

    /// @param context is not owned, and has to outlive this object.
    explicit QtActionMenus(QtActionContext* context, QObject* parent = nullptr);
    ~QtActionMenus() override;

    /// Keeps a menu filled, from now on until it is destroyed. Its own entries stay before, and those that are added later come after.
    void fill(QMenu& menu, Filter const& filter = {});
    /// Keeps a tool bar filled. Its buttons are reached by the Tab key; those with sub-menus open them at once.
    void fill(QToolBar& bar, Filter const& filter = {});
    /// Opens a menu with the actions that are possible for the present targets. It deletes itself when it closes.
    /// @param place on the screen.
    /// @returns the open menu; null where nothing is possible.
    QMenu* openContextMenu(QWidget& parent, QPoint const& place, Filter const& filter = {});

    /// The entry of an action, for a place of the host's own; null where it is not registered. It is destroyed when the action is
    /// unregistered.
    [[nodiscard]] QAction* getAction(ActAction const& action) const;
    /// The entry of an action by its name, as `ActShortcutMap::getName`.
    [[nodiscard]] QAction* getAction(LiString const& name) const;

    /// Makes the shortcuts valid in a window.
    void setWindow(QWidget& window);
    /// Makes the shortcuts of a context, such as "canvas", valid in a part of the window. There they come before those of the window.
    void setContextWidget(std::string const& context, QWidget& widget);
    /// The shortcuts: the defaults of the registered actions, and the user's changes.
    [[nodiscard]] ActShortcutMap const& getShortcuts() const noexcept { return _shortcuts; }
    /// Takes over the user's changes, from a file or from a `QtShortcutEditor`.
    void setShortcuts(ActShortcutMap const& shortcuts);
    /// Finds icons in another place than the theme of the desktop.
    void setIcons(Icons icons);

    /// The context, not owned.
    [[nodiscard]] QtActionContext* getContext() const noexcept { return _context; }

public Q_SLOTS:
    /// Asks all actions anew. Not needed after changes that the context is notified of.
    void update();

private:
    struct Entry;
    struct Place;

    void collect();
    void addEntry(ActAction const& action);
    void refresh(Entry& entry);
    void refreshTexts(Entry& entry, QtActionContext::Offer const& offer);
    void refreshMenu(Entry& entry, QtActionContext::Offer const& offer);
    void fillOptions(Entry& entry);
    void addPlace(QWidget& widget, Filter const& filter);
    void rebuild(Place& place);
    bool isIn(Entry const& entry, Filter const& filter) const;
    QList<QList<QAction*>> arrange(Filter const& filter) const;
    void assignShortcuts();
    std::string contextOfFocus() const;

    QtActionContext* _context;
    ActShortcutMap _shortcuts;
    Icons _icons;
    std::map<ActAction const*, std::unique_ptr<Entry>> _entries;
    std::list<Place> _places;
    QPointer<QWidget> _window;
    std::map<std::string, QPointer<QWidget>> _contextWidgets;
    std::string _focusContext;
};

} // namespace Ko
