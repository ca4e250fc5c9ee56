#pragma once

#include "adapters/qt/qtActionContext.h"
#include "framework/actions/actFinder.h"

#include <QDialog>
#include <functional>

class QLabel;
class QLineEdit;
class QListView;

namespace Ko {

/// Finds and performs actions by a few letters, with the keyboard alone: the arrows choose, Return performs, Escape goes back or
/// closes.
///
/// Lists what is shown in menus too, with the matching letters, the shortcut, or the reason where an action is not possible. Options of an
/// action, or its input, are asked for in the same place. Application thread only.
///
///     auto* const palette = new QtPalette(context, window);
///     palette->setShortcutText([=](LiString const& name) { return menus->getAction(name)->shortcut().toString(); });
///     connect(find, &QAction::triggered, palette, &QtPalette::popUp);
class KO_QT_API QtPalette : public QDialog {
    Q_OBJECT

public:
    /// The text of the shortcut of an action, by its name as `ActShortcutMap::getName`.
    using ShortcutText = std::function<QString(LiString const& name)>;

    /// @param context is not owned, and has to outlive this object.
    explicit QtPalette(QtActionContext* context, QWidget* parent = nullptr);
    ~QtPalette() override;

    /// Shows shortcuts beside the actions.
    void setShortcutText(ShortcutText shortcutText);
    /// What was used last, for a host that keeps it: `ActFinder::getUsed` and `setUsed`.
    [[nodiscard]] ActFinder& getFinder() noexcept { return _finder; }

public Q_SLOTS:
    /// Opens the palette over the upper part of its parent, with all actions.
    void popUp();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Matches;
    class Painter;
    enum class Stage { Actions, Options, Input };

    void enter(Stage stage, ActAction const* action);
    void follow();
    void update();
    void listActions();
    void listOptions();
    void choose();
    void chooseAction(ActAction const& action);
    void chooseText();
    void goBack();
    void move(int rows);
    bool pressKey(int key);
    void fitHeight();

    QtActionContext* _context;
    ShortcutText _shortcutText;
    ActFinder _finder;
    QLineEdit* _edit;
    QListView* _list;
    QLabel* _message;
    Matches* _matches;
    Stage _stage = Stage::Actions;
    // Of the second stage; null in the first.
    ActAction const* _action = nullptr;
    Vector<ActOption> _options;
};

} // namespace Ko
