#pragma once

#include "resmgt/msgServer.h"

#include <QListWidget>

namespace compositor::window {

/// The messages of the window, the newest last.
class MessagesPanel : public QListWidget {
    Q_OBJECT

public:
    explicit MessagesPanel(QWidget* parent = nullptr);

    void add(Ko::Msg::Severity severity, QString const& text);
    /// Adds a message that is neither a warning nor an error.
    void note(QString const& text);

private:
    void append(QIcon const& icon, QString const& text);
};

} // namespace compositor::window
