#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <functional>
#include <map>
#include <mutex>

namespace Ko {

/// The texts that users read, by message identifier. Any thread.
///
/// They come from catalogues: files in `messages/` of the installation directory, UTF-8, with one message a line and
/// comments after `#`:
///
///     MSG_PLUG_IN_MISSING "The plug-in %1 was not found in %2."
///
/// In a text, `\"`, `\\` and `\n` stand for a quotation mark, a backslash and a line break, `%1` to `%9` for what is
/// substituted, and `%%` for a percent sign.
class KO_RESMGT_API MsgServer {
public:
    /// The one of the process.
    static MsgServer& getInstance();

    /// Takes the message's text from the catalogues that are open now; from the one opened last if several have it.
    void subscribe(LiString const& id);

    /// The text of a message. Where it has none, because its catalogue or the message is missing, the identifier and the
    /// substitutions: "MSG_X: first, second".
    LiString format(LiString const& id, Vector<LiString> const& substitutions = {}) const;

private:
    friend class MsgFileGuard;

    using Texts = std::map<LiString, LiString>;
    using OpenCatalogue = List<Texts>::const_iterator;

    OpenCatalogue open(LiString const& catalogue);
    void close(OpenCatalogue catalogue);

    mutable std::mutex _mutex;
    List<Texts> _openCatalogues;
    Texts _subscribed;
};

/// Holds a catalogue open for the length of a scope. A catalogue that does not exist is an empty one; a line that cannot
/// be read is reported in the log, with its place, and skipped.
class KO_RESMGT_API MsgFileGuard {
public:
    /// @param catalogue the file's name, such as "bgTask.msg".
    explicit MsgFileGuard(LiString const& catalogue) : _catalogue(MsgServer::getInstance().open(catalogue)) {}
    ~MsgFileGuard() { MsgServer::getInstance().close(_catalogue); }
    MsgFileGuard(MsgFileGuard const&) = delete;
    MsgFileGuard& operator=(MsgFileGuard const&) = delete;

private:
    MsgServer::OpenCatalogue _catalogue;
};

/// One message, subscribed when this is built, while its catalogue is open.
class KO_RESMGT_API MsgSubscription {
public:
    /// As `MsgServer::subscribe`.
    explicit MsgSubscription(LiString id);

    /// The message's identifier.
    LiString const& getId() const noexcept { return _id; }
    /// As `MsgServer::format`.
    LiString format(Vector<LiString> const& substitutions = {}) const;

private:
    LiString _id;
};

/// Something that the user is told.
class KO_RESMGT_API Msg {
public:
    /// A warning is about something that the program goes on without.
    enum class Severity { Warning, Error };

    /// As they were given:
    Severity getSeverity() const noexcept { return _severity; }
    LiString const& getText() const noexcept { return _text; }

protected:
    /// @param text as the user reads it.
    Msg(Severity severity, LiString text) : _severity(severity), _text(std::move(text)) {}

private:
    Severity _severity;
    LiString _text;
};

/// Something did not go as it should, and the program goes on without.
class KO_RESMGT_API MsgWarning : public Msg {
public:
    /// @param text as the user reads it.
    explicit MsgWarning(LiString text) : Msg(Severity::Warning, std::move(text)) {}
};

/// What the user wanted was not done.
class KO_RESMGT_API MsgError : public Msg {
public:
    /// @param text as the user reads it.
    explicit MsgError(LiString text) : Msg(Severity::Error, std::move(text)) {}
};

/// How messages reach the user: a line on standard error, "error: text" or "warning: text", until a host sets a handler
/// that shows a dialog, say. Any thread.
class KO_RESMGT_API MsgProtocol {
public:
    /// Shows a message to the user.
    using Handler = std::function<void(Msg const&)>;

    /// Hands the message to the handler, in this thread and without a lock, so that a handler may display further
    /// messages. What it throws is written to the log.
    static void display(Msg const& message) noexcept;
    /// The handler set before may still be running in another thread.
    /// @param handler shows a message, for several threads at once if they display at once; none stands for the line on
    ///   standard error.
    static void setHandler(Handler handler);
};

} // namespace Ko
