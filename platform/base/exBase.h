#pragma once

#include "base/baseApi.h"

#include <exception>
#include <memory>
#include <string>

namespace Ko {

/// Root of the framework's exceptions: a reason in words, and the source and line that raised it.
///
/// An error that happens on one thread can be kept with `clone()` and thrown again on another with `raise()`; it keeps
/// its dynamic type. A concrete class implements both in one line each:
///
///     ExBase* clone() const override { return copyOf(*this); }
///     void raise() const override { throw *this; }
class KO_BASE_API ExBase : public std::exception {
public:
    ~ExBase() override;

    /// The reason.
    [[nodiscard]] char const* what() const noexcept override;
    /// What went wrong, in words.
    [[nodiscard]] std::string const& getReason() const noexcept { return _reason; }
    /// The class's full name, as written in source: "Ko::ExAssertionFailed".
    [[nodiscard]] std::string getTypeName() const;
    /// The name of the source that raised it.
    [[nodiscard]] char const* getFile() const noexcept { return _file; }
    /// The line in that source.
    [[nodiscard]] int getLine() const noexcept { return _line; }

    /// Puts "context: " before the reason, for code that passes the error on and can say where it happened.
    void addContext(std::string const& context);

    /// A copy on the heap, which the caller owns.
    [[nodiscard]] virtual ExBase* clone() const = 0;
    /// Throws a copy of this object.
    [[noreturn]] virtual void raise() const = 0;

protected:
    /// @param file names the source; it is not copied and must live as long as the program.
    ExBase(char const* file, int line, std::string reason = {});
    ExBase(ExBase const&);
    ExBase& operator=(ExBase const&);

    /// Replaces the reason, for constructors that compose it.
    void setReason(std::string reason) { _reason = std::move(reason); }

    /// A copy on the heap, for `clone()`.
    template <class Exception>
    static ExBase* copyOf(Exception const& exception) {
        return std::make_unique<Exception>(exception).release();
    }

private:
    std::string _reason;
    char const* _file;
    int _line;
};

/// A broken invariant or precondition; the reason is the text of the expression that is false.
class KO_BASE_API ExAssertionFailed : public ExBase {
public:
    /// @param expression becomes the reason.
    ExAssertionFailed(char const* file, int line, std::string expression);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A state that must never occur. Code that handles ordinary errors and goes on lets this one pass.
class KO_BASE_API ExProgramAborted : public ExBase {
public:
    /// As `ExBase`.
    ExProgramAborted(char const* file, int line, std::string reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// An operation that the framework understands but refuses in its present configuration.
class KO_BASE_API ExInternalError : public ExBase {
public:
    /// As `ExBase`.
    ExInternalError(char const* file, int line, std::string reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A null pointer was used as an object.
class KO_BASE_API ExNullPtr : public ExBase {
public:
    /// As `ExBase`.
    ExNullPtr(char const* file, int line, std::string reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

} // namespace Ko
