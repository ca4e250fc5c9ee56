#include "window/appearance.h"

#include <QApplication>
#include <QPalette>
#include <QSettings>
#include <QStandardPaths>
#include <QStyleFactory>
#include <initializer_list>
#include <utility>

namespace compositor::window {

namespace {

bool isDark(QPalette const& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

// What GTK programs read, and desktops write.
bool desktopPrefersDark() {
    QString const theme = qEnvironmentVariable("GTK_THEME");
    if (!theme.isEmpty()) return theme.endsWith("dark", Qt::CaseInsensitive);
    QString const folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    for (char const* const version : {"gtk-4.0", "gtk-3.0"}) {
        QSettings const settings(folder + "/" + version + "/settings.ini", QSettings::IniFormat);
        if (settings.value("Settings/gtk-application-prefer-dark-theme").toBool()) return true;
        if (settings.value("Settings/gtk-theme-name").toString().endsWith("dark", Qt::CaseInsensitive)) return true;
    }
    return false;
}

using Colours = std::initializer_list<std::pair<QPalette::ColorRole, QColor>>;

QPalette makePalette(Colours colours, QColor const& disabled) {
    QPalette palette;
    for (auto const& [role, colour] : colours)
        palette.setColor(role, colour);
    for (QPalette::ColorRole const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, disabled);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, disabled);
    return palette;
}

QPalette darkPalette() {
    QColor const window(0x2b, 0x2d, 0x31), base(0x23, 0x25, 0x28), text(0xe6, 0xe7, 0xea), accent(0x3d, 0x8b, 0xe8);
    return makePalette({{QPalette::Window, window}, {QPalette::WindowText, text}, {QPalette::Base, base},
                           {QPalette::AlternateBase, QColor(0x29, 0x2b, 0x2f)}, {QPalette::Text, text},
                           {QPalette::Button, QColor(0x37, 0x3a, 0x3f)}, {QPalette::ButtonText, text},
                           {QPalette::BrightText, Qt::white}, {QPalette::ToolTipBase, QColor(0x3a, 0x3d, 0x42)},
                           {QPalette::ToolTipText, text}, {QPalette::PlaceholderText, QColor(0x8b, 0x8e, 0x95)},
                           {QPalette::Highlight, accent}, {QPalette::HighlightedText, Qt::white},
                           {QPalette::Link, QColor(0x6a, 0xad, 0xff)}, {QPalette::Light, QColor(0x45, 0x48, 0x4e)},
                           {QPalette::Midlight, QColor(0x3e, 0x41, 0x46)}, {QPalette::Mid, QColor(0x20, 0x22, 0x25)},
                           {QPalette::Dark, QColor(0x1b, 0x1d, 0x1f)}, {QPalette::Shadow, QColor(0x10, 0x11, 0x12)}},
        QColor(0x7a, 0x7d, 0x83));
}

QPalette lightPalette() {
    QColor const window(0xf1, 0xf2, 0xf4), text(0x1f, 0x22, 0x26), accent(0x1d, 0x6f, 0xd1);
    return makePalette(
        {{QPalette::Window, window}, {QPalette::WindowText, text}, {QPalette::Base, Qt::white},
            {QPalette::AlternateBase, QColor(0xf6, 0xf7, 0xf9)}, {QPalette::Text, text},
            {QPalette::Button, QColor(0xf8, 0xf9, 0xfa)}, {QPalette::ButtonText, text},
            {QPalette::BrightText, Qt::white}, {QPalette::ToolTipBase, Qt::white}, {QPalette::ToolTipText, text},
            {QPalette::PlaceholderText, QColor(0x80, 0x85, 0x8c)}, {QPalette::Highlight, accent},
            {QPalette::HighlightedText, Qt::white}, {QPalette::Link, accent}, {QPalette::Light, Qt::white},
            {QPalette::Midlight, QColor(0xf6, 0xf7, 0xf8)}, {QPalette::Mid, QColor(0xc2, 0xc6, 0xcc)},
            {QPalette::Dark, QColor(0xa4, 0xa9, 0xb0)}, {QPalette::Shadow, QColor(0x70, 0x75, 0x7b)}},
        QColor(0x9a, 0x9f, 0xa6));
}

} // namespace

void applyAppearance(QApplication& application, Scheme scheme) {
    bool const systemIsDark = isDark(QApplication::palette()) || desktopPrefersDark();
    bool const wantsDark = scheme == Scheme::Dark || (scheme == Scheme::System && systemIsDark);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setPalette(wantsDark ? darkPalette() : lightPalette());
    // Panels side by side, with lines as thin as possible between them.
    application.setStyleSheet("QMainWindow::separator { width: 4px; height: 4px; }"
                              "QStatusBar::item { border: none; }"
                              "QDockWidget { titlebar-close-icon: none; titlebar-normal-icon: none; }"
                              "QDockWidget::title { padding: 6px 8px; text-align: left; }");
}

} // namespace compositor::window
