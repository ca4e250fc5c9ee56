#pragma once

#include <ostream>

namespace Ko {

/// A point of the plane, or the way from one point to another.
template <class T>
class GePoint2 {
public:
    /// The origin.
    constexpr GePoint2() noexcept = default;
    constexpr GePoint2(T x, T y) noexcept : _x(x), _y(y) {}

    /// In the unit of the one who made the point:
    constexpr T getX() const noexcept { return _x; }
    constexpr T getY() const noexcept { return _y; }

    /// Coordinate by coordinate:
    constexpr GePoint2& operator+=(GePoint2 const& other) noexcept {
        _x += other._x;
        _y += other._y;
        return *this;
    }
    constexpr GePoint2& operator-=(GePoint2 const& other) noexcept {
        _x -= other._x;
        _y -= other._y;
        return *this;
    }

    /// Coordinate by coordinate; shown as "(x, y)":
    friend constexpr GePoint2 operator+(GePoint2 a, GePoint2 const& b) noexcept { return a += b; }
    friend constexpr GePoint2 operator-(GePoint2 a, GePoint2 const& b) noexcept { return a -= b; }
    friend constexpr bool operator==(GePoint2 const&, GePoint2 const&) noexcept = default;
    friend std::ostream& operator<<(std::ostream& stream, GePoint2 const& point) {
        return stream << '(' << point._x << ", " << point._y << ')';
    }

private:
    T _x = T();
    T _y = T();
};

} // namespace Ko
