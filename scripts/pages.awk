# The variable `page` is the path of the page. In the reference,
# - pictures lie beside the pages;
# - a comment such as <!-- group undo --> is a link to that group;
# - the index of the decisions is their parent, so that the tree of pages has levels;
# - a link is on one line;
# - a link to a heading of the same page is only its words.

BEGIN {
    sub(/^\.\//, "", page)
    folder = page
    sub(/[^\/]*$/, "", folder)
    isIndex = page ~ /docs\/decisions\/README\.md$/
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

function withoutLocalLinks(text, link) {
    while (match(text, /\[[^]]*\]\(#[^)]*\)/)) {
        link = substr(text, RSTART + 1, RLENGTH)
        sub(/\].*/, "", link)
        text = substr(text, 1, RSTART - 1) link substr(text, RSTART + RLENGTH)
    }
    return text
}

{
    line = held $0
    held = ""
    if (line ~ /^```/) inside = !inside
    if (inside) { print line; next }
    if (line ~ /\[[^]]*$/) { held = line " "; next }
    gsub(/\]\((\.\.\/|docs\/)*pictures\//, "](", line)
    while (match(line, /<!-- group [a-z]+ -->/))
        line = substr(line, 1, RSTART - 1) "@ref " substr(line, RSTART + 11, RLENGTH - 15) " \"reference\"" substr(line, RSTART + RLENGTH)
    line = withoutLocalLinks(line)
    print isIndex ? adopt(line) : line
}
END { if (held != "") print held }
