#include "adapters/qt/qtActionContext.h"

#include "adapters/qt/src/qtActionText.h"
#include "adapters/qt/src/qtGuarded.h"
#include "adapters/qt/src/qtRegistry.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actGroupedEntry.h"
#include "framework/command/cmCommandStackManager.h"
#include "internalAPI/snItemBasic.h"
#include "internalAPI/snSelectionChange.h"

#include <QApplication>
#include <QInputDialog>
#include <QPointer>
#include <QTimerEvent>
#include <algorithm>

namespace Ko {
namespace {

using Item = QtActionContext::Item;

Item none() {
    return SnItemBasic<ActBasicParam>::create(ActBasicParam());
}

bool takesText(ActPresentation const& shown) {
    return shown.inputKind == ActInputKind::Text || shown.inputKind == ActInputKind::Number;
}

} // namespace

QtActionContext::QtActionContext(Targets targets, QObject* parent)
    : QObject(parent), _targets(std::move(targets)),
      _registryChanges(ActRegistry::getInstance().onChange([this](ActRegistryChange const&) { invalidate(); })) {}

QtActionContext::~QtActionContext() = default;

void QtActionContext::setHistory(History history) {
    _history = std::move(history);
}
void QtActionContext::setAskInput(AskInput askInput) {
    _askInput = std::move(askInput);
}
void QtActionContext::watch(RCShdPtr<SnSelection> const& selection) {
    _selectionChanges =
        selection ? selection->onChange([this](SnSelectionChange const&) { invalidate(); }) : CbSubscription();
    invalidate();
}
void QtActionContext::watch(RCShdPtr<CmCommandStack> const& history) {
    _historyChanges = history ? history->onChange([this] { invalidate(); }) : CbSubscription();
    invalidate();
}

List<Item> QtActionContext::getTargets() const {
    List<Item> targets = _targets ? _targets() : List<Item>();
    if (targets.empty()) targets.push_back(none());
    return targets;
}

QtActionContext::Offer QtActionContext::getOffer(ActAction const& action) const {
    Offer offer;
    if (auto const failure = qtFailureOf([&] { offer = ask(action); }))
        offer.presentation.whyNot = failure->toStdString();
    return offer;
}

QtActionContext::Offer QtActionContext::ask(ActAction const& action) const {
    Offer offer;
    offer.text = qtDisplayText(action);
    Vector<Item> const valid = validTargets(action, none());
    if (valid.empty()) {
        Item const first = getTargets().front();
        offer.presentation = ActPresented::of(action, first, none());
        offer.options = ActOptioned::of(action, first, none());
        std::erase_if(offer.options, [&](ActOption const& option) { return !action.inputValid(first, option.input); });
    } else {
        ActGroupedEntry const entry(&action, valid, none());
        offer.presentation = entry.getPresentation();
        offer.options = entry.getOptions();
    }
    offer.isPossible = !valid.empty() || !offer.options.empty();
    offer.asksForInput = takesText(offer.presentation);
    if (!offer.isPossible && offer.asksForInput && offer.presentation.whyNot.empty())
        offer.isPossible = _askInput || toInput(action, QStringLiteral("1"));
    if (offer.isPossible) offer.presentation.whyNot.clear();
    return offer;
}

Vector<Item> QtActionContext::validTargets(ActAction const& action, Item const& input) const {
    Vector<Item> valid;
    for (Item const& target : getTargets())
        if (action.inputValid(target, input)) valid.push_back(target);
    return valid;
}

Item QtActionContext::toInput(ActAction const& action, QString const& text) const {
    LiString const typed = text.toStdString();
    Vector<Item> inputs;
    bool isNumber = false;
    double const number = text.toDouble(&isNumber);
    if (isNumber) inputs.push_back(SnItemBasic<double>::create(number));
    inputs.push_back(SnItemBasic<LiString>::create(typed));
    inputs.push_back(SnItemBasic<ActBasicParam>::create(ActBasicParam(typed)));
    for (Item const& input : inputs)
        if (!validTargets(action, input).empty()) return input;
    return nullptr;
}

void QtActionContext::perform(ActAction const& action) {
    QPointer<QtActionContext> const self = this;
    Offer const offer = getOffer(action);
    QString const text = QString::fromStdString(offer.text);
    if (!offer.isPossible || !offer.asksForInput) return run(action, none(), false);
    Item input;
    auto const failure = qtFailureOf([&] { input = askForInput(action, offer.presentation); });
    if (failure && self) Q_EMIT failed(text, *failure);
    // While the user was asked, the action may have been destroyed.
    if (self && input && qtIsRegistered(&action)) run(action, input, true);
}

void QtActionContext::perform(ActAction const& action, Item const& input) {
    run(action, input, true);
}

Item QtActionContext::askForInput(ActAction const& action, ActPresentation const& shown) {
    if (_askInput) return _askInput(action, shown);
    bool isGiven = false;
    QString const title = QString::fromStdString(qtDisplayText(action));
    QString const text = QInputDialog::getText(
        QApplication::activeWindow(), title, title + QLatin1Char(':'), QLineEdit::Normal, {}, &isGiven);
    if (!isGiven || !qtIsRegistered(&action)) return nullptr;
    Item const input = toInput(action, text);
    if (!input) Q_EMIT failed(title, tr("\u201C%1\u201D is not possible here.").arg(text));
    return input;
}

void QtActionContext::run(ActAction const& action, Item const& input, bool isGiven) {
    QPointer<QtActionContext> const self = this; // an action may close the window
    QString text;
    auto const touched = SnSelection::create();
    auto const failure = qtFailureOf([&] {
        text = QString::fromStdString(qtDisplayText(action));
        Vector<Item> const valid = validTargets(action, input);
        if (valid.empty()) throw ExInternalError(__FILE__, __LINE__, tr("This is not possible here.").toStdString());
        ActGroupedEntry const entry(&action, valid, input);
        auto const history = _history ? _history() : CmCommandStackManager::getInstance().get();
        isGiven ? entry.performAction(history, input, touched) : entry.performAction(history, touched);
    });
    if (!self) return;
    invalidate();
    if (failure)
        Q_EMIT failed(text, *failure);
    else
        Q_EMIT performed(touched);
}

void QtActionContext::invalidate() {
    if (_timer == 0) _timer = startTimer(0);
}

void QtActionContext::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _timer) return;
    killTimer(_timer);
    _timer = 0;
    Q_EMIT changed();
}

} // namespace Ko
