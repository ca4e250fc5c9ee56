#include "adapters/qt/qtPalette.h"

#include "adapters/qt/src/qtActionText.h"
#include "adapters/qt/src/qtOwned.h"
#include "adapters/qt/src/qtPaletteMatches.h"
#include "adapters/qt/src/qtRegistry.h"
#include "adapters/qt/src/qtShapes.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actShortcutMap.h"
#include "internalAPI/snItemBasic.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

namespace Ko {
namespace {

// Actions that are asked for a pattern, and those that are listed.
constexpr std::size_t maxFound = 200;
constexpr qsizetype maxListed = 50;

// Positions in bytes of UTF-8 as positions in the text of Qt.
QList<int> toPositions(LiString const& text, Vector<std::size_t> const& letters, qsizetype offset) {
    QList<int> positions;
    for (std::size_t const letter : letters)
        positions.append(
            static_cast<int>(offset + QString::fromUtf8(text.data(), static_cast<qsizetype>(letter)).size()));
    return positions;
}

} // namespace

QtPalette::QtPalette(QtActionContext* context, QWidget* parent)
    : QDialog(parent, Qt::Popup | Qt::FramelessWindowHint), _context(context), _edit(qtOwned<QLineEdit>(this)),
      _list(qtOwned<QListView>(this)), _message(qtOwned<QLabel>(this)), _matches(qtOwned<Matches>(this)) {
    setAccessibleName(tr("Command palette"));
    _edit->setAccessibleName(tr("Search"));
    _list->setAccessibleName(tr("Commands"));
    _list->setModel(_matches);
    _list->setItemDelegate(qtOwned<Painter>(_list));
    _list->setFocusPolicy(Qt::NoFocus);
    _list->setFrameShape(QFrame::NoFrame);
    _list->setUniformItemSizes(true);
    _list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    _message->setWordWrap(true);
    auto* const layout = qtOwned<QVBoxLayout>(this);
    layout->setContentsMargins(8, 8, 8, 8);
    for (QWidget* const part : std::initializer_list<QWidget*>{_edit, _list, _message})
        layout->addWidget(part);
    _edit->installEventFilter(this);
    connect(_edit, &QLineEdit::textChanged, this, &QtPalette::update);
    connect(_list, &QListView::clicked, this, &QtPalette::choose);
    connect(_context, &QtActionContext::changed, this, &QtPalette::follow);
}

QtPalette::~QtPalette() = default;

void QtPalette::setShortcutText(ShortcutText shortcutText) {
    _shortcutText = std::move(shortcutText);
}

void QtPalette::popUp() {
    if (QWidget const* const parent = parentWidget()) {
        QWidget const& window = *parent->window();
        int const width = std::clamp(window.width() * 2 / 3, 360, 640);
        setFixedWidth(width);
        QDialog::move(window.mapToGlobal(QPoint((window.width() - width) / 2, window.height() / 10)));
    }
    _edit->clear();
    enter(Stage::Actions, nullptr);
    show();
    _edit->setFocus(Qt::PopupFocusReason);
}

void QtPalette::enter(Stage stage, ActAction const* action) {
    if (stage == Stage::Actions) _finder.collect();
    bool const isOther = stage != _stage || action != _action;
    _stage = stage;
    _action = action;
    if (isOther) _edit->clear();
    QString const name = action ? QString::fromStdString(_context->getOffer(*action).text) : QString();
    _edit->setPlaceholderText(action ? name + QStringLiteral("\u2026") : tr("Type a command"));
    update();
}

// Keeps what the user has typed and chosen, as far as that exists.
void QtPalette::follow() {
    if (!isVisible() || (_stage != Stage::Actions && qtIsRegistered(_action))) return;
    int const chosen = _list->currentIndex().row();
    ActAction const* const action = chosen < 0 ? nullptr : _matches->at(chosen).action;
    enter(Stage::Actions, nullptr);
    for (int row = 0; row < _matches->rowCount(); ++row)
        if (_matches->at(row).action == action) _list->setCurrentIndex(_matches->index(row));
}

void QtPalette::update() {
    _message->clear();
    _message->hide();
    if (_stage == Stage::Actions)
        listActions();
    else
        listOptions();
    _list->setCurrentIndex(_matches->index(0));
    _list->scrollToTop();
    fitHeight();
}

// As high as the list needs, up to a limit.
void QtPalette::fitHeight() {
    constexpr int maxRows = 14;
    int const rows = std::min(_matches->rowCount(), maxRows);
    _list->setFixedHeight(rows * std::max(0, _list->sizeHintForRow(0)) + 2);
    _list->setVisible(rows > 0);
    layout()->activate();
    adjustSize();
}

void QtPalette::listActions() {
    QList<Matches::Row> rows;
    auto const nothing = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    auto const target = _context->getTargets().front();
    for (ActFinder::Match const& match : _finder.find(_edit->text().toStdString(), target, nothing, maxFound)) {
        if (rows.size() == maxListed) break;
        QtActionContext::Offer const offer = _context->getOffer(*match.action);
        if (!offer.isShown() || dynamic_cast<ActCompositeAction const*>(match.action)) continue;
        QString const before = qtCompositePrefix(*match.action);
        QString note = QString::fromStdString(offer.presentation.whyNot);
        if (offer.isPossible && _shortcutText) note = _shortcutText(ActShortcutMap::getName(*match.action));
        rows.append({before + QString::fromStdString(match.text), toPositions(match.text, match.letters, before.size()),
            note, offer.isPossible, match.action, -1});
    }
    if (rows.isEmpty()) {
        _message->setText(tr("No command matches."));
        _message->show();
    }
    _matches->set(std::move(rows));
}

void QtPalette::listOptions() {
    QList<Matches::Row> rows;
    for (int number = 0; _stage == Stage::Options && number < static_cast<int>(_options.size()); ++number) {
        ActOption const& option = _options[static_cast<std::size_t>(number)];
        QString const text = QString::fromStdString(option.text);
        if (text.contains(_edit->text(), Qt::CaseInsensitive))
            rows.append({text, {}, option.isCurrent ? tr("now") : QString(), true, _action, number});
    }
    _matches->set(std::move(rows));
}

void QtPalette::choose() {
    int const row = _list->currentIndex().row();
    if (_stage == Stage::Input || (_stage == Stage::Options && row < 0)) return chooseText();
    if (row < 0) return;
    Matches::Row const chosen = _matches->at(row);
    if (!chosen.isPossible) return;
    if (chosen.option < 0) return chooseAction(*chosen.action);
    auto const input = _options[static_cast<std::size_t>(chosen.option)].input;
    hide();
    _finder.noteUse(*chosen.action);
    _context->perform(*chosen.action, input);
}

void QtPalette::chooseAction(ActAction const& action) {
    QtActionContext::Offer const offer = _context->getOffer(action);
    _options = offer.options;
    if (!_options.empty()) return enter(Stage::Options, &action);
    // Other inputs than texts are asked for by the host.
    if (offer.asksForInput && _context->toInput(action, QStringLiteral("1"))) return enter(Stage::Input, &action);
    hide();
    _finder.noteUse(action);
    _context->perform(action);
}

// What is typed is the input of the action.
void QtPalette::chooseText() {
    auto const input = _context->toInput(*_action, _edit->text());
    if (!input) {
        QPalette colours = _message->palette();
        colours.setColor(QPalette::WindowText, qtFailureColour());
        _message->setPalette(colours);
        _message->setText(tr("\u201C%1\u201D is not possible here.").arg(_edit->text()));
        return _message->show();
    }
    hide();
    ActAction const& action = *_action;
    _finder.noteUse(action);
    _context->perform(action, input);
}

void QtPalette::goBack() {
    if (_stage == Stage::Actions)
        hide();
    else
        enter(Stage::Actions, nullptr);
}

void QtPalette::move(int rows) {
    int const last = _matches->rowCount() - 1;
    if (last < 0) return;
    int row = _list->currentIndex().row() + rows;
    // The arrows go round, pages do not.
    if (std::abs(rows) == 1) row = row < 0 ? last : row > last ? 0 : row;
    _list->setCurrentIndex(_matches->index(std::clamp(row, 0, last)));
}

bool QtPalette::eventFilter(QObject* watched, QEvent* event) {
    if (watched == _edit && event->type() == QEvent::KeyPress && pressKey(static_cast<QKeyEvent*>(event)->key()))
        return true;
    return QDialog::eventFilter(watched, event);
}

// A popup has no frame of the window system.
void QtPalette::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

bool QtPalette::pressKey(int key) {
    int const page = std::max(1, _list->viewport()->height() / std::max(1, _list->sizeHintForRow(0)) - 1);
    switch (key) {
    case Qt::Key_Up:
        return move(-1), true;
    case Qt::Key_Down:
        return move(1), true;
    case Qt::Key_PageUp:
        return move(-page), true;
    case Qt::Key_PageDown:
        return move(page), true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return choose(), true;
    case Qt::Key_Escape:
        return goBack(), true;
    default:
        return false;
    }
}

} // namespace Ko
