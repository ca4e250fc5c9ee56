#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

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
    explicit MsgSubscription(LiString id);

    LiString const& getId() const noexcept { return _id; }
    LiString format(Vector<LiString> const& substitutions = {}) const;

private:
    LiString _id;
};

} // namespace Ko
