#include "script/interpreter.h"

#include "base/evEventManager.h"
#include "framework/command/cmUndoGuard.h"
#include "host/protocols.h"

#include <limits>
#include <memory>
#include <utility>

namespace compositor {

namespace {

void addFlattened(Editor& editor, Jobs& jobs, std::string const& place, std::string const& name, Picture& picture) {
    try {
        editor.addLayer(name, std::move(picture));
    } catch (std::exception const& error) {
        jobs.showFailure(place, error.what());
    }
}

std::string numbered(std::string text, int frame) {
    if (auto const place = text.find("%d"); place != std::string::npos) text.replace(place, 2, std::to_string(frame));
    return text;
}

} // namespace

// The job saves a copy of the document, which is what the mark stands for.
void Interpreter::save(Statement const& statement) {
    auto protocol = makeSaveProtocol(_editor.document(), statement.words[1]);
    int const number = _editor.beginSave();
    _jobs.submit(placeOf(statement), std::move(protocol), [&editor = _editor, number](bool isComplete) {
        if (!isComplete) editor.saveHasFailed(number);
    });
}

// The event may be processed during a drag or inside a group: the new layer is not a part of that step, and comes after it.
void Interpreter::flatten(Statement const& statement) {
    auto const add = [&editor = _editor, &jobs = _jobs, place = placeOf(statement), name = statement.words[1]](
                         std::shared_ptr<Picture> const& picture) {
        Ko::CmUndoGuard::callOutside([=, &editor, &jobs] { addFlattened(editor, jobs, place, name, *picture); });
    };
    submit(statement, makeFlattenProtocol(_editor.document(), [add](Picture rendered) {
        auto const picture = std::make_shared<Picture>(std::move(rendered));
        Ko::EvEventManager::getInstance().postRequest([add, picture] { add(picture); });
    }));
}

void Interpreter::after(Statement const& statement) {
    Statement const inner{statement.line, {statement.words.begin() + 2, statement.words.end()}};
    _jobs.startNextAfter(statement.integer(1, 1, std::numeric_limits<int>::max()));
    try {
        runStatement(inner);
    } catch (...) {
        _jobs.forgetOrder();
        throw;
    }
    if (_jobs.forgetOrder()) throw InputError(quoted(inner.word()) + " starts no job");
}

// Each frame waits for the one before it, so that a long sequence leaves the other workers free.
void Interpreter::frames(Statement const& statement) {
    auto const& words = statement.words;
    constexpr int last = 1000000;
    int const from = statement.integer(3, 0, last);
    int const to = statement.integer(4, from, last);
    Statement const arguments{statement.line, {words.begin() + 5, words.end()}};
    for (int frame = from; frame <= to; ++frame) {
        submit(statement, makeFrameProtocol(numbered(words[1], frame), numbered(words[2], frame), arguments));
        if (frame < to) _jobs.startNextAfter(_jobs.lastNumber());
    }
}

void Interpreter::runProgram(Statement const& statement) {
    auto const& words = statement.words;
    submit(statement, makeRunProtocol(words[1], {words.begin() + 2, words.end()}, _jobs.nextJobsLines()));
}

void Interpreter::exportPicture(Statement const& statement) {
    auto const& words = statement.words;
    submit(statement, makeExportProtocol(_editor.document(), words[1], words[2], _jobs.nextJobsLines()));
}

} // namespace compositor
