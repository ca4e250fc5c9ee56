#include "resmgt/src/threads/mtThread.h"

#include "base/exBase.h"

#include <climits>
#include <pthread.h>
#include <sched.h>
#include <system_error>
#include <unistd.h>

namespace Ko {

struct MtThread::Native {
    Settings settings;
    std::function<void()> body;
    pthread_t thread{};
};

namespace {

void check(int error) {
    if (error != 0)
        throw ExInternalError("resmgt\\src\\mtThread", __LINE__,
            "A thread cannot be started: " + std::generic_category().message(error) + ".");
}

class Attributes {
public:
    explicit Attributes(std::size_t stackSize) {
        check(pthread_attr_init(&_attributes));
        if (stackSize == 0) return;
        auto const least = static_cast<std::size_t>(::sysconf(_SC_THREAD_STACK_MIN));
        auto const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        std::size_t const pages = (std::max(stackSize, least) + page - 1) / page;
        pthread_attr_setstacksize(&_attributes, pages * page);
    }
    ~Attributes() { pthread_attr_destroy(&_attributes); }
    Attributes(Attributes const&) = delete;
    Attributes& operator=(Attributes const&) = delete;

    pthread_attr_t const* get() const { return &_attributes; }

private:
    pthread_attr_t _attributes;
};

void yieldToOthers() {
    sched_param none{};
    // Without the permission, the thread keeps its priority.
    static_cast<void>(pthread_setschedparam(pthread_self(), SCHED_IDLE, &none));
}

} // namespace

MtThread::MtThread(Settings settings, std::function<void()> body)
    : _native(std::make_unique<Native>(Native{std::move(settings), std::move(body)})) {
    Attributes const attributes(_native->settings.stackSize);
    auto const run = [](void* argument) -> void* {
        auto const& native = *static_cast<Native const*>(argument);
        constexpr std::size_t longestName = 15; // of Linux
        pthread_setname_np(pthread_self(), native.settings.name.substr(0, longestName).c_str());
        if (native.settings.yieldsToOthers) yieldToOthers();
        native.body();
        return nullptr;
    };
    check(pthread_create(&_native->thread, attributes.get(), run, _native.get()));
}

MtThread::~MtThread() {
    pthread_join(_native->thread, nullptr);
}

} // namespace Ko
