#include "host/protocols.h"

#include "document/documentFile.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgProcess.h"
#include "image/atomicFile.h"
#include "script/script.h"
#include "text/commandLine.h"

namespace compositor {

namespace {

/// A job that works on a copy of the document.
class DocumentProtocol final : public Ko::BgJobProtocol {
public:
    using Work = std::function<void(Progress const& progress)>;

    DocumentProtocol(std::string const& type, std::string const& name, Work work)
        : BgJobProtocol(name.empty() ? type : type + " " + name, type), _work(std::move(work)) {}

    void execute() override {
        try {
            _work([this](int done, int total) {
                reportProgress(done, total);
                return continueExecution();
            });
        } catch (std::exception const& error) {
            throw Ko::BgEx::ExBgTaskFailed("compositor/host/protocols.cpp", __LINE__, error.what());
        }
    }

private:
    Work _work;
};

/// A job that runs an external program.
class ProgramProtocol : public Ko::BgProcess {
public:
    ProgramProtocol(std::string const& type, std::string const& name, std::string const& commandLine,
        std::vector<std::string> const& environment, LineSink sink)
        : BgProcess(type + " " + name, commandLine, type), _sink(std::move(sink)) {
        for (std::string const& entry : environment) {
            std::size_t const separator = entry.find('=');
            if (separator == std::string::npos || separator == 0)
                throw ScriptError("\"" + entry + "\" does not define a variable; write NAME=VALUE");
            addEnvironmentVariable(entry.substr(0, separator), entry.substr(separator + 1));
        }
    }

protected:
    void processOutputString(std::string const& line) override { _sink(line); }
    void processErrorString(std::string const& line) override { _sink(line); }

private:
    LineSink _sink;
};

/// Renders a temporary picture, runs a program with it, and removes it.
class ExportProtocol final : public ProgramProtocol {
public:
    ExportProtocol(Renderer renderer, std::filesystem::path const& path, std::filesystem::path picture,
        std::string const& commandLine, LineSink sink)
        : ProgramProtocol("export", path.filename().string(), commandLine, {}, std::move(sink)),
          _renderer(std::move(renderer)), _picture(std::move(picture)) {}

    void execute() override {
        struct Removal {
            std::filesystem::path const& path;
            ~Removal() {
                std::error_code ignored;
                std::filesystem::remove(path, ignored);
            }
        } const removal{_picture};
        if (render()) ProgramProtocol::execute();
    }

private:
    // Counts as half of the work, since the duration of the program is unknown.
    bool render() try {
        return _renderer.renderToFile(_picture, [this](int done, int total) {
            reportProgress(done, 2 * total);
            return continueExecution();
        });
    } catch (std::exception const& error) {
        throw Ko::BgEx::ExBgTaskFailed("compositor/host/protocols.cpp", __LINE__, error.what());
    }

    Renderer _renderer;
    std::filesystem::path _picture;
};

} // namespace

Ko::OPtr<Ko::BgJobProtocol> makeRenderProtocol(Document const& document, std::filesystem::path const& path) {
    return std::make_unique<DocumentProtocol>("render", path.filename().string(),
        [renderer = document.renderer(), path](Progress const& progress) { renderer.renderToFile(path, progress); });
}

Ko::OPtr<Ko::BgJobProtocol> makeFlattenProtocol(Document const& document, PictureSink sink) {
    return std::make_unique<DocumentProtocol>(
        "flatten", "", [renderer = document.renderer(), sink = std::move(sink)](Progress const& progress) {
            if (std::optional<Picture> picture = renderer.renderToPicture(progress)) sink(std::move(*picture));
        });
}

Ko::OPtr<Ko::BgJobProtocol> makeSaveProtocol(Document const& document, std::filesystem::path const& path) {
    return std::make_unique<DocumentProtocol>("save", path.filename().string(),
        [document, path](Progress const& progress) { saveDocument(document, path, progress); });
}

Ko::OPtr<Ko::BgJobProtocol> makeRunProtocol(
    std::string const& commandLine, std::vector<std::string> const& environment, LineSink sink) {
    return std::make_unique<ProgramProtocol>(
        "run", commandLine.substr(0, commandLine.find(' ')), commandLine, environment, std::move(sink));
}

Ko::OPtr<Ko::BgJobProtocol> makeExportProtocol(
    Document const& document, std::filesystem::path const& path, std::string const& commandLine, LineSink sink) {
    std::filesystem::path const picture = temporaryPathBeside(path, ".png");
    std::string const command = fillIn(commandLine, {{"%o", path.string()}, {"%f", picture.string()}});
    return std::make_unique<ExportProtocol>(document.renderer(), path, picture, command, std::move(sink));
}

} // namespace compositor
