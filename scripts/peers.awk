# Makes a table from the CSV of Google Benchmark (aggregates only): a row per workload, a column per library, in nanoseconds
# and, in parentheses, as a multiple of the framework's time.

BEGIN {
    FS = ","
    whoCount = split("framework least Qt Boost oneTBB GLib", whos, " ")
    workCount = split("undo tasks2 tasks6 jobs roundTrip notify1 notify10 notify1000 events launch plugIns", works, " ")
    title["undo"] = "a step pushed, undone, redone and forgotten"
    title["tasks2"] = "an empty task of a million, from one thread, to 2 workers"
    title["tasks6"] = "the same, to 6 workers"
    title["jobs"] = "an empty job of 100,000, submitted, run and deleted"
    title["roundTrip"] = "one task to sleeping workers and back"
    title["notify1"] = "a notification of one observer, with a new hint"
    title["notify10"] = "an observer of ten in a notification"
    title["notify1000"] = "an observer of a thousand in a notification"
    title["events"] = "an event posted to the main thread"
    title["launch"] = "a program started, read and waited for"
    title["plugIns"] = "a plug-in of 200 opened"
    head["framework"] = "libKOframework"
    head["least"] = "by hand"
}

# The names of the columns.
$1 == "name" {
    for (column = 1; column <= NF; ++column)
        if ($column == "\"perItem\"") perItem = column
    next
}

$1 ~ /_(median|cv)"?$/ {
    name = $1
    gsub(/"/, "", name)
    kind = name ~ /_cv$/ ? "cv" : "median"
    split(name, parts, "[/_]")
    key = parts[1] SUBSEP parts[2]
    value[kind, key] = $perItem
    next
}

function inWords(seconds, nanoseconds) {
    nanoseconds = seconds * 1e9
    if (nanoseconds < 10) return sprintf("%.1f ns", nanoseconds)
    if (nanoseconds < 10000) return sprintf("%.0f ns", nanoseconds)
    return sprintf("%.0f us", nanoseconds / 1000)
}

function cell(work, library, seconds, ours) {
    if (!(("median", work SUBSEP library) in value)) return "-"
    seconds = value["median", work SUBSEP library]
    ours = value["median", work SUBSEP "framework"]
    if (value["cv", work SUBSEP library] > noisiest) {
        noisiest = value["cv", work SUBSEP library]
        noisiestName = work "/" library
    }
    if (library == "framework") return inWords(seconds)
    return inWords(seconds) sprintf(" (%.2f)", seconds / ours)
}

END {
    line = "| workload |"
    rule = "|---|"
    for (i = 1; i <= whoCount; ++i) {
        line = line " " (whos[i] in head ? head[whos[i]] : whos[i]) " |"
        rule = rule "---|"
    }
    print line
    print rule
    for (w = 1; w <= workCount; ++w) {
        line = "| " title[works[w]] " |"
        for (i = 1; i <= whoCount; ++i) line = line " " cell(works[w], whos[i]) " |"
        print line
    }
    printf "\nThe repetitions of one measure vary by %.0f %% of their mean at most (%s).\n\n", 100 * noisiest, noisiestName
}
