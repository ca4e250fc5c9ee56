#include "resmgt/lgGroups.h"

#include "base/assertions.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <utility>

namespace Ko {

namespace {

struct Rule {
    LiString major;
    LiString minor;
    int level;

    // How specific the rule is for a group; 0 where it does not apply.
    int matches(LiString const& majorName, LiString const& minorName) const {
        if (major == "*") return 1;
        if (major != majorName) return 0;
        return minor.empty() ? 2 : minor == minorName ? 3 : 0;
    }
};

class StandardErrorSink final : public LgSink {
public:
    void write(LgRecord const& record) override {
        std::ostringstream line;
        line << '[' << record.major << '.' << record.minor << ':' << record.level << "] " << record.text;
        if (record.text.empty() || record.text.back() != '\n') line << '\n';
        std::cerr << line.str() << std::flush;
    }
};

// Never destroyed: anything may log until the process has ended.
struct Log {
    Log() {
        if (char const* const assigned = std::getenv("KO_LOG")) addRules(assigned);
    }

    void addRules(LiString const& text);
    int levelOf(LiString const& major, LiString const& minor) const;

    // Guards rules and groups; the sinks have a lock of their own, which is held while they write.
    std::mutex mutex;
    Vector<Rule> rules;
    Vector<LgMinorGroup*> groups;
    std::map<LiString, LgMajorGroup> majors;

    std::recursive_mutex sinkMutex;
    LgSinks::Sinks sinks{std::make_shared<StandardErrorSink>()};
    bool isWriting = false;
};

bool parseRule(LiString const& text, Rule& rule) {
    auto const colon = text.rfind(':');
    if (colon == LiString::npos || colon + 2 != text.size() || text[colon + 1] < '0' || text[colon + 1] > '9')
        return false;
    rule.level = text[colon + 1] - '0';
    LiString const group = text.substr(0, colon);
    auto const dot = group.find('.');
    rule.major = group.substr(0, dot);
    rule.minor = dot == LiString::npos ? "" : group.substr(dot + 1);
    return !rule.major.empty() && (dot == LiString::npos || (!rule.minor.empty() && rule.major != "*"));
}

void Log::addRules(LiString const& text) {
    std::istringstream stream(text);
    for (LiString entry; std::getline(stream, entry, ',');) {
        if (Rule rule; parseRule(entry, rule))
            rules.push_back(rule);
        else if (!entry.empty())
            std::cerr << "The log rule \"" << entry << "\" is not of the form Major.Minor:level." << std::endl;
    }
}

int Log::levelOf(LiString const& major, LiString const& minor) const {
    int best = 0;
    int level = LgLevels::standard;
    for (Rule const& rule : rules)
        if (int const match = rule.matches(major, minor); match >= std::max(best, 1)) {
            best = match;
            level = rule.level;
        }
    return level;
}

Log& theLog() {
    static auto& log = *std::make_unique<Log>().release();
    return log;
}

void logFatalError(std::string const& text) noexcept {
    try {
        LgMinorGroup(LgMajorGroup::getInstanceForName("Framework"), "Errors").write(0, text);
    } catch (...) {
        std::cerr << text << std::endl;
    }
}

[[maybe_unused]] bool const fatalErrorsAreLogged = (Assertions::setFatalErrorHandler(&logFatalError), true);

} // namespace

LgSink::~LgSink() = default;

void LgLevels::set(LiString const& rules) {
    Log& log = theLog();
    std::lock_guard const guard(log.mutex);
    log.addRules(rules);
    for (LgMinorGroup* const group : log.groups)
        group->_level = log.levelOf(group->getMajor().getName(), group->getName());
}

void LgSinks::add(std::shared_ptr<LgSink> sink) {
    std::lock_guard const guard(theLog().sinkMutex);
    theLog().sinks.push_back(std::move(sink));
}

void LgSinks::remove(std::shared_ptr<LgSink> const& sink) {
    std::lock_guard const guard(theLog().sinkMutex);
    std::erase(theLog().sinks, sink);
}

LgSinks::Sinks LgSinks::replace(Sinks sinks) {
    std::lock_guard const guard(theLog().sinkMutex);
    theLog().sinks.swap(sinks);
    return sinks;
}

LgMajorGroup& LgMajorGroup::getInstanceForName(LiString const& name) {
    Log& log = theLog();
    std::lock_guard const guard(log.mutex);
    return log.majors.try_emplace(name, name).first->second;
}

LgMinorGroup::LgMinorGroup(LgMajorGroup& major, LiString name) : _major(major), _name(std::move(name)), _level(0) {
    Log& log = theLog();
    std::lock_guard const guard(log.mutex);
    _level = log.levelOf(major.getName(), _name);
    log.groups.push_back(this);
}

LgMinorGroup::~LgMinorGroup() {
    std::lock_guard const guard(theLog().mutex);
    std::erase(theLog().groups, this);
}

void LgMinorGroup::write(int level, LiString const& text) const {
    if (!isEnabled(level)) return;
    Log& log = theLog();
    std::lock_guard const guard(log.sinkMutex);
    // The lock is this thread's: only a sink that logs can find the flag set.
    if (std::exchange(log.isWriting, true)) return;
    for (std::shared_ptr<LgSink> const& sink : LgSinks::Sinks(log.sinks))
        try {
            sink->write({_major.getName(), _name, level, text});
        } catch (...) {
            // A log that cannot be written must not stop the work that it tells of.
        }
    log.isWriting = false;
}

} // namespace Ko
