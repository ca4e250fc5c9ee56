#include "window/preview.h"

#include "framework/bgTask/bgEx.h"

#include <QPointer>

namespace compositor::window {

struct Preview::Work {
    Operator apply;
    Statement input;
    std::vector<Layer> layers;
    std::vector<Picture> results = {};
    std::string fault = {};
};

namespace {

/// Calls a function as a job.
class FunctionProtocol final : public Ko::BgJobProtocol {
public:
    explicit FunctionProtocol(std::function<void()> run) : BgJobProtocol("preview", "preview"), _run(std::move(run)) {}
    void execute() override {
        _run();
        reportProgress(1, 1);
    }

private:
    std::function<void()> _run;
};

} // namespace

Preview::Preview(Session& session, JobStarter& jobs, Operator apply, QObject* parent)
    : QObject(parent), _session(session), _jobs(jobs), _apply(apply), _layers(session.selected()) {}

Preview::~Preview() = default;

void Preview::show(Statement const& input) {
    _next = std::make_unique<Statement>(input);
    if (!_running) begin();
}

// One at a time: what has changed meanwhile comes next.
void Preview::begin() {
    if (!_next) return;
    auto const work = std::make_shared<Work>(Work{_apply, *std::exchange(_next, nullptr), _layers});
    _running = work;
    auto const run = [work] {
        try {
            for (Layer const& layer : work->layers)
                work->results.push_back(work->apply(*layer.placed.picture, work->input));
        } catch (std::exception const& error) {
            work->fault = error.what();
        }
    };
    _jobs.startHidden(std::make_unique<FunctionProtocol>(run), [self = QPointer(this), work](Ko::BgJob&) {
        if (self) self->finish(work);
    });
}

void Preview::finish(std::shared_ptr<Work> const& work) {
    _running.reset();
    Q_EMIT judged(QString::fromStdString(work->fault));
    if (work->fault.empty() && work->results.size() == _layers.size()) {
        // Each preview begins with the document as it was.
        _step.reset();
        _session.attempt([&] {
            _step = std::make_unique<LongStep>(_session.editor(), "Preview");
            _step->edit([&] {
                for (std::size_t index = 0; index < _layers.size(); ++index)
                    _session.editor().setPicture(_layers[index].id, std::move(work->results[index]), "Preview");
            });
        });
    }
    begin();
}

} // namespace compositor::window
