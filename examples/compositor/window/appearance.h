#pragma once

#include <QApplication>
#include <QFileSystemWatcher>
#include <QObject>

namespace compositor::window {

/// Light or dark colours.
enum class Scheme { System, Light, Dark };

/// Gives all windows the same style, in light or dark colours, which may change while they are shown. `System` follows the palette of the
/// desktop's theme and, where that has none, the settings for dark themes that desktops share. One object at a time.
class Appearance : public QObject {
public:
    Appearance(QApplication& application, Scheme scheme);

    [[nodiscard]] Scheme scheme() const { return _scheme; }
    void setScheme(Scheme scheme);

private:
    void apply();
    void watch();

    QApplication& _application;
    Scheme _scheme;
    // That of the theme, before it was replaced.
    bool const _paletteIsDark;
    QFileSystemWatcher _desktop;
};

} // namespace compositor::window
