#pragma once

#include <ostream>

namespace Ko {

/// A point of the plane, or the vector between two points.
template <class T>
class GePoint2 {
public:
    /// The origin.
    constexpr GePoint2() noexcept = default;
    constexpr GePoint2(T x, T y) noexcept : _x(x), _y(y) {}

    /// The horizontal coordinate, in the unit that the point was made with.
    [[nodiscard]] constexpr T getX() const noexcept { return _x; }
    /// The vertical coordinate, in the unit that the point was made with.
    [[nodiscard]] constexpr T getY() const noexcept { return _y; }

    /// Adds the coordinates of another vector.
    constexpr GePoint2& operator+=(GePoint2 const& other) noexcept {
        _x += other._x;
        _y += other._y;
        return *this;
    }
    /// Subtracts the coordinates of another vector.
    constexpr GePoint2& operator-=(GePoint2 const& other) noexcept {
        _x -= other._x;
        _y -= other._y;
        return *this;
    }

    /// The sum of the coordinates.
    [[nodiscard]] friend constexpr GePoint2 operator+(GePoint2 a, GePoint2 const& b) noexcept { return a += b; }
    /// The difference of the coordinates.
    [[nodiscard]] friend constexpr GePoint2 operator-(GePoint2 a, GePoint2 const& b) noexcept { return a -= b; }
    /// Whether both coordinates are equal.
    [[nodiscard]] friend constexpr bool operator==(GePoint2 const&, GePoint2 const&) noexcept = default;
    /// Writes "(x, y)".
    friend std::ostream& operator<<(std::ostream& stream, GePoint2 const& point) {
        return stream << '(' << point._x << ", " << point._y << ')';
    }

private:
    T _x = T();
    T _y = T();
};

} // namespace Ko
