#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <functional>
#include <map>
#include <mutex>

namespace Ko {

/// The texts of messages for users, by identifier. Any thread.
///
/// They come from catalogues: files in `messages/` of the installation directory, UTF-8, with one message a line and
/// comments after `#`:
///
///     MSG_PLUG_IN_MISSING "The plug-in %1 was not found in %2."
///
/// In a text, `\"`, `\\` and `\n` stand for a quotation mark, a backslash and a line break, `%1` to `%9` for the
/// substitutions, and `%%` for a percent sign.
class KO_RESMGT_API MsgServer {
public:
    /// The server of the process, which is never destroyed.
    [[nodiscard]] static MsgServer& getInstance();

    /// Keeps the message's text from the catalogues that are open now; from the one opened last if several have it.
    void subscribe(LiString const& id);

    /// The text of a message. If its catalogue or the message is missing, the identifier and the substitutions: "MSG_X:
    /// first, second".
    [[nodiscard]] LiString format(LiString const& id, Vector<LiString> const& substitutions = {}) const;

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

/// Keeps a catalogue open for the length of a scope. A catalogue that does not exist is empty; a line that cannot be
/// understood is reported in the log, with its place, and skipped.
class KO_RESMGT_API MsgFileGuard {
public:
    /// @param catalogue the file's name, such as "bgTask.msg".
    [[nodiscard]] explicit MsgFileGuard(LiString const& catalogue)
        : _catalogue(MsgServer::getInstance().open(catalogue)) {}
    ~MsgFileGuard() { MsgServer::getInstance().close(_catalogue); }
    MsgFileGuard(MsgFileGuard const&) = delete;
    MsgFileGuard& operator=(MsgFileGuard const&) = delete;

private:
    MsgServer::OpenCatalogue _catalogue;
};

/// One message, subscribed on construction, while its catalogue is open.
class KO_RESMGT_API MsgSubscription {
public:
    /// Subscribes the message, as `MsgServer::subscribe`.
    explicit MsgSubscription(LiString id);

    /// The message's identifier.
    [[nodiscard]] LiString const& getId() const noexcept { return _id; }
    /// The text of the message, as `MsgServer::format`.
    [[nodiscard]] LiString format(Vector<LiString> const& substitutions = {}) const;

private:
    LiString _id;
};

/// A message for the user.
class KO_RESMGT_API Msg {
public:
    /// After a warning the program goes on; an error says that what the user asked for was not done.
    enum class Severity { Warning, Error };

    /// How serious the message is.
    [[nodiscard]] Severity getSeverity() const noexcept { return _severity; }
    /// The text as the user reads it.
    [[nodiscard]] LiString const& getText() const noexcept { return _text; }

protected:
    /// @param text as the user reads it.
    Msg(Severity severity, LiString text) : _severity(severity), _text(std::move(text)) {}

private:
    Severity _severity;
    LiString _text;
};

/// Something failed, and the program goes on without it.
class KO_RESMGT_API MsgWarning : public Msg {
public:
    /// @param text as the user reads it.
    explicit MsgWarning(LiString text) : Msg(Severity::Warning, std::move(text)) {}
};

/// What the user asked for was not done.
class KO_RESMGT_API MsgError : public Msg {
public:
    /// @param text as the user reads it.
    explicit MsgError(LiString text) : Msg(Severity::Error, std::move(text)) {}
};

/// Shows messages to the user: by default as a line on standard error, "error: text" or "warning: text". A host may set a
/// handler that shows a dialog, for example. Any thread.
class KO_RESMGT_API MsgProtocol {
public:
    /// Shows a message to the user.
    using Handler = std::function<void(Msg const&)>;

    /// Calls the handler with the message, in this thread and without a lock, so that a handler may display further
    /// messages. Its exceptions are written to the log.
    static void display(Msg const& message) noexcept;
    /// Replaces the handler. The one before may still be running in another thread.
    /// @param handler may be called by several threads at once; an empty one stands for the line on standard error.
    static void setHandler(Handler handler);
};

} // namespace Ko
