#pragma once

#include "internalAPI/snItem.h"
#include "primitives/gePoint2.h"

#include <cstdint>
#include <initializer_list>

namespace Ko {

/// What a drop does with the carried items.
enum class DrEffect : std::uint8_t {
    /// Nothing: the drop is refused.
    None = 0,
    /// The target gets copies.
    Copy = 1,
    /// The items move to the target.
    Move = 2,
    /// The target refers to the items.
    Link = 4
};

/// A set of effects. A value.
class DrEffects {
public:
    /// The effects of the set; `None` is in no set.
    constexpr DrEffects(std::initializer_list<DrEffect> effects) noexcept {
        for (DrEffect const effect : effects)
            _bits = static_cast<std::uint8_t>(_bits | static_cast<std::uint8_t>(effect));
    }
    /// Copy, move and link.
    [[nodiscard]] static constexpr DrEffects all() noexcept { return {DrEffect::Copy, DrEffect::Move, DrEffect::Link}; }
    /// Whether an effect is in the set.
    [[nodiscard]] constexpr bool contains(DrEffect effect) const noexcept {
        return (_bits & static_cast<std::uint8_t>(effect)) != 0;
    }

private:
    std::uint8_t _bits = 0;
};

/// The place in a sink where carried items would be dropped.
struct DrPlace {
    /// Where in respect of the target item.
    enum class Side : std::uint8_t {
        /// On the target.
        On,
        /// Between the target and the item before it, in a list.
        Before,
        /// Between the target and the item after it.
        After
    };

    /// The item under the pointer; null for the free part of the view.
    RCShdPtr<SnItem const> target = {};
    /// Where in respect of the target.
    Side side = Side::On;
    /// The point, in the coordinates of the sink.
    GePoint2<float> point = {};
};

} // namespace Ko
