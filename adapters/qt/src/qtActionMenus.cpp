#include "adapters/qt/qtActionMenus.h"

#include "adapters/qt/src/qtActionText.h"
#include "adapters/qt/src/qtOwned.h"
#include "adapters/qt/src/qtShapes.h"
#include "adapters/qt/src/qtShortcuts.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actGroupedEntry.h"
#include "framework/actions/actRegistry.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>

namespace Ko {
namespace {

QAction* addSeparator(QWidget& widget, QAction* before) {
    auto* const separator = qtOwned<QAction>(&widget);
    separator->setSeparator(true);
    widget.insertAction(before, separator);
    return separator;
}

// Bars take the focus from their buttons, and let those with a menu perform something beside it.
void setUpButton(QToolBar const& bar, QAction* action) {
    auto* const button = qobject_cast<QToolButton*>(bar.widgetForAction(action));
    if (!button) return;
    button->setFocusPolicy(Qt::TabFocus);
    button->setPopupMode(QToolButton::InstantPopup);
}

} // namespace

struct QtActionMenus::Entry {
    ActAction const* action;
    LiString name;
    std::string group;
    LiString composite;
    ActPresentation presentation = {};
    // Deleted later: the action may be unregistered by its own entry.
    std::unique_ptr<QAction, void (*)(QAction*)> shown;
    // Of a composite action, or one with options; null for others.
    std::unique_ptr<QMenu> menu = {};
};

/// A menu or a bar that is kept filled.
struct QtActionMenus::Place {
    QPointer<QWidget> widget;
    // Invisible, after the last entry.
    QPointer<QAction> end;
    Filter filter;
    QList<QPointer<QAction>> shown = {};
};

QtActionMenus::QtActionMenus(QtActionContext* context, QObject* parent)
    : QObject(parent), _context(context), _icons([](QString const& name) { return QIcon::fromTheme(name); }) {
    connect(context, &QtActionContext::changed, this, &QtActionMenus::update);
    connect(qApp, &QApplication::focusChanged, this, [this] {
        if (contextOfFocus() != _focusContext) assignShortcuts();
    });
    update();
}

QtActionMenus::~QtActionMenus() = default;

void QtActionMenus::fill(QMenu& menu, Filter const& filter) {
    menu.setToolTipsVisible(true);
    addPlace(menu, filter);
    connect(&menu, &QMenu::aboutToShow, this, &QtActionMenus::update);
}
void QtActionMenus::fill(QToolBar& bar, Filter const& filter) {
    addPlace(bar, filter);
}

void QtActionMenus::addPlace(QWidget& widget, Filter const& filter) {
    auto* const end = qtOwned<QAction>(&widget);
    end->setVisible(false);
    widget.addAction(end);
    _places.push_back({&widget, end, filter});
    rebuild(_places.back());
}

QMenu* QtActionMenus::openContextMenu(QWidget& parent, QPoint const& place, Filter const& filter) {
    update();
    auto menu = std::make_unique<QMenu>(&parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setToolTipsVisible(true);
    bool isFirst = true;
    for (QList<QAction*> const& section : arrange(filter)) {
        QList<QAction*> possible;
        std::ranges::copy_if(section, std::back_inserter(possible), &QAction::isEnabled);
        if (possible.isEmpty()) continue;
        if (!std::exchange(isFirst, false)) menu->addSeparator();
        menu->addActions(possible);
    }
    if (isFirst) return nullptr;
    menu->popup(place);
    return menu.release();
}

QAction* QtActionMenus::getAction(ActAction const& action) const {
    auto const found = _entries.find(&action);
    return found == _entries.end() ? nullptr : found->second->shown.get();
}
QAction* QtActionMenus::getAction(LiString const& name) const {
    for (auto const& [action, entry] : _entries)
        if (entry->name == name) return entry->shown.get();
    return nullptr;
}

void QtActionMenus::setWindow(QWidget& window) {
    _window = &window;
    assignShortcuts();
}
void QtActionMenus::setContextWidget(std::string const& context, QWidget& widget) {
    _contextWidgets[context] = &widget;
    assignShortcuts();
}
void QtActionMenus::setShortcuts(ActShortcutMap const& shortcuts) {
    _shortcuts = shortcuts;
    for (auto const& [action, entry] : _entries)
        _shortcuts.setDefaults(entry->name, entry->presentation.shortcuts, entry->presentation.shortcutContext);
    assignShortcuts();
}
void QtActionMenus::setIcons(Icons icons) {
    _icons = std::move(icons);
    update();
}

void QtActionMenus::update() {
    collect();
    for (auto const& [action, entry] : _entries)
        refresh(*entry);
    std::erase_if(_places, [](Place const& place) { return !place.widget || !place.end; });
    for (Place& place : _places)
        rebuild(place);
}

// Adds entries of new actions and removes those of actions that were unregistered.
void QtActionMenus::collect() {
    auto const actions = ActRegistry::getInstance().getAllActions(ActRegistry::FirstOnly);
    Set<ActAction const*> registered;
    for (ActAction const* const action : actions.elements())
        registered.insert(action);
    bool isOther = false;
    for (auto entry = _entries.begin(); entry != _entries.end();)
        if (registered.contains(entry->first))
            ++entry;
        else {
            _shortcuts.remove(entry->second->name);
            entry = _entries.erase(entry);
            isOther = true;
        }
    for (ActAction const* const action : registered)
        if (!_entries.contains(action)) {
            addEntry(*action);
            isOther = true;
        }
    if (isOther) assignShortcuts();
}

void QtActionMenus::addEntry(ActAction const& action) {
    auto entry = std::make_unique<Entry>(Entry{&action, ActShortcutMap::getName(action), action.getGroup(),
        action.getCompositeName(), {}, {qtOwned<QAction>(this), [](QAction* shown) {
                                            shown->setVisible(false);
                                            shown->deleteLater();
                                        }}});
    entry->presentation = _context->getOffer(action).presentation;
    _shortcuts.setDefaults(entry->name, entry->presentation.shortcuts, entry->presentation.shortcutContext);
    if (dynamic_cast<ActCompositeAction const*>(&action)) {
        entry->menu = std::make_unique<QMenu>();
        fill(*entry->menu, {.composite = action.getDescription()});
        entry->shown->setMenu(entry->menu.get());
    } else
        connect(entry->shown.get(), &QAction::triggered, this, [this, &action] {
            if (_entries.contains(&action)) _context->perform(action);
            // The entry has switched its own mark.
            _context->invalidate();
        });
    _entries.emplace(&action, std::move(entry));
}

void QtActionMenus::refresh(Entry& entry) {
    QtActionContext::Offer const offer = _context->getOffer(*entry.action);
    entry.presentation = offer.presentation;
    entry.shown->setEnabled(offer.isPossible);
    entry.shown->setVisible(offer.isShown());
    refreshTexts(entry, offer);
    if (!dynamic_cast<ActCompositeAction const*>(entry.action)) refreshMenu(entry, offer);
}

void QtActionMenus::refreshTexts(Entry& entry, QtActionContext::Offer const& offer) {
    QAction& shown = *entry.shown;
    ActPresentation const& presentation = offer.presentation;
    bool const asks = offer.asksForInput && offer.options.empty();
    shown.setText(qtEntryText(QString::fromStdString(offer.text)) + (asks ? QStringLiteral("\u2026") : QString()));
    QIcon icon = presentation.iconName.empty() ? QIcon() : _icons(QString::fromStdString(presentation.iconName));
    if (presentation.isMixed) icon = qtIcon(QtShape::Mixed);
    if (shown.icon().isNull() != icon.isNull() || icon.cacheKey() != shown.icon().cacheKey()) shown.setIcon(icon);
    shown.setCheckable(presentation.isCheckable);
    shown.setChecked(presentation.isChecked && !presentation.isMixed);
    QStringList lines{QString::fromStdString(presentation.toolTip), QString::fromStdString(presentation.whyNot)};
    lines.removeAll(QString());
    shown.setToolTip(lines.isEmpty() ? QString::fromStdString(offer.text) : lines.join(u'\n'));
    shown.setStatusTip(lines.join(QStringLiteral(" \u00B7 ")));
}

// A sub-menu with the options, where there are any now.
void QtActionMenus::refreshMenu(Entry& entry, QtActionContext::Offer const& offer) {
    if (offer.options.empty() == !entry.menu) return;
    if (offer.options.empty()) {
        entry.shown->setMenu(nullptr);
        entry.menu.release()->deleteLater();
        return;
    }
    entry.menu = std::make_unique<QMenu>();
    connect(entry.menu.get(), &QMenu::aboutToShow, this, [this, &entry] { fillOptions(entry); });
    entry.shown->setMenu(entry.menu.get());
}

void QtActionMenus::fillOptions(Entry& entry) {
    ActAction const& action = *entry.action;
    QtActionContext::Offer const offer = _context->getOffer(action);
    bool const isCheckable = std::ranges::any_of(offer.options, &ActOption::isCurrent);
    entry.menu->clear();
    for (ActOption const& option : offer.options) {
        QAction* const shown = entry.menu->addAction(qtEntryText(QString::fromStdString(option.text)));
        shown->setCheckable(isCheckable);
        shown->setChecked(option.isCurrent);
        connect(shown, &QAction::triggered, this, [this, &action, input = option.input] {
            if (_entries.contains(&action)) _context->perform(action, input);
        });
    }
    if (!offer.asksForInput) return;
    entry.menu->addSeparator();
    connect(entry.menu->addAction(tr("Other\u2026")), &QAction::triggered, this, [this, &action] {
        if (_entries.contains(&action)) _context->perform(action);
    });
}

bool QtActionMenus::isIn(Entry const& entry, Filter const& filter) const {
    return entry.composite == filter.composite && (filter.groups.empty() || filter.groups.contains(entry.group)) &&
           (filter.sections.empty() || filter.sections.contains(entry.presentation.section)) &&
           entry.shown->isVisible();
}

QList<QList<QAction*>> QtActionMenus::arrange(Filter const& filter) const {
    Vector<ActGroupedEntry> wanted;
    Set<ActAction const*> seen;
    QtActionContext::Item const target = _context->getTargets().front();
    auto const actions = ActRegistry::getInstance().getAllActions(ActRegistry::AllSorted);
    for (ActAction const* const action : actions.elements()) {
        auto const found = _entries.find(action);
        if (found != _entries.end() && isIn(*found->second, filter) && seen.insert(action).second)
            wanted.emplace_back(action, Vector<QtActionContext::Item>{target}, target);
    }
    QList<QList<QAction*>> sections;
    for (ActGroupedSection const& section : ActGroupedSection::arrange(wanted)) {
        sections.append(QList<QAction*>());
        for (ActGroupedSection::Item const& item : section.items)
            if (QAction* const shown = getAction(*item.entry.getAction())) sections.back().append(shown);
    }
    return sections;
}

void QtActionMenus::rebuild(Place& place) {
    QList<QList<QAction*>> const sections = arrange(place.filter);
    QList<QPointer<QAction>> before;
    before.swap(place.shown);
    QList<QAction*> wanted;
    for (QList<QAction*> const& section : sections)
        wanted += section;
    QList<QAction*> present;
    for (QPointer<QAction> const& shown : before)
        if (shown && !shown->isSeparator()) present.append(shown);
    // An open menu, or a bar under the pointer, is not touched without need.
    if (wanted == present) return place.shown.swap(before);
    for (QPointer<QAction> const& shown : before)
        if (shown && shown->isSeparator()) shown->deleteLater();
    for (QPointer<QAction> const& shown : before)
        if (shown) place.widget->removeAction(shown);
    for (QList<QAction*> const& section : sections) {
        if (!place.shown.isEmpty()) place.shown.append(addSeparator(*place.widget, place.end));
        for (QAction* const shown : section) {
            place.widget->insertAction(place.end, shown);
            if (auto* const bar = qobject_cast<QToolBar*>(place.widget.data())) setUpButton(*bar, shown);
            place.shown.append(shown);
        }
    }
}

std::string QtActionMenus::contextOfFocus() const {
    for (QWidget const* widget = QApplication::focusWidget(); widget; widget = widget->parentWidget())
        for (auto const& [context, its] : _contextWidgets)
            if (its == widget) return context;
    return {};
}

// Where the focus is in a context, its shortcuts are taken from the rest of the window, or Qt would perform neither.
void QtActionMenus::assignShortcuts() {
    _focusContext = contextOfFocus();
    for (auto const& [action, entry] : _entries) {
        std::string const context = _shortcuts.getContext(entry->name);
        auto const found = _contextWidgets.find(context);
        QWidget* const widget =
            context.empty() || found == _contextWidgets.end() ? _window.data() : found->second.data();
        QList<QKeySequence> keys;
        for (ActShortcut const& shortcut : _shortcuts.getShortcuts(entry->name)) {
            Vector<LiString> const performed = _shortcuts.find(shortcut, _focusContext);
            if (!context.empty() || std::ranges::count(performed, entry->name) > 0)
                keys.append(qtKeySequence(shortcut));
        }
        entry->shown->setShortcuts(keys);
        entry->shown->setShortcutContext(context.empty() ? Qt::WindowShortcut : Qt::WidgetWithChildrenShortcut);
        if (widget && !widget->actions().contains(entry->shown.get())) widget->addAction(entry->shown.get());
    }
}

} // namespace Ko
