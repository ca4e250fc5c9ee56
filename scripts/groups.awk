# Adds each public header to a group of the reference (docs/reference.dox): that of its room, unless its name has another.

function group_of(path, name) {
    name = path
    sub(/.*\//, "", name)
    if (name ~ /Init\.h$/ || name ~ /^(inSingleton|lkSingleton|statMgr)/) return "start"
    if (name ~ /^(bgProcess|osChildProcess|osResourceUse)/) return "programs"
    if (name ~ /^(osSharedLib|pim)/) return "plugins"
    if (name ~ /^(li|lg|msg|xml)/) return "text"
    if (name ~ /^(os|env|utf8)/) return "files"
    if (name ~ /^(lk|mt|ev|sleeper|timer|piAppThread|piPython)/) return "threads"
    if (name ~ /^(ob|cb)/) return "observers"
    if (name ~ /^in[A-Z]/) return "start"
    if (path ~ /adapters\/qt\//) return "qt"
    if (path ~ /framework\/(frameworkLib|service)\//) return "start"
    if (path ~ /framework\/command\/|platform\/pluginAPI\//) return "undo"
    if (path ~ /framework\/bgTask\//) return "jobs"
    if (path ~ /framework\/actions\//) return "actions"
    if (path ~ /framework\/dragAndDrop\//) return "dragdrop"
    if (path ~ /platform\/(internalAPI|primitives)\//) return "items"
    return "memory"
}

# The content of a namespace is one group. It is opened and closed on existing lines, so that lines keep their numbers.
/^namespace [A-Za-z:]+ \{$/ { $0 = $0 " /** @addtogroup " group_of(path) " */ /** @{ */" }
/^\} \/\/ namespace/ { $0 = "/** @} */ " $0 }
{ print }
