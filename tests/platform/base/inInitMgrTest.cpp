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
#include <tuple>
#include <utility>

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

// A hook that creates and initialises a package within a guard of its own, as opening a library does.
template <class Guard, class Opened>
auto opening(std::unique_ptr<Opened>& opened, std::vector<InPackageInit::Type> const& dependencies = {}) {
    return [&opened, dependencies] {
        Guard guard;
        opened = std::make_unique<Opened>(dependencies);
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
        Package<'d'> d(on<'b', 'c'>());
        Package<'c'> c(on<'a'>());
        Package<'b'> b(on<'a'>());
        Package<'a'> a;
        Package<'e'> e;
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

TEST(InInitMgr, RefusesToStartAgain) {
    inChildProcess([] {
        Package<'a'> a;
        a.onInitialize = [] { EXPECT_THROW(InInitMgr::initialize(), ExAssertionFailed); };
        InInitMgr::initialize();
        InInitMgr::finalize();
        takeCalls();
        expectFailedStartUp("The framework cannot be initialised again: it was finalised before.", "");
    });
    inChildProcess([] {
        Package<'a'> a;
        a.onInitialize = [] { throw std::runtime_error("no disk"); };
        expectFailedStartUp("Package \"a\" could not be initialised: no disk", "+a");
        expectFailedStartUp("The framework cannot be initialised again: its start-up failed before.", "");
    });
}

TEST(InInitMgr, NamesAMissingDependencyAndStartsNothing) {
    inChildProcess([] {
        Package<'a'> a;
        Package<'b'> b(on<'a', 'x'>());
        expectFailedStartUp(
            "Package \"b\" depends on (anonymous namespace)::Tag<(char)120>, which is not registered.", "");
    });
}

TEST(InInitMgr, NamesThePackagesOfACircleAndStartsNothing) {
    inChildProcess([] {
        Package<'a'> a(on<'c'>());
        Package<'b'> b(on<'a'>());
        Package<'c'> c(on<'b'>());
        Package<'d'> d;
        expectFailedStartUp("Packages depend on each other in a circle: \"a\", \"b\", \"c\".", "");
    });
    inChildProcess([] {
        Package<'o'> onlyDependsOnIt(on<'d', 'c'>());
        Package<'a'> a(on<'b'>());
        Package<'d'> d;
        Package<'b'> b(on<'d', 'a'>());
        Package<'c'> c(on<'d', 'b'>());
        expectFailedStartUp("Packages depend on each other in a circle: \"a\", \"b\".", "");
    });
}

TEST(InInitMgr, RefusesASecondPackageOfATag) {
    inChildProcess([] {
        struct Other : InInit<Tag<'a'>> {
            Other() : InInit("other", {}) {}
        } other;
        Package<'a'> a;
        expectFailedStartUp(
            "Packages \"other\" and \"a\" have the same tag, (anonymous namespace)::Tag<(char)97>.", "");
    });
    inChildProcess([] {
        Package<'a'> a;
        InInitMgr::initialize();
        InReinitGuard guard;
        Package<'a'> again;
        EXPECT_EQ("Packages \"a\" and \"a\" have the same tag, (anonymous namespace)::Tag<(char)97>.",
            reasonOf([&] { guard.initializePackages(); }));
        EXPECT_TRUE(a.isInitialized());
    });
}

TEST(InInitMgr, StartsWithoutADependencyThatWasRemoved) {
    inChildProcess([] {
        Package<'b'> b(on<'a', 'x'>());
        Package<'a'> a;
        b.removeDependency(InInit<Tag<'x'>>::getType());
        InInitMgr::initialize();
        EXPECT_EQ("+a+b*a*b", takeCalls());
    });
}

TEST(InInitMgr, TakesBackWhatWasInitialisedWhenAHookThrows) {
    inChildProcess([] {
        Package<'a'> a;
        Package<'b'> b(on<'a'>());
        Package<'c'> c(on<'b'>());
        c.onInitialize = [] { throw std::runtime_error("no disk"); };
        Package<'d'> d(on<'c'>());
        expectFailedStartUp("Package \"c\" could not be initialised: no disk", "+a+b+c~b~a-b-a");
    });
    inChildProcess([] {
        Package<'a'> a;
        a.onInitialize = [] { throw Tag<'e'>(); };
        expectFailedStartUp("Package \"a\" could not be initialised: it threw an exception of the type (anonymous "
                            "namespace)::Tag<(char)101>",
            "+a");
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
        Package<'a'> a;
        InInitMgr::initialize();
        std::optional<InReinitGuard> guard(std::in_place);
        Package<'b'> b(on<'a'>());
        Package<'c'> c(on<'b'>());
        c.onInitialize = [] { throw std::runtime_error("bad plug-in"); };
        EXPECT_EQ(
            "Package \"c\" could not be initialised: bad plug-in", reasonOf([&] { guard->initializePackages(); }));
        EXPECT_EQ("+a*a+b+c~b-b", takeCalls());
        guard.emplace();
        Package<'e'> neverInitialized;
        guard.emplace();
        Package<'d'> d(on<'a'>());
        guard->initializePackages();
        EXPECT_EQ("+d*d", takeCalls());
        InInitMgr::finalize();
        EXPECT_EQ("~d~a-d-a", takeCalls());
    });
}

// Each package depends on the two before it: a walk along all paths between them would not end.
template <char first, char... names>
auto chainOf(std::integer_sequence<char, first, names...>) {
    return std::tuple(std::make_unique<Package<first>>(),
        std::make_unique<Package<names>>(on<names - 1, (names > first + 1 ? names - 2 : names - 1)>())...);
}

TEST(InReinitGuard, FindsWhatDependsOnAFailureAmongManyPackages) {
    inChildProcess([] {
        auto const chain = chainOf(std::make_integer_sequence<char, 'a'>());
        InInitMgr::initialize();
        takeCalls();
        InReinitGuard guard;
        Package<'z'> bad(on<'Z'>());
        bad.onInitialize = [] { throw std::runtime_error("bad plug-in"); };
        EXPECT_THROW(guard.initializePackages(), InInitEx);
        EXPECT_EQ("+z", takeCalls());
    });
}

TEST(InRecursiveInitGuard, FinalisesWithAFailedPackageWhatCameToDependOnIt) {
    inChildProcess([] {
        Package<'a'> a;
        InInitMgr::initialize();
        std::unique_ptr<Package<'q'>> dependent;
        std::unique_ptr<Package<'r'>> independent;
        InReinitGuard guard;
        Package<'p'> first;
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
        Package<'a'> a;
        InInitMgr::initialize();
        Package<'z'> needed;
        Package<'y'> notNeeded;
        InReinitGuard outer;
        Package<'b'> b;
        {
            InReinitGuard inner;
            Package<'c'> c(on<'z', 'a'>());
            std::unique_ptr<Package<'x'>> ofAnotherThread;
            std::thread([&] { ofAnotherThread = std::make_unique<Package<'x'>>(); }).join();
            inner.initializePackages();
            EXPECT_EQ("+a*a+z+c*z*c", takeCalls());
        }
        Package<'d'> d;
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

// A library that is opened within a start-up fails alone, also after it was opened.
TEST(InRecursiveInitGuard, ReportsAPostInitialiseHookThatThrowsAndTheStartGoesOn) {
    for (bool const isAborted : {false, true})
        inChildProcess([&] {
            std::unique_ptr<Package<'p'>> plugIn;
            std::unique_ptr<Package<'q'>> dependent;
            std::string reported;
            Package<'a'> a;
            a.onInitialize = [&] {
                InRecursiveInitGuard guard;
                plugIn = std::make_unique<Package<'p'>>(on<>());
                plugIn->onPostInitialize = [&] {
                    if (isAborted) AssertionSource("source").abort("broken");
                    throw std::runtime_error("bad plug-in");
                };
                guard.initializePackages([&](ExBase const& error) { reported += error.getReason(); });
                opening<InRecursiveInitGuard>(dependent, on<'p'>())();
            };
            Package<'b'> b(on<'a'>());
            if (isAborted)
                EXPECT_THROW(InInitMgr::initialize(), ExProgramAborted);
            else
                InInitMgr::initialize();
            EXPECT_EQ(isAborted ? "" : "Package \"p\" could not be initialised: bad plug-in", reported);
            EXPECT_EQ(isAborted ? "+a+p+q+b*p~q~p-q-p~b~a-b-a" : "+a+p+q+b*p~q~p-q-p*a*b", takeCalls());
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
