#include "resmgt/lgGroups.h"

#include "base/assertions.h"
#include "base/neverDestroyed.h"
#include "resmgt/lgPackageGroup.h"
#include "resmgt/osEnv.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <utility>

namespace Ko {

namespace {

using GroupName = std::pair<LiString, LiString>;

struct Rule {
    // With an empty minor name, all groups of the major one; "*" stands for all groups.
    GroupName group;
    int level;
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
class Log {
public:
    Log() {
        if (LiString assigned; OsEnv::getVariable("KO_LOG", assigned)) addRules(assigned);
    }

    void addRules(LiString const& text);
    int levelOf(LiString const& major, LiString const& minor) const;
    void write(LgRecord const& record);
    template <class Change>
    void changeSinks(Change change);

    // Guards rules and groups; the sinks have a lock of their own, which is held while they write.
    std::mutex mutex;
    std::map<GroupName, int> rules;
    Vector<LgMinorGroup*> groups;
    std::map<LiString, LgMajorGroup> majors;

private:
    std::recursive_mutex _sinkMutex;
    // Replaced, never changed: a sink may change the sinks while it is written to.
    std::shared_ptr<LgSinks::Sinks const> _sinks =
        std::make_shared<LgSinks::Sinks const>(1, std::make_shared<StandardErrorSink>());
    bool _isWriting = false;
};

LiString trimmed(LiString const& text) {
    constexpr char const* blanks = " \t";
    auto const begin = text.find_first_not_of(blanks);
    return begin == LiString::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

std::optional<Rule> parseRule(LiString const& text) {
    auto const colon = text.rfind(':');
    if (colon == LiString::npos || colon + 2 != text.size() || text[colon + 1] < '0' || text[colon + 1] > '9')
        return std::nullopt;
    LiString const group = text.substr(0, colon);
    auto const dot = group.find('.');
    LiString const major = group.substr(0, dot);
    LiString const minor = dot == LiString::npos ? "" : group.substr(dot + 1);
    if (major.empty() || (dot != LiString::npos && (minor.empty() || major == "*"))) return std::nullopt;
    return Rule{{major, minor}, text[colon + 1] - '0'};
}

void Log::addRules(LiString const& text) {
    std::istringstream stream(text);
    for (LiString part; std::getline(stream, part, ',');) {
        LiString const entry = trimmed(part);
        if (std::optional<Rule> const rule = parseRule(entry))
            rules[rule->group] = rule->level;
        else if (!entry.empty())
            std::cerr << "The log rule \"" << entry << "\" is not of the form Major.Minor:level." << std::endl;
    }
}

int Log::levelOf(LiString const& major, LiString const& minor) const {
    for (GroupName const& group : {GroupName(major, minor), GroupName(major, ""), GroupName("*", "")})
        if (auto const rule = rules.find(group); rule != rules.end()) return rule->second;
    return LgLevels::standard;
}

void writeSafely(LgSink& sink, LgRecord const& record) noexcept {
    try {
        sink.write(record);
    } catch (...) {
        // A log that cannot be written must not stop the work that is logged.
    }
}

void Log::write(LgRecord const& record) {
    std::shared_ptr<LgSinks::Sinks const> sinks; // released without the lock: a sink may have removed itself
    std::lock_guard const guard(_sinkMutex);
    // This thread holds the lock, so only a sink that logs can find the flag set.
    if (std::exchange(_isWriting, true)) return;
    sinks = _sinks;
    for (std::shared_ptr<LgSink> const& sink : *sinks)
        if (sinks == _sinks || std::ranges::find(*_sinks, sink) != _sinks->end()) writeSafely(*sink, record);
    _isWriting = false;
}

template <class Change>
void Log::changeSinks(Change change) {
    // Released after the lock, as in `write`.
    std::shared_ptr<LgSinks::Sinks const> before;
    std::lock_guard const guard(_sinkMutex);
    LgSinks::Sinks sinks = *_sinks;
    change(sinks);
    before = std::exchange(_sinks, std::make_shared<LgSinks::Sinks const>(std::move(sinks)));
}

Log& theLog() {
    static NeverDestroyed<Log> log;
    return *log;
}

void logFatalError(std::string const& text) noexcept {
    try {
        LgPackageGroup::write("Errors", 0, text);
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
    theLog().changeSinks([&](Sinks& sinks) { sinks.push_back(std::move(sink)); });
}

void LgSinks::remove(std::shared_ptr<LgSink> const& sink) {
    theLog().changeSinks([&](Sinks& sinks) { std::erase(sinks, sink); });
}

LgSinks::Sinks LgSinks::replace(Sinks sinks) {
    theLog().changeSinks([&](Sinks& current) { current.swap(sinks); });
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
    if (isEnabled(level)) theLog().write({_major.getName(), _name, level, text});
}

} // namespace Ko
