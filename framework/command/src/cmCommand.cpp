#include "framework/command/cmCommand.h"

#include "resmgt/xmlWriter.h"

namespace Ko {

CmCommand::~CmCommand() = default;

double CmCommand::getExecutionTime() const {
    return 0.0;
}
double CmCommand::getUnexecutionTime() const {
    return 0.0;
}

void CmCommand::dump(XmlWriter& writer) const {
    writer.openTag("Command");
    writer.writeTag("Description", getDescription());
    writer.closeTag();
}

void CmCommand::execute() {
    if (!_disableExecutionOnRedo) executeInternal();
}

void CmCommand::unexecute() {
    unexecuteInternal();
}

void dumpObject(std::ostream& stream, CmCommand const& command) {
    XmlWriter writer(stream, 3);
    command.dump(writer);
}

} // namespace Ko
