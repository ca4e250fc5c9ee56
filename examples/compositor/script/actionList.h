#pragma once

#include "host/layerItem.h"

#include <iosfwd>
#include <string>

namespace compositor {

/// Writes the actions that are valid for some of the targets, each once: by section, with check marks and shortcuts. Members of a
/// composite are indented below it.
void listActions(Targets const& targets, std::ostream& output);
/// Writes for each target why an action is not possible.
/// @param path as for `EditActions::perform`.
/// @throws InputError when there is no such action.
void explainAction(std::string const& path, Targets const& targets, std::ostream& output);
/// Writes the actions whose text contains these letters in their order, the best match first, as a palette does.
void findActions(std::string const& letters, Targets const& targets, std::ostream& output);

} // namespace compositor
