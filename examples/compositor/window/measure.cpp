#include "window/measure.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>

namespace compositor::window {

namespace {

constexpr int side = 4096;
constexpr int numLayers = 8;
constexpr int numFrames = 120;

// A disc with soft edges on a weak pattern: neither opaque nor empty anywhere.
Picture paintLayer(int number) {
    Picture picture({side, side});
    for (int y = 0; y < side; ++y) {
        auto const row = picture.row(y);
        for (int x = 0; x < side; ++x) {
            double const distance = std::hypot(x - side / 2, y - side / 2) / side;
            auto const shade = static_cast<std::uint8_t>((x * (number + 1) / 16 + y / (number + 2)) & 0xFF);
            row[static_cast<std::size_t>(x)] = {shade, static_cast<std::uint8_t>(255 - shade),
                static_cast<std::uint8_t>(number * 30),
                static_cast<std::uint8_t>(std::clamp(255 - 300 * distance, 40.0, 255.0))};
        }
    }
    return picture;
}

Picture withHole(Picture picture) {
    for (int y = side / 2 - 2; y < side / 2 + 2; ++y)
        std::ranges::fill(picture.row(y), Colour{0, 0, 0, 0});
    return picture;
}

void fill(Editor& editor) {
    editor.setCanvas({side, side});
    constexpr BlendMode modes[] = {BlendMode::Over, BlendMode::Multiply, BlendMode::Screen, BlendMode::Add};
    for (int number = 0; number < numLayers; ++number) {
        editor.addLayer("layer " + std::to_string(number), paintLayer(number));
        LayerId const id = editor.document().layers().back().id;
        editor.setBlend(id, modes[number % 4]);
        editor.setOpacity(id, 0.9f);
    }
}

void waitUntilCurrent(Canvas const& canvas) {
    while (!canvas.isCurrent())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QApplication::processEvents();
}

void send(Canvas& canvas, QEvent::Type type, QPointF place) {
    bool const isMove = type == QEvent::MouseMove;
    QMouseEvent event(type, place, canvas.mapToGlobal(place), isMove ? Qt::NoButton : Qt::LeftButton,
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&canvas, &event);
}

// Moves the pointer in a circle, once for each painted frame.
std::vector<double> drag(Canvas& canvas, QPointF from) {
    std::vector<double> times;
    bool isPainted = false;
    auto const painted = QObject::connect(&canvas, &Canvas::framePainted, &canvas, [&] { isPainted = true; });
    send(canvas, QEvent::MouseButtonPress, from);
    QElapsedTimer timer;
    for (int frame = 0; frame < numFrames; ++frame) {
        double const angle = 2 * M_PI * frame / numFrames;
        timer.start();
        send(canvas, QEvent::MouseMove, from + QPointF(std::cos(angle), std::sin(angle)) * 100);
        isPainted = false;
        do
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        while (!isPainted);
        times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    send(canvas, QEvent::MouseButtonRelease, from);
    QObject::disconnect(painted);
    waitUntilCurrent(canvas);
    return times;
}

void write(std::ostream& output, std::string const& name, std::vector<double> times) {
    std::ranges::sort(times);
    auto const at = [&](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    output << std::fixed << std::setprecision(1) << std::left << std::setw(36) << name << std::right << "  median "
           << std::setw(5) << at(0.5) << " ms  95% " << std::setw(5) << at(0.95) << " ms  longest " << std::setw(5)
           << at(1.0) << " ms  " << std::setw(5) << 1000 / at(0.5) << " frames/s" << std::endl;
}

} // namespace

void measureDrags(MainWindow& window, std::ostream& output) {
    Canvas& canvas = window.canvas();
    Session& session = window.session();
    fill(session.editor());
    canvas.fit();
    QElapsedTimer timer;
    timer.start();
    waitUntilCurrent(canvas);
    output << numLayers << " layers of " << side << " x " << side << " on a canvas of " << canvas.width() << " x "
           << canvas.height() << " points, zoom " << canvas.zoom() << "; first frame after " << timer.elapsed() << " ms"
           << std::endl;
    QPointF const middle = QRectF(canvas.rect()).center();
    auto const measure = [&](std::string const& view) {
        std::vector<double> const times = drag(canvas, middle);
        write(output, session.editor().history()->getUndoText() + ", " + view, times);
    };
    measure("all of the canvas");
    canvas.zoomTo(1.0);
    waitUntilCurrent(canvas);
    measure("actual size");
    canvas.fit();
    session.attempt([&] {
        // In the middle of the canvas, there is a hole in all layers but the lowest.
        session.editor().moveLayer(session.document().layer("layer 7").id, 0, 0);
        for (Layer const& layer : std::vector<Layer>(session.document().layers()))
            if (layer.name == "layer 0")
                session.editor().moveLayer(layer.id, 0, 0);
            else
                session.editor().setPicture(layer.id, withHole(*layer.placed.picture), "Hole");
    });
    waitUntilCurrent(canvas);
    measure("all of the canvas");
}

} // namespace compositor::window
