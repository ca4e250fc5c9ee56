#pragma once

#include "base/oPtr.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "internalAPI/cbChanges.h"
#include "resmgt/lkSingleton.h"

#include <cstdint>
#include <functional>

namespace Ko {

class DrClipboard;
struct DrClipboardChange;
extern template class KO_FRAMEWORK_API LkSingleton<DrClipboard>;

/// The application's own clipboard for items: it holds the carrier of the last copy or cut. It is not the clipboard of the
/// operating system.
///
/// It is created on first use and lives until the process ends; the finalisation of the framework empties it.
/// Application thread only: all operations on the content assert it.
class KO_FRAMEWORK_API DrClipboard {
public:
    /// The command that set the content. Applications may use further values.
    enum SrcAction : std::int32_t { None = 0, Copy = 1, Cut = 2 };

    DrClipboard(DrClipboard const&) = delete;
    DrClipboard& operator=(DrClipboard const&) = delete;

    /// Creates the clipboard on first use.
    [[nodiscard]] static DrClipboard& getInstance();
    /// Whether the clipboard exists; does not create it. Any thread.
    [[nodiscard]] static bool isInitialized() noexcept;

    /// Sets the content, which is shared with the caller. A carrier without items changes nothing: an empty copy does not
    /// wipe the clipboard.
    /// @throws ExNullPtr for a null carrier and for one without a selection.
    void setContent(RCShdPtr<DrCarrier> const& carrier, SrcAction action);
    /// The content; never null: an empty clipboard holds a carrier with an empty selection.
    [[nodiscard]] RCShdPtr<DrCarrier> getContent() const;
    /// The command that set the content; `None` before the first one and after `clear`.
    [[nodiscard]] SrcAction getSrcAction() const;
    /// Replaces the content by an empty carrier.
    void clear();

    /// Calls `callable` after the content was replaced, until the result ends. A change that a callable makes is delivered after the
    /// present one. What it throws is logged. Changes of the carried selection itself are delivered by the selection.
    [[nodiscard]] CbSubscription onChange(std::function<void(DrClipboardChange const&)> callable);

protected:
    DrClipboard();
    ~DrClipboard();

private:
    friend class LkSingleton<DrClipboard>;

    void set(RCShdPtr<DrCarrier> const& content, SrcAction action);

    RCShdPtr<DrCarrier> _content;
    SrcAction _srcAction = None;
    // Null before the first subscription.
    OPtr<CbChanges<DrClipboardChange>> _changes;
};

/// A content of the clipboard has taken the place of another one.
struct DrClipboardChange {
    /// What the clipboard holds now; an empty carrier after `clear`.
    RCShdPtr<DrCarrier> content;
    /// The command that has set it.
    DrClipboard::SrcAction srcAction = DrClipboard::None;
    /// What it held before.
    RCShdPtr<DrCarrier> contentBefore;
    /// The command that had set that.
    DrClipboard::SrcAction srcActionBefore = DrClipboard::None;
};
extern template class KO_FRAMEWORK_API CbDispatcher<DrClipboardChange>;
extern template class KO_FRAMEWORK_API CbChanges<DrClipboardChange>;

} // namespace Ko
