#!/usr/bin/env bash
# Checks zelct's manual pages, which the build makes with help2man from the tool's own --help
# (tools/zelct/CMakeLists.txt): every command that `zelct --help` lists has its page
# zelct-COMMAND.1.gz beside zelct.1.gz and there is no other page; each page renders with
# man without a warning; the options a page lists are exactly those its command takes (the
# option column of its --help), and the long options the page names anywhere are exactly those
# its --help names. Then proves that the check refuses pages that disagree with the tool, on
# hand-edited copies of the pages. Exits non-zero on any difference, saying what differs.
#
# Usage: scripts/check-man.sh BUILD_DIR [PAGES_DIR]
#   BUILD_DIR  a build whose zelct_man target is built (build/ci)
#   PAGES_DIR  the folder of the pages to check, BUILD_DIR/tools/zelct by default; when it is
#              given, only those pages are checked, without the proof on edited copies.
set -euo pipefail

[ $# -ge 1 ] && [ $# -le 2 ] || { echo "usage: scripts/check-man.sh BUILD_DIR [PAGES_DIR]" >&2; exit 2; }
build=$1
pages=${2:-$build/tools/zelct}
# The runner the build made for help2man: the tool, under the emulator in a cross build.
tool=$build/tools/zelct/man/zelct
[ -x "$tool" ] || { echo "check-man: no $tool; build the zelct_man target first" >&2; exit 2; }
command -v man >/dev/null || { echo "check-man: man is not installed (man-db)" >&2; exit 2; }

# The commands `zelct --help` lists.
commands() {
    "$tool" --help | awk '/^[^ ].*:$/ { section = $0; next }
                          section == "Subcommands:" && /^  [a-z]/ { print $1 }'
}
# The options a command takes: the option column of its --help, "-h,--help" as two.
help_options() {
    "$tool" "$@" --help | awk '/^  -/ { print $1 }' | tr ',' '\n' | sort -u
}
# Every long option its --help names, in the option column or in the text.
help_words() {
    "$tool" "$@" --help | { grep -oE -- '--[A-Za-z0-9][A-Za-z0-9-]*' || true; } | sort -u
}
# The page as a reader sees it, as plain ASCII text.
page_text() {
    LC_ALL=C MANWIDTH=80 MANPAGER=cat man -l "$1" 2>/dev/null | col -b
}
# The options a page lists, from its text: the tags of its OPTIONS section.
page_options() {
    awk '/^[A-Z][A-Z ]*$/ { section = $0; next }
                          section == "OPTIONS" && /^       -/ { print $1 }' | tr ',' '\n' | sort -u
}
page_words() {
    { grep -oE -- '--[A-Za-z0-9][A-Za-z0-9-]*' || true; } | sort -u
}
# "a b c" from lines, for messages; "(none)" for nothing.
listed() {
    local words
    words=$(paste -sd ' ')
    echo "${words:-(none)}"
}

# Pages that passed, by their content and command: the edited copies below share all but one
# page with the pages checked first, and man takes a while for each.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/passed"

# Says what one list has that the other lacks, both ways, and fails, when they differ: page,
# the expected list, the found list, then what to call the missing and the extra ones.
differ() {
    [ "$2" = "$3" ] && return 0
    echo "$1: $4: $(comm -23 <(echo "$2") <(echo "$3") | listed)"
    echo "$1: $5: $(comm -13 <(echo "$2") <(echo "$3") | listed)"
    return 1
}

# Checks one page against the command line (none for the tool itself); prints what differs.
check_page() {
    local page=$1
    shift
    local problems=0 warnings expected found text passed
    passed=$work/passed/$({ zcat "$page"; echo "$*"; } | sha256sum | cut -c1-64)
    [ -e "$passed" ] && return 0
    warnings=$(MANWIDTH=80 MANPAGER=cat man --warnings -l "$page" 2>&1 >/dev/null) || {
        echo "$page: man cannot render it"
        problems=1
    }
    if [ -n "$warnings" ]; then
        echo "$page: man warns:"
        sed 's/^/    /' <<<"$warnings"
        problems=1
    fi
    text=$(page_text "$page")
    differ "$page" "$(help_options "$@")" "$(page_options <<<"$text")" \
        "options of 'zelct $*' that the page does not list" \
        "options the page lists that 'zelct $*' does not take" || problems=1
    differ "$page" "$(help_words "$@")" "$(page_words <<<"$text")" \
        "long options in the help of 'zelct $*' but not in the page" \
        "long options in the page but not in the help of 'zelct $*'" || problems=1
    [ $problems -eq 0 ] && touch "$passed"
    return $problems
}

# Checks every page in a folder; prints what differs, returns non-zero on any difference.
check_pages() {
    local dir=$1 failed=0 command page name
    local wanted=("$dir/zelct.1.gz")
    local names
    names=$(commands)
    [ -n "$names" ] || { echo "zelct --help lists no command"; return 1; }
    for command in $names; do
        wanted+=("$dir/zelct-$command.1.gz")
    done
    for page in "${wanted[@]}"; do
        [ -f "$page" ] || { echo "$page: missing"; failed=1; }
    done
    for page in "$dir"/*.1.gz; do
        [ -f "$page" ] || continue
        name=$(basename "$page" .1.gz)
        if [ "$name" = zelct ]; then
            check_page "$page" || failed=1
        elif [ "${name#zelct-}" != "$name" ] && grep -qx -- "${name#zelct-}" <<<"$names"; then
            check_page "$page" "${name#zelct-}" || failed=1
        else
            echo "$page: a page for no command of zelct"
            failed=1
        fi
    done
    return $failed
}

if ! check_pages "$pages"; then
    echo "check-man: the manual pages in $pages disagree with the tool"
    exit 1
fi
echo "-- man pages: $(ls "$pages"/*.1.gz | wc -l) pages render without warnings and name exactly their command's options"
[ $# -eq 2 ] && exit 0

# The proof: each edit below makes one page disagree with the tool, and the check must refuse
# the copy with the line that names the difference.
edit_page() {  # page name, sed program: rewrites the copy's roff source
    zcat "$work/pages/$1.1.gz" | sed "$2" | gzip -9n > "$work/pages/$1.1.gz.new"
    mv "$work/pages/$1.1.gz.new" "$work/pages/$1.1.gz"
}
refused() {  # what the edit does, the line the check must print, then the edit's command
    local what=$1 line=$2 out
    shift 2
    rm -rf "$work/pages"
    cp -r "$pages" "$work/pages"
    "$@"
    if out=$(check_pages "$work/pages"); then
        echo "check-man: accepted pages where $what"
        exit 1
    fi
    if ! grep -qF -- "$line" <<<"$out"; then
        echo "check-man: refused pages where $what, but without the line '$line':"
        echo "$out"
        exit 1
    fi
    echo "-- man check refuses a page where $what: $line"
}
refused "an option is misspelt (--jsn for --json)" \
    "zelct-check.1.gz: options of 'zelct check' that the page does not list: --json" \
    edit_page zelct-check 's/^\\fB\\-\\-json\\fR$/\\fB\\-\\-jsn\\fR/'
refused "an option the command does not take is listed" \
    "zelct-normalize.1.gz: options the page lists that 'zelct normalize' does not take: --atomic" \
    edit_page zelct-normalize '/^\.SH "SEE ALSO"/i .TP\n\\fB\\-\\-atomic\\fR\nStore through a temporary file'
refused "the text names an option that does not exist" \
    "zelct-template.1.gz: long options in the page but not in the help of 'zelct template': --all" \
    edit_page zelct-template '/^\.SH OPTIONS/i .PP\nWith \\fB\\-\\-all\\fR, every kind.'
refused "the roff source holds an unknown macro" \
    "zelct-kinds.1.gz: man warns:" \
    edit_page zelct-kinds '/^\.SH OPTIONS/i .XY'
refused "a command has no page" \
    "zelct-video.1.gz: missing" \
    rm "$work/pages/zelct-video.1.gz"
refused "a page stands for no command" \
    "zelct-check-all.1.gz: a page for no command of zelct" \
    cp "$pages/zelct-check.1.gz" "$work/pages/zelct-check-all.1.gz"
