#!/usr/bin/env bash
# Compares the pages with the tree:  checkPages.sh ROOT PAGE=PROGRAM...
# - every relative link leads to a file, and every page below docs/ can be reached from docs/README.md;
# - a code block after the line <!-- from FILE --> is, line by line, a part of that file; all of C++ stands after such a line;
# - the output that a page shows for its program is the output of the program; a page that shows one has a program.
set -euo pipefail

cd "$1"
shift
faults=0

refuse() {
    printf '%s\n' "$*" >&2
    faults=$((faults + 1))
}

mapfile -t pages < <({ find . -maxdepth 1 -name '*.md'; find docs examples -name '*.md'; } | sed 's|^\./||' | sort)

# links PAGE: the files that it links to, seen from the root.
links() {
    awk -v folder="$(dirname "$1")/" '
        /^```/ { inside = !inside }
        !inside {
            while (match($0, /\]\([^)#]+/)) {
                target = substr($0, RSTART + 2, RLENGTH - 2)
                if (target !~ /^[a-z]+:/) print folder target
                $0 = substr($0, RSTART + RLENGTH)
            }
        }' "$1"
}

check_links() {
    local link
    while read -r link; do
        [[ -e $link ]] || refuse "$1: leads nowhere: $link"
    done < <(links "$1")
}

# block PAGE MARK [N]: the lines of the code block after the first line, or the Nth, that is MARK.
block() {
    awk -v mark="$2" -v wanted="${3:-1}" '
        $0 == mark { armed = ++seen == wanted }
        armed && /^```/ { if (inside) exit; inside = 1; next }
        inside' "$1"
}

check_blocks() {
    local mark file code
    local -A seen=()
    while read -r mark; do
        file=$(sed 's/<!-- from \(.*\) -->/\1/' <<<"$mark")
        seen[$mark]=$((${seen[$mark]:-0} + 1))
        code=$(block "$1" "$mark" "${seen[$mark]}")
        [[ -n $code && $(<"$file") == *"$code"* ]] ||
            refuse "$1: the code after $mark, number ${seen[$mark]}, is not in that file"
    done < <(grep '^<!-- from .* -->$' "$1")
}

check_all_from_files() {
    awk '/^```cpp/ && last !~ /^<!-- from / { exit 1 } { last = $0 }' "$1" || refuse "$1: shows C++ that is from no file"
}

check_reached() {
    local reached
    reached=$(for page in docs/README.md docs/*/README.md; do [[ ! -e $page ]] || links "$page"; done | xargs -r realpath -m)
    for page in "${pages[@]}"; do
        [[ $page != docs/* || $page == docs/README.md ]] || grep -qxF "$(realpath "$page")" <<<"$reached" ||
            refuse "$page: no index below docs/ leads to it"
    done
}

declare -A programs=()
for pair in "$@"; do programs[${pair%%=*}]=${pair#*=}; done

# The page's block after "It prints:" is what its program prints.
check_prints() {
    local page=$1 output
    grep -qxF 'It prints:' "$page" || [[ -n ${programs[$page]:-} ]] || return 0
    [[ -n ${programs[$page]:-} ]] || { refuse "$page: what it prints is not checked"; return; }
    output=$("${programs[$page]}" 2>/dev/null) || refuse "$page: its program fails"
    [[ $(block "$page" 'It prints:') == "$output" ]] || refuse "$page: its program prints something else: $output"
}

for page in "${pages[@]}"; do
    check_links "$page"
    check_blocks "$page"
    check_all_from_files "$page"
    check_prints "$page"
done
check_reached

exit "$((faults > 0))"
