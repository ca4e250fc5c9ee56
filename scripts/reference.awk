# The first half of scripts/filter-header. Adds the words that a header need not repeat: an overload refers to the function
# above it, and copies, moves, destructors and deleted functions explain themselves. Every other member needs a sentence of
# its own: a comment that ends with a colon, as if it were about several, documents none. Lines keep their numbers.

function starts_with(text, start) { return index(text, start) == 1 }

# The name of the function that the line declares; empty if it declares none.
function declared(line) {
    if (line ~ /^(using|enum|friend|namespace|return|extern|noexcept|static_assert|:)/) return ""
    if (!match(line, /(operator *[^ A-Za-z(]+|operator *\(\)|~?[A-Za-z_][A-Za-z0-9_]*)\(/)) return ""
    return substr(line, RSTART, RLENGTH - 1)
}

# Whether the function takes one object of the class's own type.
function takes_own(line, name, mark) {
    return name == "operator=" ? index(line, mark) > 0 : index(line, name "(" name mark) > 0
}

# The comment of a function whose meaning the language defines.
function known(line, name) {
    if (line ~ /= delete;$/) return "Deleted."
    if (starts_with(name, "~")) return "Ends the object's life."
    if (takes_own(line, name, " const&")) return "Copies."
    if (takes_own(line, name, "&&")) return "Moves."
    return ""
}

# The comment of a function that another member explains; `ExBase` explains the place of an exception.
function implied(line, name) {
    if (index(line, "(char const* file, int line")) return "`file` and `line` are the place that raises it, as for `ExBase`."
    if (FILENAME ~ /adapters\/qt\// && line ~ /(override;|[,(])$/ && name ~ qt_names) return "Overrides the function of Qt."
    if (line ~ /^(explicit )?[A-Za-z]+\(Q(Object|Widget)\* parent = nullptr\);$/) return "The parent deletes the object; null for none."
    return name != "" && name == explained ? "@overload" : ""
}

function comment_on(text) { return text == "" ? "" : "/** " text " */ " }

BEGIN {
    anywhere = 1000
    deepest = anywhere
    # Virtual functions of Qt, whose words the reference does not have.
    qt_names = "^(event|eventFilter|[a-z]+Event|rowCount|columnCount|data|headerData|paint|sizeHint)$"
}

{
    line = $0
    sub(/^ +/, "", line)
    indent = length($0) - length(line)
}

indent > deepest { print; next }

line == "" || line ~ /^([#}]|\/\/($|[^\/])|public:|protected:|private:)/ { deepest = anywhere; print; next }

line ~ /^\/\/\// {
    comment = comment substr(line, 4)
    lines = lines $0 "\n"
    next
}

comment ~ /:$/ {
    comment = ""
    gsub(/[^\n]/, "", lines)
}
lines != "" {
    printf "%s", lines
    lines = ""
}

# The comment of a template goes before its first line.
line ~ /^template <[^;]*>$/ { template = template $0 " "; blank = blank "\n"; documented = comment != ""; comment = lines = ""; next }

{
    name = declared(line)
    language = known(line, name)
    words = language == "" ? implied(line, name) : language
    if (comment != "" || documented) words = language = ""
    # The constructors of packages are all the same; `InInit` documents them.
    named = starts_with(template, "template <>") && name == "getType"
    print blank comment_on(words) (named ? "" : template $0)
    if (name != "" && language == "") explained = words != "" || comment != "" || documented ? name : ""
    deepest = name == "" || line ~ /^(class|struct) / ? anywhere : indent
    template = blank = comment = lines = documented = ""
}
