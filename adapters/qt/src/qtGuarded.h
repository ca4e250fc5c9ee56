#pragma once

#include "base/exBase.h"

#include <QString>
#include <exception>
#include <optional>

namespace Ko {

/// Runs code of the host or of a plug-in, whose exceptions must not pass through Qt.
/// @returns the reason, where it has thrown; `ExProgramAborted` passes on.
template <class Run>
std::optional<QString> qtFailureOf(Run run) {
    try {
        run();
        return std::nullopt;
    } catch (ExProgramAborted const&) {
        throw;
    } catch (std::exception const& error) {
        return QString::fromUtf8(error.what());
    } catch (...) {
        return QStringLiteral("unknown exception");
    }
}

} // namespace Ko
