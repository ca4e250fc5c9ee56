#pragma once

#include <utility>

namespace Ko {

/// Owns an open file of the system. Not handed on to programs that are started.
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

    /// The same open file under a number that no standard stream has; a host may have closed its own ones.
    static Descriptor aboveStandard(int number) noexcept;

private:
    int _number = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    /// @returns a pipe without ends when the system has no more.
    static Pipe create() noexcept;
    bool isOpen() const noexcept { return readEnd.isOpen() && writeEnd.isOpen(); }
};

/// A new empty file without a name, for this user alone, in the directory for temporary files. Not open on failure.
Descriptor createTemporaryFile();

/// An end of the pipe for writing, whose owner is not ended by the system when nobody reads any more.
Descriptor openSafeWriteEnd(Pipe& pipe);

} // namespace Ko
