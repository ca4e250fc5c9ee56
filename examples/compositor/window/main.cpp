#include "base/inInitMgr.h"
#include "framework/command/cmCommandStackGuard.h"
#include "host/actions.h"
#include "host/plugIns.h"
#include "window/appearance.h"
#include "window/mainWindow.h"
#include "window/measure.h"

#include <QApplication>
#include <QCommandLineParser>
#include <algorithm>
#include <iostream>
#include <optional>
#include <sstream>

namespace {

using namespace compositor::window;

struct Options {
    std::optional<Scheme> scheme = {};
    bool measures = false;
    QString file;
    std::chrono::milliseconds pause{};
    bool quits = false;
};

Options parse(QApplication const& application) {
    QCommandLineParser parser;
    parser.addHelpOption();
    QCommandLineOption const scheme("scheme", "Light or dark colours; those chosen last by default.", "light|dark");
    QCommandLineOption const measure("measure", "Measure the frames of drags in a large document.");
    QCommandLineOption const pause("pause", "Milliseconds before each statement of a script.", "ms", "250");
    QCommandLineOption const quit("quit", "Quit at the end of the script.");
    parser.addOptions({scheme, measure, pause, quit});
    parser.addPositionalArgument("file", "A document, a picture, or a script that is played.", "[FILE]");
    parser.process(application);
    QString const wanted = parser.value(scheme);
    return {wanted == "dark"    ? std::optional(Scheme::Dark)
            : wanted == "light" ? std::optional(Scheme::Light)
                                : std::nullopt,
        parser.isSet(measure), parser.positionalArguments().value(0),
        std::chrono::milliseconds(parser.value(pause).toInt()), parser.isSet(quit)};
}

int run(QApplication& application) {
    Options const options = parse(application);
    std::ostringstream faults;
    compositor::EditActions const actions;
    compositor::PlugIns const plugIns(faults);
    compositor::Editor editor;
    Ko::CmCommandStackGuard const active(editor.history());
    Ko::QtEventLoop events;
    QSettings settings;
    auto const remembered = static_cast<Scheme>(std::clamp(settings.value("colours").toInt(), 0, 2));
    Appearance appearance(application, options.scheme.value_or(remembered));
    int result = 0;
    {
        MainWindow window(editor, events, settings, Recovery::defaultFolder());
        for (QString const& line : QString::fromStdString(faults.str()).split('\n', Qt::SkipEmptyParts))
            window.messages().add(Ko::Msg::Severity::Warning, line);
        window.offerColours(appearance);
        window.show();
        if (options.measures) {
            measureDrags(window, std::cout);
            return 0;
        }
        bool const isRecovered = window.offerRecovery();
        if (options.file.endsWith(".kos"))
            result = window.play(options.file, options.pause) ? 0 : 1;
        else if (!options.file.isEmpty() && !isRecovered)
            window.files().open(options.file);
        if (!options.quits) result = QApplication::exec();
    }
    events.processWaiting();
    return result;
}

} // namespace

int main(int argc, char** argv) {
    try {
        Ko::InInitScope const scope(argc, argv);
        QApplication application(argc, argv);
        QApplication::setOrganizationName("KOframework");
        QApplication::setApplicationName("compositor");
        QApplication::setApplicationDisplayName("Compositor");
        return run(application);
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
