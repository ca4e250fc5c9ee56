#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <functional>
#include <optional>
#include <string>

namespace Ko {

/// Forms of some data for other programs, such as "image/png" and "text/plain", which are made only when a program asks for one: the
/// clipboard of the system shows the media types at once and fetches the bytes later.
///
/// A function that makes bytes owns what it needs, since the document may have changed meanwhile. A value; one thread at a time.
///
///     DrFormats formats;
///     formats.add("image/png", [picture] { return encode(picture); });
///     carrier->setFormats(std::move(formats));
class KO_FRAMEWORK_API DrFormats {
public:
    /// Makes the bytes of one form.
    using Make = std::function<std::string()>;

    /// Adds a form, after those that describe the data better; one of the same media type is replaced in its place.
    /// @param mediaType as "type/subtype", perhaps with parameters. Compared without regard to the case of ASCII letters.
    /// @throws ExNullPtr without a function.
    void add(LiString const& mediaType, Make make);
    /// The media types, the best description of the data first.
    [[nodiscard]] Vector<LiString> getTypes() const;
    /// Whether there is a form of this media type.
    [[nodiscard]] bool contains(LiString const& mediaType) const { return find(mediaType) != nullptr; }
    /// Makes the bytes, anew at each call. What the function throws passes on.
    /// @returns nothing if there is no such form.
    [[nodiscard]] std::optional<std::string> make(LiString const& mediaType) const;

private:
    struct Form {
        LiString mediaType;
        Make make;
    };

    Form const* find(LiString const& mediaType) const;

    Vector<Form> _forms;
};

} // namespace Ko
