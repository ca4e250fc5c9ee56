#pragma once

#include "host/longStep.h"
#include "plugIns/plugIn.h"
#include "window/jobStarter.h"
#include "window/session.h"

#include <memory>
#include <vector>

namespace compositor::window {

/// Shows what an operator would make of the selected layers. Hidden jobs compute it; at the end of the preview the document is as it was.
class Preview : public QObject {
    Q_OBJECT

public:
    Preview(Session& session, JobStarter& jobs, Operator apply, QObject* parent = nullptr);
    ~Preview() override;

    /// Shows the effect of other arguments, as soon as it is known.
    void show(Statement const& input);

Q_SIGNALS:
    /// The operator does not take these arguments; without a text, it does.
    void judged(QString const& reason);

private:
    struct Work;
    void begin();
    void finish(std::shared_ptr<Work> const& work);

    Session& _session;
    JobStarter& _jobs;
    Operator _apply;
    std::vector<Layer> _layers;
    std::unique_ptr<LongStep> _step;
    std::shared_ptr<Work> _running;
    std::unique_ptr<Statement> _next;
};

} // namespace compositor::window
