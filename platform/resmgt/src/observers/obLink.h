#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/obChangeManager.h"

#include <cstdint>

namespace Ko {

/// The attachment of one observer to one subject, in the lists of both.
///
/// While a notification of the subject is inside the observer, the link stays in the list of the subject, also when it is
/// detached: the notification goes on from there. A detached link is freed by its last user.
struct ObLink {
    ObSubjectLinks* subject;   // null after its end
    ObObserverLinks* observer; // null after its end
    std::uint64_t number;      // grows in the order of attachment
    ObLink* previousOfSubject = nullptr;
    ObLink* nextOfSubject = nullptr;
    ObLink* previousOfObserver = nullptr;
    ObLink* nextOfObserver = nullptr;
    // How many notifications are inside the observer, how many threads wait for them, and whether notifications skip the
    // link. Guarded by the lock of the subject; after the end of the subject, by the lock of the manager.
    int running = 0;
    int waiting = 0;
    bool isDetached = false;
    // Keeps the observer for as long as the link exists. Null for an observer that waits for the end of its updates.
    RCShdPtr<RCBase> owner{};
};

} // namespace Ko
