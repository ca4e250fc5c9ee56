#pragma once

#include "host/edit.h"
#include "window/preview.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>

namespace compositor::window {

/// Asks for the arguments of an edit, and shows meanwhile what an operator makes of them.
class InputDialog : public QDialog {
    Q_OBJECT

public:
    InputDialog(Verb const& verb, QWidget* parent);

    /// Shows the effect while the user types.
    void setPreview(std::unique_ptr<Preview> preview);
    /// Asks. @returns the input of the action; nothing when the user gives none. The preview is over then.
    [[nodiscard]] std::optional<Statement> ask();

private:
    void judge();
    std::optional<Statement> input() const;
    void showFault(QString const& fault);

    Verb _verb;
    QLineEdit* _arguments;
    QLabel* _fault;
    QDialogButtonBox* _buttons;
    std::unique_ptr<Preview> _preview;
};

} // namespace compositor::window
