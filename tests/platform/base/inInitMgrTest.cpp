#include "base/inInitMgr.h"
#include "base/assertions.h"
#include "base/exBase.h"
#include "base/inPackageInit.h"
#include "tests/support/childProcess.h"
#include "tests/support/thrown.h"

#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace {

using namespace Ko;
using KoTest::inChildProcess;
using KoTest::messageOf;

std::string calls;

std::string takeCalls() {
    return std::exchange(calls, {});
}

template <char letter>
struct Tag {};

template <char... letters>
InPackageInit::Type typeAt(char letter, std::integer_sequence<char, letters...>) {
    static InPackageInit::Type const types[] = {typeid(Tag<letters>)...};
    return types[static_cast<std::size_t>(letter)];
}
InPackageInit::Type typeOf(char letter) {
    return typeAt(letter, std::make_integer_sequence<char, 'z' + 1>());
}

// A package that is named by a letter and depends on those of other letters. Records its hooks: "+a" initialise,
// "*a" post-initialise, "~a" pre-finalise, "-a" finalise.
class Package : public InPackageInit {
public:
    explicit Package(char letter, std::string const& dependencies = {})
        : InPackageInit(std::string(1, letter), typeOf(letter)) {
        registerPackage();
        for (char const dependency : dependencies)
            addDependency(typeOf(dependency));
    }

    void initialize() override { record('+', onInitialize); }
    void postInitialize() override { record('*', onPostInitialize); }
    void preFinalize() override { record('~', {}); }
    void finalize() override { record('-', onFinalize); }
    void setInitialized(bool initialized) override { isInitialized = initialized; }

    std::function<void()> onInitialize;
    std::function<void()> onPostInitialize;
    std::function<void()> onFinalize;
    bool isInitialized = false;

private:
    void record(char hook, std::function<void()> const& then) {
        (calls += hook) += getName();
        if (then) then();
    }
};

// A hook that creates and initialises a package within a guard of its own, as opening a library does.
template <class Guard>
auto opening(std::unique_ptr<Package>& opened, char letter, std::string const& dependencies = {}) {
    return [&opened, letter, dependencies] {
        Guard guard;
        opened = std::make_unique<Package>(letter, dependencies);
        guard.initializePackages();
    };
}

auto throwing(char const* reason) {
    return [reason] { throw std::runtime_error(reason); };
}

void expectFailedStartUp(std::string const& reason, std::string const& expected) {
    EXPECT_EQ(reason, messageOf([] { InInitMgr::initialize(); }));
    EXPECT_EQ(expected, takeCalls());
    EXPECT_FALSE(InInitMgr::isInitialized());
}

TEST(InInitMgr, StartsDependenciesFirstEqualsAsRegisteredAndEndsInReverse) {
    inChildProcess([] {
        Package d('d', "bcx"), c('c', "a"), b('b', "a"), a('a'), e('e');
        b.addDependency(typeOf('e'));
        d.removeDependency(typeOf('x'));
        {
            InInitScope const scope;
            EXPECT_EQ("+a+c+e+b+d*a*c*e*b*d", takeCalls());
            EXPECT_TRUE(d.isInitialized);
            EXPECT_THROW(InInitMgr::initialize(), ExAssertionFailed);
        }
        EXPECT_FALSE(d.isInitialized);
        EXPECT_NO_THROW(InInitMgr::finalize());
        EXPECT_EQ("~d~b~e~c~a-d-b-e-c-a", takeCalls());
    });
}

TEST(InInitMgr, RefusesToStartAgain) {
    for (bool const fails : {false, true})
        inChildProcess([fails] {
            Package a('a');
            a.onInitialize = [fails] {
                EXPECT_THROW(InInitMgr::initialize(), ExAssertionFailed);
                if (fails) throw std::runtime_error("no disk");
            };
            EXPECT_EQ(fails, messageOf([] { InInitScope const scope; }).ends_with("no disk"));
            takeCalls();
            std::string const why = fails ? "its start-up failed before." : "it was finalised before.";
            expectFailedStartUp("The framework cannot be initialised again: " + why, "");
        });
}

// The packages by their letters, each with those that it depends on.
struct Refused {
    std::vector<std::pair<char, char const*>> packages;
    char const* reason;
};

TEST(InInitMgr, StartsNoPackageWhenTheDependenciesCannotBeFulfilled) {
    for (Refused const& row : {Refused{{{'a', ""}, {'b', "ax"}},
                                   "Package \"b\" depends on (anonymous namespace)::Tag<(char)120>, which is not "
                                   "registered."},
             Refused{{{'a', "c"}, {'b', "a"}, {'c', "b"}, {'d', ""}},
                 "Packages depend on each other in a circle: \"a\", \"b\", \"c\"."},
             Refused{{{'o', "dc"}, {'a', "b"}, {'d', ""}, {'b', "da"}, {'c', "db"}}, // "o" and "c" are not in it
                 "Packages depend on each other in a circle: \"a\", \"b\"."},
             Refused{{{'a', ""}, {'a', ""}},
                 "Packages \"a\" and \"a\" have the same tag, (anonymous namespace)::Tag<(char)97>."}})
        inChildProcess([&row] {
            std::deque<Package> packages;
            for (auto const& [letter, dependencies] : row.packages)
                packages.emplace_back(letter, dependencies);
            expectFailedStartUp(row.reason, "");
        });
}

TEST(InInitMgr, TakesBackWhatWasInitialisedWhenAHookThrows) {
    inChildProcess([] {
        Package a('a'), b('b', "a"), c('c', "b"), d('d', "c");
        c.onInitialize = throwing("no disk");
        expectFailedStartUp("Package \"c\" could not be initialised: no disk", "+a+b+c~b~a-b-a");
    });
    inChildProcess([] {
        Package a('a');
        a.onInitialize = [] { throw Tag<'e'>(); };
        expectFailedStartUp("Package \"a\" could not be initialised: it threw an exception of the type (anonymous "
                            "namespace)::Tag<(char)101>",
            "+a");
    });
    inChildProcess([] {
        Package a('a');
        a.onPostInitialize = [] { AssertionSource("source").fail("late"); };
        EXPECT_THROW(InInitMgr::initialize(), ExAssertionFailed);
        EXPECT_EQ("+a*a~a-a", takeCalls());
    });
    inChildProcess([] {
        std::unique_ptr<Package> plugIn;
        Package a('a');
        a.onInitialize = [&] {
            opening<InRecursiveInitGuard>(plugIn, 'p')();
            throw std::runtime_error("no licence");
        };
        expectFailedStartUp("Package \"a\" could not be initialised: no licence", "+a+p~p-p");
    });
}

TEST(InInitMgr, FinalisesEveryPackageWhateverAnotherOneThrows) {
    inChildProcess(
        [] {
            Package a('a'), b('b', "a"), c('c', "b");
            c.onFinalize = throwing("first");
            a.onFinalize = throwing("second");
            InInitMgr::initialize();
            EXPECT_EQ("Package \"c\" could not be finalised: first", messageOf([] { InInitMgr::finalize(); }));
            EXPECT_EQ("+a+b+c*a*b*c~c~b~a-c-b-a", takeCalls());
        },
        "\"a\" could not be finalised: second");
}

TEST(InReinitGuard, IsAStartUpOfItsOwnAndForgetsWhatFailed) {
    inChildProcess([] {
        Package a('a');
        InInitMgr::initialize();
        std::optional<InReinitGuard> guard(std::in_place);
        Package b('b', "a"), c('c', "b");
        c.onInitialize = throwing("bad plug-in");
        EXPECT_EQ(
            "Package \"c\" could not be initialised: bad plug-in", messageOf([&] { guard->initializePackages(); }));
        EXPECT_EQ("+a*a+b+c~b-b", takeCalls());
        guard.emplace();
        Package neverInitialized('e');
        guard.emplace();
        Package d('d', "a"), again('a');
        EXPECT_TRUE(messageOf([&] { guard->initializePackages(); })
                        .ends_with("have the same tag, (anonymous "
                                   "namespace)::Tag<(char)97>."));
        EXPECT_TRUE(a.isInitialized);
        guard.emplace();
        Package f('f', "a");
        guard->initializePackages();
        EXPECT_EQ("+f*f", takeCalls());
        InInitMgr::finalize();
        EXPECT_EQ("~f~a-f-a", takeCalls());
    });
}

// Each package depends on the two before it: a walk along all paths between them would not end.
TEST(InReinitGuard, FindsWhatDependsOnAFailureAmongManyPackages) {
    inChildProcess([] {
        std::deque<Package> chain;
        for (char letter = '\0'; letter < 'a'; ++letter)
            chain.emplace_back(letter, letter < 2
                                           ? std::string(static_cast<std::size_t>(letter), '\0')
                                           : std::string{static_cast<char>(letter - 1), static_cast<char>(letter - 2)});
        InInitMgr::initialize();
        takeCalls();
        InReinitGuard guard;
        Package bad('z', "Z");
        bad.onInitialize = throwing("bad plug-in");
        EXPECT_THROW(guard.initializePackages(), InInitEx);
        EXPECT_EQ("+z", takeCalls());
    });
}

TEST(InRecursiveInitGuard, FinalisesWithAFailedPackageWhatCameToDependOnIt) {
    inChildProcess([] {
        Package a('a');
        InInitMgr::initialize();
        std::unique_ptr<Package> dependent, independent;
        InReinitGuard guard;
        Package first('p'), second('o', "p");
        second.onInitialize = [&] {
            InRecursiveInitGuard inner;
            dependent = std::make_unique<Package>('q', "p");
            independent = std::make_unique<Package>('r', "a");
            inner.initializePackages();
            throw std::runtime_error("after loading others");
        };
        EXPECT_THROW(guard.initializePackages(), InInitEx);
        EXPECT_EQ("+a*a+p+o+q+r~q~p-q-p*r", takeCalls());
        EXPECT_TRUE(independent->isInitialized);
    });
}

TEST(InReinitGuard, TakesItsOwnPackagesAndWhatTheyNeedOfThoseWithoutAGuard) {
    inChildProcess([] {
        Package a('a');
        InInitMgr::initialize();
        Package needed('z'), notNeeded('y');
        InReinitGuard outer;
        Package b('b');
        {
            InReinitGuard inner;
            Package c('c', "za");
            std::unique_ptr<Package> ofAnotherThread;
            std::thread([&] { ofAnotherThread = std::make_unique<Package>('x'); }).join();
            inner.initializePackages();
            EXPECT_EQ("+a*a+z+c*z*c", takeCalls());
        }
        Package d('d');
        outer.initializePackages();
        EXPECT_EQ("+b+d*b*d", takeCalls());
    });
}

TEST(InRecursiveInitGuard, JoinsTheStartUpThatGoesOnAndAReinitGuardDoesNot) {
    inChildProcess([] {
        std::unique_ptr<Package> joining, own, joiningLate;
        Package a('a'), b('b', "a");
        a.onInitialize = opening<InRecursiveInitGuard>(joining, 'p');
        b.onInitialize = opening<InReinitGuard>(own, 'q');
        b.onPostInitialize = opening<InRecursiveInitGuard>(joiningLate, 'r');
        InInitMgr::initialize();
        EXPECT_EQ("+a+p+b+q*q*p*a*b+r*r", takeCalls());
    });
}

// A library that is opened within a start-up fails alone, also after it was opened.
TEST(InRecursiveInitGuard, ReportsAPostInitialiseHookThatThrowsAndTheStartGoesOn) {
    for (bool const isAborted : {false, true})
        inChildProcess([isAborted] {
            std::unique_ptr<Package> plugIn, dependent;
            std::string reported;
            Package a('a'), b('b', "a");
            a.onInitialize = [&] {
                InRecursiveInitGuard guard;
                plugIn = std::make_unique<Package>('p');
                plugIn->onPostInitialize = [&] {
                    if (isAborted) AssertionSource("source").abort("broken");
                    throw std::runtime_error("bad plug-in");
                };
                guard.initializePackages([&](ExBase const& error) { reported += error.getReason(); });
                opening<InRecursiveInitGuard>(dependent, 'q', "p")();
            };
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
            [isUnwinding] {
                Package a('a');
                a.onFinalize = throwing("disk full");
                std::string const reason = messageOf([isUnwinding] {
                    InInitScope const scope;
                    if (isUnwinding) throw std::logic_error("the first");
                });
                EXPECT_EQ(isUnwinding ? "the first" : "Package \"a\" could not be finalised: disk full", reason);
                EXPECT_EQ("+a*a~a-a", takeCalls());
            },
            isUnwinding ? "disk full" : "");
}

} // namespace
