#pragma once

#include "adapters/qt/qtJobModel.h"
#include "framework/bgTask/bgJob.h"

#include <QObject>
#include <functional>
#include <map>

namespace compositor::window {

/// Starts the jobs of a window: those that the user sees, which can be retried, and hidden ones.
class JobStarter : public QObject {
public:
    explicit JobStarter(Ko::QtJobModel& shown, QObject* parent = nullptr);

    using Make = std::function<Ko::OPtr<Ko::BgJobProtocol>()>;
    using WhenEnded = std::function<void(Ko::BgJob& job)>;
    /// Starts a job that the user sees. @param make is called again for each retry.
    Ko::RCShdPtr<Ko::BgJob> start(Make make, WhenEnded whenEnded = {});
    /// Starts a job that is not shown, and is removed at its end.
    void startHidden(Ko::OPtr<Ko::BgJobProtocol> protocol, WhenEnded whenEnded);

private:
    void follow(Ko::RCShdPtr<Ko::BgJob> const& job, WhenEnded whenEnded, bool removes);

    Ko::QtJobModel& _shown;
    std::map<Ko::BgJob const*, Ko::ObSubscription> _ends;
};

} // namespace compositor::window
