#pragma once

#include "framework/command/cmCommandStackGuard.h"
#include "host/actions.h"
#include "host/plugIns.h"
#include "tests/support/temporaryFolder.h"
#include "window/mainWindow.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSettings>
#include <QTest>
#include <gtest/gtest.h>
#include <sstream>

namespace KoTest {

/// Runs the loop of the application until a condition holds.
template <class Condition>
void waitUntil(Condition condition) {
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// A window with a small document that is shown at its size.
class WindowTest : public testing::Test {
protected:
    WindowTest() {
        editor.setCanvas({300, 200});
        for (char const* const name : {"back", "front"})
            editor.addLayer(name, compositor::Picture({80, 60}));
        for (auto const& layer : std::vector(editor.document().layers()))
            paint(layer.id,
                layer.name == "back" ? compositor::Colour{200, 0, 0, 255} : compositor::Colour{0, 0, 200, 128});
        editor.moveLayer(id("front"), 150, 100);
        editor.history()->clear();
        editor.history()->setClean();
        window.show();
        window.canvas().zoomTo(1.0);
        waitUntil([this] { return window.canvas().isCurrent(); });
    }
    void TearDown() override {
        waitUntil([this] { return window.canvas().isCurrent(); });
    }

    void paint(compositor::LayerId layer, compositor::Colour colour) {
        compositor::Picture picture({80, 60});
        for (int y = 0; y < 60; ++y)
            std::ranges::fill(picture.row(y), colour);
        editor.setPicture(layer, std::move(picture), "Paint");
    }
    compositor::LayerId id(std::string const& name) const { return editor.document().layer(name).id; }
    QPoint placeOf(std::string const& name) const {
        auto const& placed = editor.document().layer(name).placed;
        return {placed.x, placed.y};
    }
    int steps() const { return editor.history()->getNbUndoableCommands(); }
    /// A point of the canvas on the widget.
    QPoint at(int x, int y) { return window.canvas().placeOf({x + 0.5, y + 0.5}).toPoint(); }
    void press(QPoint place) { QTest::mousePress(&window.canvas(), Qt::LeftButton, {}, place); }
    void move(QPoint place) {
        QMouseEvent event(QEvent::MouseMove, QPointF(place), window.canvas().mapToGlobal(QPointF(place)), Qt::NoButton,
            Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window.canvas(), &event);
    }
    void release(QPoint place) { QTest::mouseRelease(&window.canvas(), Qt::LeftButton, {}, place); }
    void key(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&window.canvas(), static_cast<Qt::Key>(key), modifiers);
    }
    /// What the canvas shows when it is complete, at a point of the document.
    QColor shownAt(int x, int y) {
        waitUntil([this] { return window.canvas().isCurrent(); });
        return window.canvas().grab().toImage().pixelColor(at(x, y));
    }

    TemporaryFolder folder;
    std::ostringstream faults;
    compositor::EditActions const actions;
    compositor::PlugIns const plugIns{faults};
    compositor::Editor editor;
    std::unique_ptr<Ko::CmCommandStackGuard> const active = std::make_unique<Ko::CmCommandStackGuard>(editor.history());
    Ko::QtEventLoop events;
    QSettings settings{QString::fromStdString((folder / "settings.ini").string()), QSettings::IniFormat};
    compositor::window::MainWindow window{
        editor, events, settings, QString::fromStdString((folder / "recovery").string())};
};

} // namespace KoTest
