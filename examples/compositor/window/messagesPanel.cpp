#include "window/messagesPanel.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QStyle>
#include <QTime>

namespace compositor::window {

namespace {

constexpr int mostMessages = 1000;

QStyle::StandardPixmap iconOf(Ko::Msg::Severity severity) {
    return severity == Ko::Msg::Severity::Error ? QStyle::SP_MessageBoxCritical : QStyle::SP_MessageBoxWarning;
}

} // namespace

MessagesPanel::MessagesPanel(QWidget* parent) : QListWidget(parent) {
    setAccessibleName(tr("Messages"));
    setFrameShape(QFrame::NoFrame);
    setWordWrap(true);
    setSelectionMode(ExtendedSelection);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* const copy = new QAction(tr("Copy"), this);
    connect(copy, &QAction::triggered, this, [this] {
        QStringList lines;
        for (QListWidgetItem const* const item : selectedItems())
            lines << item->text();
        QApplication::clipboard()->setText(lines.join('\n'));
    });
    auto* const clearAll = new QAction(tr("Clear"), this);
    connect(clearAll, &QAction::triggered, this, &QListWidget::clear);
    addActions({copy, clearAll});
}

void MessagesPanel::add(Ko::Msg::Severity severity, QString const& text) {
    append(style()->standardIcon(iconOf(severity)), text);
}

void MessagesPanel::note(QString const& text) {
    append(style()->standardIcon(QStyle::SP_MessageBoxInformation), text);
}

void MessagesPanel::append(QIcon const& icon, QString const& text) {
    while (count() >= mostMessages)
        delete takeItem(0); // NOLINT: the list gives its item away
    QString const time = QTime::currentTime().toString("HH:mm:ss");
    addItem(new QListWidgetItem(icon, time + "  " + text));
    scrollToBottom();
}

} // namespace compositor::window
