#!/usr/bin/env bash
# Holds the pages of the house against the house:  checkPages.sh ROOT README_PROGRAM PLUG_IN_HOST PLUG_INS ACTIONS_PROGRAM
# - every relative link leads to a file, and every page below docs/ can be reached from docs/README.md;
# - a code block after the line <!-- from FILE --> is, line by line, a part of that file;
# - what the README and the guides say that their programs print, they print.
set -euo pipefail

cd "$1"
readme_program=$2
plug_in_host=("$3" "plugins:$4")
actions_program=$5
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

# block PAGE MARK: the lines of the first code block after the line that is MARK.
block() { awk -v mark="$2" '$0 == mark { armed = 1 } armed && /^```/ { if (inside) exit; inside = 1; next } inside' "$1"; }

check_blocks() {
    local mark file
    while read -r mark; do
        file=$(sed 's/<!-- from \(.*\) -->/\1/' <<<"$mark")
        [[ -n $(block "$1" "$mark") && $(<"$file") == *"$(block "$1" "$mark")"* ]] ||
            refuse "$1: the code after $mark is not in that file"
    done < <(grep '^<!-- from .* -->$' "$1")
}

check_reached() {
    local reached
    reached=$(for page in docs/README.md docs/*/README.md; do [[ ! -e $page ]] || links "$page"; done | xargs -r realpath -m)
    for page in "${pages[@]}"; do
        [[ $page != docs/* || $page == docs/README.md ]] || grep -qxF "$(realpath "$page")" <<<"$reached" ||
            refuse "$page: no index below docs/ leads to it"
    done
}

# check_prints PAGE COMMAND...: the page's block after "It prints:" is what the command prints.
check_prints() {
    local page=$1 output
    shift
    output=$("$@" 2>/dev/null) || refuse "$page: its program fails"
    [[ $(block "$page" 'It prints:') == "$output" ]] || refuse "$page: its program prints something else: $output"
}

for page in "${pages[@]}"; do
    check_links "$page"
    check_blocks "$page"
done
check_reached

[[ $(block README.md '<!-- from docs/examples/readme.cpp -->') == "$(<docs/examples/readme.cpp)" ]] ||
    refuse "README.md: shows another program than docs/examples/readme.cpp"
check_prints README.md "$readme_program"
check_prints docs/guides/writing-plug-ins.md "${plug_in_host[@]}"
check_prints docs/guides/writing-actions.md "$actions_program"

exit "$((faults > 0))"
