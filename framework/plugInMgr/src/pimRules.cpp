#include "framework/plugInMgr/src/pimRules.h"

#include "framework/plugInMgr/src/pimSettings.h"
#include "resmgt/liStringParser.h"
#include "resmgt/osSharedLib.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace Ko {

namespace {

LiString const listSeparator = ",";
LiString const pairSeparator = "=";
LiString const everyName = "all";

// Fragments of names, by the type of the plug-ins to which they apply.
using Rules = std::unordered_map<LiString, Set<LiString>>;

Rules inclusions;
Rules exclusions;

Rules parseRules(InVariable<char const*> const& list) {
    Rules rules;
    if (!list.isValid()) return rules;
    LiString type, fragment;
    for (LiString const& rule : LiStringParser::splitList(list.get(), listSeparator)) {
        LiStringParser::splitString(rule, pairSeparator, type, fragment);
        if (!fragment.empty()) rules[type].insert(fragment);
    }
    return rules;
}

bool names(Set<LiString> const& fragments, LiString const& name) {
    return std::any_of(fragments.begin(), fragments.end(),
        [&](LiString const& fragment) { return fragment == everyName || name.find(fragment) != LiString::npos; });
}

// The parts of a text before and after its last dot. A text without a dot has only the first part.
struct Split {
    explicit Split(std::string_view text) : before(text.substr(0, text.rfind('.'))) {
        if (before.size() < text.size()) after = text.substr(before.size() + 1);
    }
    std::string_view before, after;
};

// The name and the type of a plug-in.
Split splitName(LiString const& file) {
    static bool const hasSuffix = *OsSharedLib::getMinSuffix() != '\0';
    // The type of ".op.so" is "op", although a path has no extension after a leading dot.
    return Split(hasSuffix ? Split(file).before : file);
}

} // namespace

void PimRules::initialize() {
    PimSettings const& settings = PimSettings::get();
    inclusions = parseRules(settings.inclusions.variable);
    exclusions = parseRules(settings.exclusions.variable);
}

bool PimRules::isFilteredOut(OsFilePath const& path) {
    LiString const file = path.getFileName().getPath();
    Split const split = splitName(file);
    LiString const name(split.before), type(split.after);
    if (auto const included = inclusions.find(type); included != inclusions.end() && !names(included->second, name))
        return true;
    auto const excluded = exclusions.find(type);
    return excluded != exclusions.end() && names(excluded->second, name);
}

LiString PimRules::getType(OsFilePath const& path) {
    LiString const file = path.getFileName().getPath();
    return LiString(splitName(file).after);
}

} // namespace Ko
