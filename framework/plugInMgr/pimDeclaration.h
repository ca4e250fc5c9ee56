#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/osFilePath.h"

#include <optional>
#include <string_view>

namespace Ko {

/// The version of something that plug-ins are built against: the framework, or what a host adds to it.
struct KO_FRAMEWORK_API PimInterface {
    /// What it is the version of: "framework", or the name of a host.
    LiString name;
    /// The first number of the version. It changes with every incompatible change.
    int majorNumber = 0;
    /// The second number of the version. It grows with every addition.
    int minorNumber = 0;

    /// Reads "name major.minor"; nothing where the text is not of this form, or a number has more than six digits.
    [[nodiscard]] static std::optional<PimInterface> parse(std::string_view text);
    /// As `parse` reads it.
    [[nodiscard]] LiString getText() const;
    /// Whether what was built against this interface runs with the offered one: the same first number, and not newer.
    [[nodiscard]] bool fits(PimInterface const& offered) const noexcept;
};

/// What a plug-in says about itself in data of its library, which is read before any of its code runs.
///
/// It is written by the CMake function `ko_add_plugin` into the section ".koplugin": the eight bytes "KOPLUGIN", the length
/// of the text as four bytes, the lowest one first, and the text in UTF-8. Each line is `key=value`; values have up to 256
/// bytes and no control characters. Lines with other keys than these are ignored:
///
///     name=vignette                once
///     version=1.2                  once
///     type=op                      once
///     interface=framework 8.0      one line for each interface, up to 16
///     requires=lut.op              one line for each plug-in, up to 64
struct KO_FRAMEWORK_API PimDeclaration {
    /// The name of the plug-in, for display.
    LiString name;
    /// The version of the plug-in, for display.
    LiString version;
    /// The type of the plug-in, which its file name has as well.
    LiString type;
    /// What it was built against.
    Vector<PimInterface> interfaces;
    /// The plug-ins to load before it, by their file names without the suffix of libraries: "lut.op".
    Vector<LiString> required;

    /// Reads the content of the section.
    /// @throws PimEx::ExRefused when it is not of the form above.
    [[nodiscard]] static PimDeclaration parse(std::string_view section);
    /// Reads the declaration of a library from its file; nothing where that has none.
    /// @throws PimEx::ExRefused as `parse`, and OsSharedLibEx when the section lies outside of the file or exceeds 64 KiB.
    [[nodiscard]] static std::optional<PimDeclaration> read(OsFilePath const& path);
};

} // namespace Ko
