# The variable `page` is the path of the page. In the reference,
# - pictures lie beside the pages;
# - a comment such as <!-- group undo --> is a link to that group;
# - the index of the decisions is their parent, so that the tree of pages has levels;
# - headings have names, which links within the page use as on a code host;
# - a link is on one line.

BEGIN {
    sub(/^\.\//, "", page)
    folder = page
    sub(/[^\/]*$/, "", folder)
    isIndex = page ~ /docs\/decisions\/README\.md$/
    prefix = page
    gsub(/[^A-Za-z]/, "", prefix)
}

# The name of a heading: "## Results that arrive" is "results-that-arrive", after the name of the page.
function anchor(heading, name) {
    name = tolower(heading)
    sub(/^#+ /, "", name)
    gsub(/[^a-z0-9 -]/, "", name)
    gsub(/ /, "-", name)
    return prefix "-" name
}

# The name that the reference gives to the page at a path seen from this one.
function label(path, full) {
    full = folder path
    sub(/.*docs\/\.\.\//, "", full)
    sub(/.*docs\//, "docs/", full)
    sub(/\.md$/, "", full)
    gsub(/[\/-]/, "_", full)
    return "md_" full
}

function adopt(text, start, link, words, path, before) {
    while (match(text, /\[[^]]*\]\([^):#]*\.md\)/)) {
        link = substr(text, RSTART, RLENGTH)
        before = before substr(text, 1, RSTART - 1)
        text = substr(text, RSTART + RLENGTH)
        words = path = link
        sub(/\].*/, "", words)
        sub(/.*\(/, "", path)
        path = substr(path, 1, length(path) - 1)
        before = before (adopted[path]++ ? link : "@subpage " label(path) " \"" substr(words, 2) "\"")
    }
    return before text
}

{
    line = held $0
    held = ""
    if (line ~ /^```/) inside = !inside
    if (inside) { print line; next }
    if (line ~ /\[[^]]*$/) { held = line " "; next }
    if (line ~ /^##+ /) line = line " {#" anchor(line) "}"
    gsub(/\]\(#/, "](#" prefix "-", line)
    gsub(/\]\((\.\.\/|docs\/)*pictures\//, "](", line)
    while (match(line, /<!-- group [a-z]+ -->/))
        line = substr(line, 1, RSTART - 1) "@ref " substr(line, RSTART + 11, RLENGTH - 15) " \"reference\"" substr(line, RSTART + RLENGTH)
    print isIndex ? adopt(line) : line
}
END { if (held != "") print held }
