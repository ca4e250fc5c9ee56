#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <iosfwd>

namespace Ko {

/// Writes indented XML elements to a stream.
///
/// Text is escaped; what XML cannot hold, control characters and bytes that are not UTF-8, becomes U+FFFD. Tag names are
/// written as they are.
class KO_RESMGT_API XmlWriter {
public:
    /// @param stream must live as long as the writer.
    /// @param indentation blanks for each level.
    XmlWriter(std::ostream& stream, int indentation) : _stream(stream), _indentation(indentation) {}

    /// Begins an element that others go into.
    void openTag(LiString const& name);
    /// An element with nothing but text in it.
    void writeTag(LiString const& name, LiString const& text);
    /// Closes the tag that was opened last.
    /// @throws ExAssertionFailed when none is open.
    void closeTag();

private:
    std::ostream& indent();

    std::ostream& _stream;
    int _indentation;
    Vector<LiString> _openTags;
};

} // namespace Ko
