#include "host/protocols.h"

#include "document/documentFile.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgProcess.h"
#include "image/atomicFile.h"
#include "image/inputFile.h"
#include "image/pngFile.h"
#include "plugIns/operators.h"
#include "text/commandLine.h"
#include "text/statement.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>

namespace compositor {

namespace {

/// A job that works on a copy of the document.
class DocumentProtocol final : public Ko::BgJobProtocol {
public:
    using Work = std::function<void(Progress const& progress)>;

    /// @param unit what the progress counts; empty for something that says nothing to the user.
    DocumentProtocol(std::string const& type, std::string const& name, std::string unit, Work work)
        : BgJobProtocol(name.empty() ? type : type + " " + name, type), _unit(std::move(unit)), _work(std::move(work)) {
    }

    void execute() override {
        try {
            _work([this](int done, int total) {
                _unit.empty() ? reportProgress(done, total) : reportUnits(done, total, _unit);
                return continueExecution();
            });
        } catch (std::exception const& error) {
            throw Ko::BgEx::ExBgTaskFailed("compositor/host/protocols.cpp", __LINE__, error.what());
        }
    }

private:
    std::string _unit;
    Work _work;
};

/// A job that changes one picture of a sequence.
class FrameProtocol final : public Ko::BgJobProtocol {
public:
    FrameProtocol(std::filesystem::path source, std::filesystem::path target, Statement input, Operator apply)
        : BgJobProtocol("frame " + target.filename().string(), "frame"), _source(std::move(source)),
          _target(std::move(target)), _input(std::move(input)), _apply(apply) {}

    void execute() override try {
        begin("reading", 0);
        InputFile file(_source);
        Picture picture = readPng(file.stream, file.length);
        if (!continueExecution()) return;
        begin(_input.word(), 1);
        picture = _apply(picture, _input);
        begin("writing", 2);
        auto const row = [&](int y, std::span<Colour> pixels) {
            std::ranges::copy(picture.row(y), pixels.begin());
            return continueExecution();
        };
        if (writePng(_target, picture.size(), row)) reportProgress(steps, steps);
    } catch (std::exception const& error) {
        throw Ko::BgEx::ExBgTaskFailed(
            "compositor/host/protocols.cpp", __LINE__, _source.string() + ": " + error.what());
    }

private:
    static constexpr int steps = 3;

    void begin(std::string const& phase, int done) const {
        reportPhase(phase);
        reportProgress(done, steps);
    }

    std::filesystem::path _source;
    std::filesystem::path _target;
    Statement _input;
    Operator _apply;
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
                throw InputError("\"" + entry + "\" does not define a variable; write NAME=VALUE");
            addEnvironmentVariable(entry.substr(0, separator), entry.substr(separator + 1));
        }
        gatherLines(std::chrono::milliseconds(50));
    }

protected:
    void processOutputStrings(Ko::Vector<std::string> const& lines) override { _sink(lines); }
    void processErrorStrings(Ko::Vector<std::string> const& lines) override { _sink(lines); }

private:
    LineSink _sink;
};

/// Renders the document and runs a program with the picture.
class ExportProtocol : public ProgramProtocol {
public:
    ExportProtocol(Renderer renderer, std::filesystem::path const& path, std::string const& commandLine, LineSink sink)
        : ProgramProtocol("export", path.filename().string(), commandLine, {}, std::move(sink)),
          _renderer(std::move(renderer)) {}

    void execute() override {
        if (render()) ProgramProtocol::execute();
    }

protected:
    virtual bool render(Renderer const& renderer, Progress const& progress) = 0;

private:
    // Counts as half of the work, since the duration of the program is unknown.
    bool render() try {
        return render(_renderer, [this](int done, int total) {
            reportProgress(done, 2 * total);
            return continueExecution();
        });
    } catch (std::exception const& error) {
        throw Ko::BgEx::ExBgTaskFailed("compositor/host/protocols.cpp", __LINE__, error.what());
    }

    Renderer _renderer;
};

/// Renders a temporary picture, runs a program with it, and removes it.
class ExportFileProtocol final : public ExportProtocol {
public:
    ExportFileProtocol(Renderer renderer, std::filesystem::path const& path, std::filesystem::path picture,
        std::string const& commandLine, LineSink sink)
        : ExportProtocol(std::move(renderer), path, commandLine, std::move(sink)), _picture(std::move(picture)) {}

    void execute() override {
        struct Removal {
            std::filesystem::path const& path;
            ~Removal() {
                std::error_code ignored;
                std::filesystem::remove(path, ignored);
            }
        } const removal{_picture};
        ExportProtocol::execute();
    }

protected:
    bool render(Renderer const& renderer, Progress const& progress) override {
        return renderer.renderToFile(_picture, progress);
    }

private:
    std::filesystem::path _picture;
};

/// Feeds the picture to the program through its standard input, as fast as the program reads it.
class ExportInputProtocol final : public ExportProtocol {
public:
    using ExportProtocol::ExportProtocol;

protected:
    bool render(Renderer const& renderer, Progress const& progress) override {
        std::optional<Picture> const picture = renderer.renderToPicture(progress);
        if (!picture) return false;
        writePng(*picture, [this](std::span<std::byte const> bytes) {
            _file.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
        });
        _rest = _file;
        return true;
    }
    void provideInput() override {
        _rest.remove_prefix(write(_rest));
        if (_rest.empty()) closeInput();
    }

private:
    std::string _file;
    std::string_view _rest;
};

} // namespace

Ko::OPtr<Ko::BgJobProtocol> makeRenderProtocol(Document const& document, std::filesystem::path const& path) {
    return std::make_unique<DocumentProtocol>("render", path.filename().string(), "tiles",
        [renderer = document.renderer(), path](Progress const& progress) { renderer.renderToFile(path, progress); });
}

Ko::OPtr<Ko::BgJobProtocol> makeFlattenProtocol(Document const& document, PictureSink sink) {
    return std::make_unique<DocumentProtocol>(
        "flatten", "", "tiles", [renderer = document.renderer(), sink = std::move(sink)](Progress const& progress) {
            if (std::optional<Picture> picture = renderer.renderToPicture(progress)) sink(std::move(*picture));
        });
}

Ko::OPtr<Ko::BgJobProtocol> makeSaveProtocol(Document const& document, std::filesystem::path const& path) {
    return std::make_unique<DocumentProtocol>("save", path.filename().string(), "",
        [document, path](Progress const& progress) { saveDocument(document, path, progress); });
}

Ko::OPtr<Ko::BgJobProtocol> makeFrameProtocol(
    std::filesystem::path const& source, std::filesystem::path const& target, Statement const& input) {
    return std::make_unique<FrameProtocol>(source, target, input, operatorOf(input));
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
    if (commandLine.find("%f") == std::string::npos)
        return std::make_unique<ExportInputProtocol>(document.renderer(), path, command, std::move(sink));
    return std::make_unique<ExportFileProtocol>(document.renderer(), path, picture, command, std::move(sink));
}

} // namespace compositor
