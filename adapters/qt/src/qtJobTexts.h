#pragma once

#include "framework/bgTask/bgJob.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace Ko {

/// What a job does and how far it is, why it failed, or what it waits for, in one line.
QString qtDetailText(BgJob const& job);
/// The progress of a Busy job, from 0 to 1; nothing where it is unknown.
std::optional<float> qtProgress(BgJob& job);
/// The names of the jobs that a job waits for.
QStringList qtPredecessors(RCShdPtr<BgJob> const& job);

} // namespace Ko
