#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <iosfwd>

namespace Ko {

/// Writes indented XML elements to a stream.
///
/// Text is escaped; characters that XML does not allow and bytes that are not UTF-8 become U+FFFD. Tag names are written
/// unchanged.
class KO_RESMGT_API XmlWriter {
public:
    /// @param stream must live as long as the writer.
    /// @param indentation blanks for each level.
    XmlWriter(std::ostream& stream, int indentation) : _stream(stream), _indentation(indentation) {}

    /// Opens an element that contains others.
    void openTag(LiString const& name);
    /// Writes an element that contains only text.
    void writeTag(LiString const& name, LiString const& text);
    /// Closes the innermost open element.
    /// @throws ExAssertionFailed when none is open.
    void closeTag();

private:
    std::ostream& indent();

    std::ostream& _stream;
    int _indentation;
    Vector<LiString> _openTags;
};

} // namespace Ko
