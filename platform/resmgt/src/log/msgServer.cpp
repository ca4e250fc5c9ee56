#include "resmgt/msgServer.h"

#include "base/inPaths.h"
#include "base/neverDestroyed.h"
#include "base/utf8Path.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/lgPackageGroup.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

namespace Ko {

namespace {

struct Entry {
    LiString id;
    LiString text;
};

constexpr char const* blanks = " \t\r";

// The text in the quotation marks that `line` begins with; nothing if anything but a comment follows them.
std::optional<LiString> unquoted(LiString const& line) {
    LiString text;
    std::size_t index = 1;
    for (; index < line.size() && line[index] != '"'; ++index) {
        if (line[index] != '\\') {
            text += line[index];
            continue;
        }
        if (++index == line.size()) return std::nullopt;
        text += line[index] == 'n' ? '\n' : line[index];
    }
    if (index >= line.size()) return std::nullopt;
    auto const rest = line.find_first_not_of(blanks, index + 1);
    return rest == LiString::npos || line[rest] == '#' ? std::optional(text) : std::nullopt;
}

std::optional<Entry> parse(LiString const& line) {
    auto const end = line.find_first_of(blanks);
    auto const quote = line.find_first_not_of(blanks, end);
    if (end == LiString::npos || quote == LiString::npos || line[quote] != '"') return std::nullopt;
    std::optional<LiString> text = unquoted(line.substr(quote));
    if (!text) return std::nullopt;
    Entry entry;
    entry.id = line.substr(0, end);
    entry.text = std::move(*text);
    return entry;
}

void report(LiString const& path, int line) {
    LgPackageGroup::write(
        "Messages", 1, path + ":" + std::to_string(line) + ": expected MSG_ID \"text\"; the line is skipped.");
}

LiString substituted(LiString const& text, Vector<LiString> const& substitutions) {
    LiString result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        char const next = text[index] == '%' && index + 1 < text.size() ? text[index + 1] : '\0';
        if (next == '%') {
            result += '%';
            ++index;
        } else if (next >= '1' && next <= '9') {
            auto const number = static_cast<std::size_t>(next - '1');
            result += number < substitutions.size() ? substitutions[number] : LiString();
            ++index;
        } else {
            result += text[index];
        }
    }
    return result;
}

LiString withoutText(LiString const& id, Vector<LiString> const& substitutions) {
    LiString result = id;
    for (std::size_t index = 0; index < substitutions.size(); ++index)
        result += (index == 0 ? ": " : ", ") + substitutions[index];
    return result;
}

void displayOnStandardError(Msg const& message) {
    char const* const severity = message.getSeverity() == Msg::Severity::Error ? "error: " : "warning: ";
    std::cerr << severity + message.getText() + '\n' << std::flush;
}

// Never destroyed: messages may be displayed until the process has ended.
struct DisplayHandler {
    std::mutex mutex;
    std::shared_ptr<MsgProtocol::Handler const> handler;
};

DisplayHandler& displayHandler() {
    static NeverDestroyed<DisplayHandler> current;
    return *current;
}

std::shared_ptr<MsgProtocol::Handler const> currentHandler() {
    std::lock_guard const guard(displayHandler().mutex);
    return displayHandler().handler;
}

} // namespace

MsgServer& MsgServer::getInstance() {
    static NeverDestroyed<MsgServer> server;
    return *server;
}

MsgServer::OpenCatalogue MsgServer::open(LiString const& catalogue) {
    LiString const path = InPaths::getInstallDir() + "/messages/" + catalogue;
    Texts texts;
    std::ifstream file(toPath(path));
    LiString line;
    for (int number = 1; std::getline(file, line); ++number) {
        auto const begin = line.find_first_not_of(blanks);
        if (begin == LiString::npos || line[begin] == '#') continue;
        if (std::optional<Entry> const entry = parse(line.substr(begin)))
            texts[entry->id] = entry->text;
        else
            report(path, number);
    }
    std::lock_guard const guard(_mutex);
    return _openCatalogues.insert(_openCatalogues.end(), std::move(texts));
}

void MsgServer::close(OpenCatalogue catalogue) {
    std::lock_guard const guard(_mutex);
    _openCatalogues.erase(catalogue);
}

void MsgServer::subscribe(LiString const& id) {
    std::lock_guard const guard(_mutex);
    for (auto catalogue = _openCatalogues.rbegin(); catalogue != _openCatalogues.rend(); ++catalogue)
        if (auto const text = catalogue->find(id); text != catalogue->end()) {
            _subscribed[id] = text->second;
            return;
        }
}

LiString MsgServer::format(LiString const& id, Vector<LiString> const& substitutions) const {
    std::lock_guard const guard(_mutex);
    auto const text = _subscribed.find(id);
    return text == _subscribed.end() ? withoutText(id, substitutions) : substituted(text->second, substitutions);
}

MsgSubscription::MsgSubscription(LiString id) : _id(std::move(id)) {
    MsgServer::getInstance().subscribe(_id);
}

LiString MsgSubscription::format(Vector<LiString> const& substitutions) const {
    return MsgServer::getInstance().format(_id, substitutions);
}

void MsgProtocol::display(Msg const& message) noexcept {
    LgFirstError error("Displaying a message");
    error.capture([&] {
        auto const handler = currentHandler();
        handler ? (*handler)(message) : displayOnStandardError(message);
    });
    error.log();
}

void MsgProtocol::setHandler(Handler handler) {
    auto replacement = handler ? std::make_shared<Handler const>(std::move(handler)) : nullptr;
    std::lock_guard const guard(displayHandler().mutex);
    displayHandler().handler.swap(replacement);
}

} // namespace Ko
