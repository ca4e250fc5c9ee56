#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/snItem.h"

namespace Ko {

/// The items that stand for no target and no input. They exist while the package "actions" is initialised.
class ActNoItems {
public:
    static void initialize();
    static void finalize();

    static RCShdPtr<SnItem const> const& target() noexcept { return _target; }
    static RCShdPtr<SnItem const> const& input() noexcept { return _input; }

    /// A new such item.
    static RCShdPtr<SnItem const> create();

private:
    static RCShdPtr<SnItem const> _target;
    static RCShdPtr<SnItem const> _input;
};

} // namespace Ko
