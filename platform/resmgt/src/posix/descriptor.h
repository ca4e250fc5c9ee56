#pragma once

#include <utility>

namespace Ko {

/// Owns a file descriptor. Started programs do not inherit it.
class Descriptor {
public:
    Descriptor() noexcept = default;
    /// @param number -1 for none.
    explicit Descriptor(int number) noexcept : _number(number) {}
    Descriptor(Descriptor&& other) noexcept : _number(std::exchange(other._number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        reset(std::exchange(other._number, -1));
        return *this;
    }
    ~Descriptor() { reset(); }

    bool isOpen() const noexcept { return _number >= 0; }
    int get() const noexcept { return _number; }
    void reset(int number = -1) noexcept;

    /// The same open file under a number above those of the standard streams, which a host may have closed.
    static Descriptor aboveStandard(int number) noexcept;

private:
    int _number = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    /// @returns a pipe without ends when the system fails; `errno` says why.
    static Pipe create() noexcept;
    bool isOpen() const noexcept { return readEnd.isOpen() && writeEnd.isOpen(); }
};

} // namespace Ko
