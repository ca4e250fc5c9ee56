#include "base/inInit.h"
#include "resmgt/lgGroups.h"
#include "resmgt/resmgtInit.h"

#include <atomic>
#include <iostream>

namespace {

/// Counts the problems that are logged.
class Counter final : public Ko::LgSink {
public:
    void write(Ko::LgRecord const& record) override {
        if (record.level <= 2) ++_problems;
    }
    int problems() const { return _problems; }

private:
    std::atomic<int> _problems{0};
};

struct CounterTag {};

/// The plug-in's package: its work when it is loaded, and when the application ends.
class CounterInit final : public Ko::InInit<CounterTag> {
public:
    CounterInit() : InInit("counter", Ko::packagesOf<KoInit::resmgt>()) {}

    void initialize() override { Ko::LgSinks::add(_counter); }
    void finalize() override {
        Ko::LgSinks::remove(_counter);
        std::cout << "problems: " << _counter->problems() << '\n';
    }

private:
    std::shared_ptr<Counter> _counter = std::make_shared<Counter>();
};

CounterInit package;

} // namespace
