#include "base/inInitMgr.h"
#include "base/assertions.h"
#include "base/exBase.h"
#include "base/inInit.h"
#include "tests/support/childProcess.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::inChildProcess;

std::string calls;

std::string takeCalls() {
    return std::exchange(calls, {});
}

template <char name>
struct Tag {};

// Records its hooks: "+a" initialise, "*a" post-initialise, "~a" pre-finalise, "-a" finalise.
template <char name>
class Package : public InInit<Tag<name>> {
public:
    explicit Package(std::vector<InPackageInit::Type> const& dependencies = {})
        : InInit<Tag<name>>(std::string(1, name), dependencies) {}

    void initialize() override { record('+', onInitialize); }
    void postInitialize() override { record('*', onPostInitialize); }
    void preFinalize() override { record('~', {}); }
    void finalize() override { record('-', onFinalize); }

    std::function<void()> onInitialize;
    std::function<void()> onPostInitialize;
    std::function<void()> onFinalize;

private:
    void record(char hook, std::function<void()> const& then) {
        (calls += hook) += name;
        if (then) then();
    }
};

// A hook that makes a package within a guard of its own and initialises it, as opening its library does.
template <class Guard, class Opened>
auto opening(std::unique_ptr<Opened>& opened) {
    return [&opened] {
        Guard guard;
        opened = std::make_unique<Opened>();
        guard.initializePackages();
    };
}

template <char... names>
std::vector<InPackageInit::Type> on() {
    return packagesOf<Tag<names>...>();
}

template <class Call>
std::string reasonOf(Call call) {
    try {
        call();
    } catch (std::exception const& error) {
        return error.what();
    }
    return "nothing was raised";
}

void expectFailedStartUp(std::string const& reason, std::string const& expected) {
    EXPECT_EQ(reason, reasonOf([] { InInitMgr::initialize(); }));
    EXPECT_EQ(expected, takeCalls());
    EXPECT_FALSE(InInitMgr::isInitialized());
}

TEST(InInitMgr, StartsDependenciesFirstEqualsAsRegisteredAndEndsInReverse) {
    inChildProcess([] {
        Package<'d'> const d(on<'b', 'c'>());
        Package<'c'> const c(on<'a'>());
        Package<'b'> b(on<'a'>());
        Package<'a'> const a;
        Package<'e'> const e;
        b.addDependency(InInit<Tag<'e'>>::getType());
        {
            InInitScope const scope;
            EXPECT_EQ("+a+c+e+b+d*a*c*e*b*d", takeCalls());
            EXPECT_TRUE(d.isInitialized());
            EXPECT_THROW(InInitMgr::initialize(), ExAssertionFailed);
        }
        EXPECT_FALSE(d.isInitialized());
        EXPECT_NO_THROW(InInitMgr::finalize());
        EXPECT_EQ("~d~b~e~c~a-d-b-e-c-a", takeCalls());
    });
}

TEST(InInitMgr, NamesWhatHasNoOrderAndStartsNothing) {
    inChildProcess([] {
        Package<'a'> const a;
        Package<'b'> const b(on<'a', 'x'>());
        expectFailedStartUp(
            "Package \"b\" depends on (anonymous namespace)::Tag<(char)120>, which is not registered.", "");
    });
    inChildProcess([] {
        Package<'a'> const a(on<'c'>());
        Package<'b'> const b(on<'a'>());
        Package<'c'> const c(on<'b'>());
        Package<'d'> const d;
        expectFailedStartUp("Packages depend on each other in a circle: \"a\", \"b\", \"c\".", "");
    });
}

TEST(InInitMgr, TakesBackWhatWasInitialisedWhenAHookThrows) {
    inChildProcess([] {
        Package<'a'> const a;
        Package<'b'> const b(on<'a'>());
        Package<'c'> c(on<'b'>());
        c.onInitialize = [] { throw std::runtime_error("no disk"); };
        Package<'d'> const d(on<'c'>());
        expectFailedStartUp("Package \"c\" could not be initialised: no disk", "+a+b+c~b~a-b-a");
    });
    inChildProcess([] {
        Package<'a'> a;
        a.onPostInitialize = [] { AssertionSource("source").fail("late"); };
        EXPECT_THROW(InInitMgr::initialize(), ExAssertionFailed);
        EXPECT_EQ("+a*a~a-a", takeCalls());
    });
    inChildProcess([] {
        std::unique_ptr<Package<'p'>> plugIn;
        Package<'a'> a;
        a.onInitialize = [&] {
            opening<InRecursiveInitGuard>(plugIn)();
            throw std::runtime_error("no licence");
        };
        expectFailedStartUp("Package \"a\" could not be initialised: no licence", "+a+p~p-p");
    });
}

TEST(InInitMgr, FinalisesEveryPackageWhateverAnotherOneThrows) {
    inChildProcess(
        [] {
            Package<'a'> a;
            Package<'b'> b(on<'a'>());
            Package<'c'> c(on<'b'>());
            c.onFinalize = [] { throw std::runtime_error("first"); };
            a.onFinalize = [] { throw std::runtime_error("second"); };
            InInitMgr::initialize();
            EXPECT_EQ("Package \"c\" could not be finalised: first", reasonOf([] { InInitMgr::finalize(); }));
            EXPECT_EQ("+a+b+c*a*b*c~c~b~a-c-b-a", takeCalls());
        },
        "\"a\" could not be finalised: second");
}

TEST(InReinitGuard, IsAStartUpOfItsOwnAndForgetsWhatFailed) {
    inChildProcess([] {
        Package<'a'> const a;
        InInitMgr::initialize();
        std::optional<InReinitGuard> guard(std::in_place);
        Package<'b'> const b(on<'a'>());
        Package<'c'> c(on<'b'>());
        c.onInitialize = [] { throw std::runtime_error("bad plug-in"); };
        EXPECT_EQ(
            "Package \"c\" could not be initialised: bad plug-in", reasonOf([&] { guard->initializePackages(); }));
        EXPECT_EQ("+a*a+b+c~b-b", takeCalls());
        guard.emplace();
        Package<'e'> const neverInitialized;
        guard.emplace();
        Package<'d'> const d(on<'a'>());
        guard->initializePackages();
        EXPECT_EQ("+d*d", takeCalls());
        InInitMgr::finalize();
        EXPECT_EQ("~d~a-d-a", takeCalls());
    });
}

TEST(InRecursiveInitGuard, FinalisesWithAFailedPackageWhatCameToDependOnIt) {
    inChildProcess([] {
        Package<'a'> const a;
        InInitMgr::initialize();
        std::unique_ptr<Package<'q'>> dependent;
        std::unique_ptr<Package<'r'>> independent;
        InReinitGuard guard;
        Package<'p'> const first;
        Package<'o'> second(on<'p'>());
        second.onInitialize = [&] {
            InRecursiveInitGuard inner;
            dependent = std::make_unique<Package<'q'>>(on<'p'>());
            independent = std::make_unique<Package<'r'>>(on<'a'>());
            inner.initializePackages();
            throw std::runtime_error("after loading others");
        };
        EXPECT_THROW(guard.initializePackages(), InInitEx);
        EXPECT_EQ("+a*a+p+o+q+r~q~p-q-p*r", takeCalls());
        EXPECT_TRUE(independent->isInitialized());
    });
}

TEST(InReinitGuard, TakesItsOwnPackagesAndWhatTheyNeedOfThoseWithoutAGuard) {
    inChildProcess([] {
        Package<'a'> const a;
        InInitMgr::initialize();
        Package<'z'> const needed;
        Package<'y'> const notNeeded;
        InReinitGuard outer;
        Package<'b'> const b;
        {
            InReinitGuard inner;
            Package<'c'> const c(on<'z', 'a'>());
            std::unique_ptr<Package<'x'>> ofAnotherThread;
            std::thread([&] { ofAnotherThread = std::make_unique<Package<'x'>>(); }).join();
            inner.initializePackages();
            EXPECT_EQ("+a*a+z+c*z*c", takeCalls());
        }
        Package<'d'> const d;
        outer.initializePackages();
        EXPECT_EQ("+b+d*b*d", takeCalls());
    });
}

TEST(InRecursiveInitGuard, JoinsTheStartUpThatGoesOnAndAReinitGuardDoesNot) {
    inChildProcess([] {
        std::unique_ptr<Package<'p'>> joining;
        std::unique_ptr<Package<'q'>> own;
        std::unique_ptr<Package<'r'>> joiningLate;
        Package<'a'> a;
        Package<'b'> b(on<'a'>());
        a.onInitialize = opening<InRecursiveInitGuard>(joining);
        b.onInitialize = opening<InReinitGuard>(own);
        b.onPostInitialize = opening<InRecursiveInitGuard>(joiningLate);
        InInitMgr::initialize();
        EXPECT_EQ("+a+p+b+q*q*p*a*b+r*r", takeCalls());
    });
}

TEST(InInitScope, RaisesWhatTheEndThrowsButNeverOverAnotherException) {
    for (bool const isUnwinding : {false, true})
        inChildProcess(
            [&] {
                Package<'a'> a;
                a.onFinalize = [] { throw std::runtime_error("disk full"); };
                std::string const reason = reasonOf([&] {
                    InInitScope const scope;
                    if (isUnwinding) throw std::logic_error("the first");
                });
                EXPECT_EQ(isUnwinding ? "the first" : "Package \"a\" could not be finalised: disk full", reason);
                EXPECT_EQ("+a*a~a-a", takeCalls());
            },
            isUnwinding ? "disk full" : "");
}

} // namespace
