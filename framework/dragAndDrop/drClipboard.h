#pragma once

#include "framework/dragAndDrop/drCarrier.h"
#include "resmgt/lkSingleton.h"

#include <cstdint>

namespace Ko {

class DrClipboard;
extern template class KO_FRAMEWORK_API LkSingleton<DrClipboard>;

/// The application's own clipboard for items: the carrier of the last copy or cut. It is not that of the operating system.
///
/// It is created on first use and lasts until the process ends; it is emptied when the framework is finalised.
/// Application thread only.
class KO_FRAMEWORK_API DrClipboard {
public:
    /// How the content got there. Applications may use further values.
    enum SrcAction : std::int32_t { None = 0, Copy = 1, Cut = 2 };

    DrClipboard(DrClipboard const&) = delete;
    DrClipboard& operator=(DrClipboard const&) = delete;

    /// Creates the clipboard on first use.
    static DrClipboard& getInstance();
    /// Whether it exists; does not create it.
    static bool isInitialized() noexcept;

    /// Shares the carrier from now on. A carrier without items changes nothing: an empty copy does not wipe the clipboard.
    /// @throws ExNullPtr for a null carrier and for one without a selection.
    void setContent(RCShdPtr<DrCarrier> const& carrier, SrcAction action);
    /// Never null: an empty clipboard is a carrier with an empty selection.
    RCShdPtr<DrCarrier> getContent() const;
    /// `None` while nothing was set, or since it was cleared.
    SrcAction getSrcAction() const noexcept { return _srcAction; }
    /// Puts an empty carrier in place of the content.
    void clear();

protected:
    DrClipboard();
    ~DrClipboard();

private:
    friend class LkSingleton<DrClipboard>;

    void reset();

    RCShdPtr<DrCarrier> _content;
    SrcAction _srcAction = None;
};

} // namespace Ko
