#include "window/appearance.h"

#include <QFileInfo>
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

QStringList desktopSettings() {
    QString const folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return {folder + "/gtk-4.0/settings.ini", folder + "/gtk-3.0/settings.ini"};
}

// What GTK programs read, and desktops write.
bool desktopPrefersDark() {
    QString const theme = qEnvironmentVariable("GTK_THEME");
    if (!theme.isEmpty()) return theme.endsWith("dark", Qt::CaseInsensitive);
    for (QString const& path : desktopSettings()) {
        QSettings const settings(path, QSettings::IniFormat);
        if (settings.value("Settings/gtk-application-prefer-dark-theme").toBool()) return true;
        if (settings.value("Settings/gtk-theme-name").toString().endsWith("dark", Qt::CaseInsensitive)) return true;
    }
    return false;
}

// Panels side by side, with lines as thin as possible between them.
constexpr char const* styleSheet = "QMainWindow::separator { width: 4px; height: 4px; }"
                                   "QStatusBar::item { border: none; }"
                                   "QToolBar { border: none; padding: 2px 4px; spacing: 2px; }"
                                   "QDockWidget { titlebar-close-icon: none; titlebar-normal-icon: none; }"
                                   "QDockWidget::title { padding: 6px 8px; text-align: left; }";

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

Appearance::Appearance(QApplication& application, Scheme scheme)
    : _application(application), _scheme(scheme), _paletteIsDark(isDark(QApplication::palette())) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    apply();
    for (auto const change : {&QFileSystemWatcher::fileChanged, &QFileSystemWatcher::directoryChanged})
        connect(&_desktop, change, this, [this] {
            watch();
            apply();
        });
    watch();
}

void Appearance::setScheme(Scheme scheme) {
    _scheme = scheme;
    apply();
}

void Appearance::apply() {
    bool const systemIsDark = _paletteIsDark || desktopPrefersDark();
    bool const wantsDark = _scheme == Scheme::Dark || (_scheme == Scheme::System && systemIsDark);
    QPalette const palette = wantsDark ? darkPalette() : lightPalette();
    if (palette == QApplication::palette()) return;
    // A style sheet keeps widgets from taking over another palette, so it is taken off for the change.
    _application.setStyleSheet({});
    QApplication::setPalette(palette);
    _application.setStyleSheet(styleSheet);
}

// The files are replaced when they change, which ends the watch of them, so their folders are watched too.
void Appearance::watch() {
    for (QString const& path : desktopSettings())
        for (QString const& watched : {path, QFileInfo(path).path()})
            if (QFileInfo::exists(watched)) _desktop.addPath(watched);
}

} // namespace compositor::window
