#include "window/inputDialog.h"

#include "script/scriptReader.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace compositor::window {

InputDialog::InputDialog(Verb const& verb, QWidget* parent)
    : QDialog(parent), _verb(verb), _arguments(new QLineEdit(this)), _fault(new QLabel(this)),
      _buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)) {
    QString const description = QString::fromStdString(verb.description);
    setWindowTitle(description);
    auto* const label = new QLabel(tr("%1 takes %2:").arg(description, QString::fromStdString(verb.arguments)), this);
    label->setWordWrap(true);
    label->setBuddy(_arguments);
    _arguments->setAccessibleName(QString::fromStdString(verb.arguments));
    _arguments->setMinimumWidth(320);
    _fault->setWordWrap(true);
    _fault->setMinimumHeight(2 * fontMetrics().height());
    _fault->setAlignment(Qt::AlignTop);
    auto* const box = new QVBoxLayout(this);
    for (QWidget* const part : {static_cast<QWidget*>(label), static_cast<QWidget*>(_arguments),
             static_cast<QWidget*>(_fault), static_cast<QWidget*>(_buttons)})
        box->addWidget(part);
    connect(_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(_arguments, &QLineEdit::textChanged, this, &InputDialog::judge);
}

void InputDialog::setPreview(std::unique_ptr<Preview> preview) {
    _preview = std::move(preview);
    connect(_preview.get(), &Preview::judged, this, &InputDialog::showFault);
}

std::optional<Statement> InputDialog::ask() {
    judge();
    bool const isAccepted = exec() == Accepted;
    _preview.reset();
    return isAccepted ? input() : std::nullopt;
}

void InputDialog::judge() {
    std::optional<Statement> const wanted = input();
    _buttons->button(QDialogButtonBox::Ok)->setEnabled(wanted.has_value());
    if (wanted && _preview) _preview->show(*wanted);
    if (wanted || !_preview) showFault({});
}

void InputDialog::showFault(QString const& fault) {
    _fault->setText(fault);
}

// Nothing while the arguments are too few or too many.
std::optional<Statement> InputDialog::input() const {
    try {
        Statement statement{0, {_verb.description}};
        std::vector<std::string> const words = splitWords(_arguments->text().toStdString());
        statement.words.insert(statement.words.end(), words.begin(), words.end());
        bool const fits = statement.arguments() >= _verb.fewest && statement.arguments() <= _verb.most;
        return fits ? std::optional(statement) : std::nullopt;
    } catch (InputError const&) {
        return std::nullopt;
    }
}

} // namespace compositor::window
